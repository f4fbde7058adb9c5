// Every allocation of a whole session fails once: BSTRs, SAFEARRAYs and copies of VARIANTs, and operator new. And two
// hundred steps more leave nothing behind but their history.

#include "tests/fault/CountingNew.h"
#include "tests/fault/Sweep.h"
#include "tests/fault/WholeSession.h"
#include "tests/support/MemoryGuard.h"
#include "tests/support/OpenHandles.h"
#include "tests/support/ThisProgram.h"

#include <windows.h>

#include <comdef.h>

#include <cstdio>
#include <gtest/gtest.h>
#include <map>
#include <new>
#include <ostream>
#include <stdexcept>

namespace {

using fake::MemoryGuard;

/// One of the two kinds of memory.
struct Kind {
    const char* name;
    void (*fail)(std::size_t number);
    std::size_t (*count)();
    WholeSession::Size session;
};

void PrintTo(const Kind& kind, std::ostream* stream) {
    *stream << kind.name;
}

const Kind kinds[] = {
    {"Automation",
     [](std::size_t number) { MemoryGuard::FailAllocation(number); },
     [] { return MemoryGuard::AllocationCount(); },
     {2, 1, 2}},
    {"OperatorNew",
     [](std::size_t number) { CountingNew::Fail(number); },
     [] { return CountingNew::Count(); },
     {6, 2, 3}},
};

/// How the library answered to a failed allocation.
enum class Answer { True, False, BadAlloc, ComError, LengthError, LaunchError, Forbidden };

Answer RunInLibrary(const Operation& operation) {
    const CountingNew::InLibrary inLibrary;
    try {
        return operation.run() ? Answer::True : Answer::False;
    } catch (const std::bad_alloc&) {
        return Answer::BadAlloc;
    } catch (const _com_error& error) {
        return error.Error() == E_OUTOFMEMORY ? Answer::ComError : Answer::Forbidden;
    } catch (const std::length_error&) {
        return Answer::LengthError;
    } catch (const LaunchDesktopExeption&) {
        return operation.name == "Launch" ? Answer::LaunchError : Answer::Forbidden;
    } catch (...) {
        return Answer::Forbidden;
    }
}

class MemoryFaults : public testing::TestWithParam<Kind> {
protected:
    /// Allocations of a session without faults; it also warms up what the system remembers.
    std::size_t CountAllocations() {
        std::size_t allocations = 0;
        for (int round = 0; round < 2; ++round) {
            WholeSession session(GetParam().session);
            GetParam().fail(0);
            for (const Operation& operation : session.Operations()) {
                EXPECT_EQ(RunInLibrary(operation), Answer::True) << operation.name;
            }
            allocations = GetParam().count();
        }
        return allocations;
    }

    /// Runs until the fault shows, and checks that the session can be repaired.
    Answer RunWithFault(std::size_t number) {
        WholeSession session(GetParam().session);
        const std::vector<Operation> operations = session.Operations();
        GetParam().fail(number);
        Answer answer = Answer::True;
        for (const Operation& operation : operations) {
            answer = RunInLibrary(operation);
            if (answer != Answer::True) {
                break;
            }
        }
        GetParam().fail(0);
        EXPECT_TRUE(session.HoldsNothingElse());
        if (answer != Answer::True) {
            EXPECT_TRUE(session.Repair());
        }
        EXPECT_EQ(session.Desktop().world.OutstandingReferences(), 0);
        return answer;
    }
};

TEST_P(MemoryFaults, ShowAsResultsOrDocumentedExceptionsAndLeakNothing) {
    const std::size_t allocations = CountAllocations();
    ASSERT_GT(allocations, 500U);
    const std::size_t liveTexts = MemoryGuard::LiveBlocks();
    const std::size_t liveBlocks = CountingNew::LiveBlocks();
    std::map<Answer, std::size_t> answers;
    std::size_t injected = 0;
    std::size_t held = 0;
    constexpr std::size_t enough = 10; // complaints to read
    for (std::size_t number = 1; number <= allocations && injected - held < enough; number += sweep::Stride()) {
        SCOPED_TRACE(testing::Message() << "allocation " << number << " of " << allocations);
        const int before = sweep::Complaints();
        const Answer answer = RunWithFault(number);
        EXPECT_NE(answer, Answer::Forbidden);
        EXPECT_EQ(MemoryGuard::LiveBlocks(), liveTexts);
        EXPECT_EQ(CountingNew::LiveBlocks(), liveBlocks);
        ++answers[answer];
        ++injected;
        held += sweep::Complaints() == before ? 1U : 0U;
    }
    std::printf("%-12s: %zu faults injected, %zu held: %zu true, %zu false, %zu bad_alloc, %zu _com_error, "
                "%zu length_error, %zu launch error\n",
                GetParam().name, injected, held, answers[Answer::True], answers[Answer::False],
                answers[Answer::BadAlloc], answers[Answer::ComError], answers[Answer::LengthError],
                answers[Answer::LaunchError]);
    RecordProperty("injected", std::to_string(injected));
    RecordProperty("held", std::to_string(held));
}

INSTANTIATE_TEST_SUITE_P(All, MemoryFaults, testing::ValuesIn(kinds),
                         [](const auto& kind) { return std::string(kind.param.name); });

/// What a step might leave behind.
struct Balance {
    Balance(WholeSession& session)
        : texts(MemoryGuard::LiveBlocks()), blocks(CountingNew::LiveBlocks()), bytes(CountingNew::LiveBytes()),
          references(session.Desktop().world.OutstandingReferences()), handles(OpenHandles(fake::ThisProcess())) {}
    std::size_t texts;
    std::size_t blocks;
    std::size_t bytes;
    long references;
    std::size_t handles;
};

/// The size that a vector that doubles has room for.
std::size_t Capacity(std::size_t size) {
    std::size_t capacity = 1;
    while (capacity < size) {
        capacity *= 2;
    }
    return capacity;
}

TEST(LeakBalance, TwoHundredStepsLeaveTheirHistoryAndNothingElse) {
    constexpr int warmUp = 20;
    constexpr int further = 200;
    WholeSession session({warmUp + further, warmUp + further, 3});
    const std::vector<Operation> operations = session.Operations();
    for (int operation = 0; operation < 3 + warmUp; ++operation) {
        ASSERT_EQ(RunInLibrary(operations[static_cast<std::size_t>(operation)]), Answer::True);
    }
    session.Desktop().world.ClearJournal();
    session.ForgetResults();
    const Balance before(session);
    for (int step = 0; step < further; ++step) {
        ASSERT_EQ(RunInLibrary(operations[static_cast<std::size_t>(3 + warmUp + step)]), Answer::True);
        session.Desktop().world.ClearJournal();
    }
    session.ForgetResults();
    const Balance after(session);
    EXPECT_EQ(after.texts, before.texts);
    EXPECT_EQ(after.references, before.references);
    EXPECT_GT(before.handles, 0U);
    EXPECT_EQ(after.handles, before.handles);
#ifdef __GLIBCXX__
    // One row per step: the time and six values of each of three bodies, all short enough to need no memory of their
    // own; and the list of the rows, which doubles. The first row of a run is that of its step at time 0.
    constexpr std::size_t valuesPerRow = 1 + 6 * 3;
    EXPECT_EQ(after.blocks - before.blocks, further);
    EXPECT_EQ(after.bytes - before.bytes,
              further * valuesPerRow * sizeof(std::string) +
                  (Capacity(warmUp + further) - Capacity(warmUp)) * sizeof(std::vector<std::string>));
#endif
    std::printf("%d further steps: %zu blocks and %zu bytes more, 0 texts, objects and handles\n", further,
                after.blocks - before.blocks, after.bytes - before.bytes);
}

} // namespace
