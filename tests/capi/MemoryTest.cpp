// Every allocation of a whole session through the C interface fails once, on the caller's thread and on the handle's:
// texts, arrays and copies of values, and operator new. And two hundred steps more leave their history only.

#include "tests/capi/HandleSession.h"
#include "tests/fault/CountingNew.h"
#include "tests/fault/Sweep.h"
#include "tests/support/MemoryGuard.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <map>
#include <ostream>
#include <set>

namespace capi {
namespace {

using fake::MemoryGuard;

/// One of the two kinds of memory.
struct Kind {
    const char* name;
    void (*fail)(std::size_t number);
    std::size_t (*count)();
    HandleSession::Size session;
    /// What a call may come to.
    std::set<kv_status> statuses;
};

void PrintTo(const Kind& kind, std::ostream* stream) {
    *stream << kind.name;
}

const Kind kinds[] = {
    {"Automation",
     [](std::size_t number) { MemoryGuard::FailAllocation(number); },
     [] { return MemoryGuard::AllocationCount(); },
     {2, 1, 2},
     // The operation itself takes a list of names that could not be copied for none, twice in a session.
     {KV_OK, KV_NO_MEMORY, KV_INCOMPLETE, KV_FAILED}},
    {"OperatorNew",
     [](std::size_t number) { CountingNew::Fail(number); },
     [] { return CountingNew::Count(); },
     {6, 2, 3},
     {KV_OK, KV_NO_MEMORY, KV_INCOMPLETE}},
};

kv_status RunInLibrary(const Call& call) {
    const CountingNew::InLibrary inLibrary;
    return call.run();
}

class MemoryFaults : public testing::TestWithParam<Kind> {
protected:
    static void SetUpTestSuite() { CountingNew::CountOtherThreads(); }
    MemoryFaults() { MemoryGuard::WatchAllThreads(); }

    /// Allocations of a session without faults; it also warms up what the system remembers.
    static std::size_t CountAllocations() {
        std::size_t allocations = 0;
        for (int round = 0; round < 2; ++round) {
            HandleSession session(GetParam().session);
            GetParam().fail(0);
            for (const Call& call : session.Calls()) {
                EXPECT_EQ(RunInLibrary(call), KV_OK) << call.name;
            }
            allocations = GetParam().count();
        }
        return allocations;
    }

    /// Runs until the fault shows, and checks that the handle works on.
    static kv_status RunWithFault(std::size_t number) {
        HandleSession session(GetParam().session);
        const std::vector<Call> calls = session.Calls();
        GetParam().fail(number);
        kv_status status = KV_OK;
        for (const Call& call : calls) {
            status = RunInLibrary(call);
            EXPECT_EQ(GetParam().statuses.count(status), 1U)
                << call.name << " is " << status << ": " << ErrorText(session.Handle());
            if (status != KV_OK) {
                break;
            }
        }
        GetParam().fail(0);
        EXPECT_TRUE(session.HoldsNothingElse());
        if (status != KV_OK) {
            EXPECT_NE(ErrorText(session.Handle()), "");
            EXPECT_TRUE(session.Repair());
        }
        session.DeleteHandle();
        EXPECT_EQ(session.Desktop().world.OutstandingReferences(), 0);
        return status;
    }
};

TEST_P(MemoryFaults, AreToldAndLeakNothing) {
    const std::size_t allocations = CountAllocations();
    ASSERT_GT(allocations, 500U);
    const std::size_t liveTexts = MemoryGuard::LiveBlocks();
    const std::size_t liveBlocks = CountingNew::LiveBlocks();
    std::map<kv_status, std::size_t> statuses;
    std::size_t injected = 0;
    std::size_t held = 0;
    constexpr std::size_t enough = 10; // complaints to read
    for (std::size_t number = 1; number <= allocations && injected - held < enough; number += sweep::Stride()) {
        SCOPED_TRACE(testing::Message() << "allocation " << number << " of " << allocations);
        const int before = sweep::Complaints();
        ++statuses[RunWithFault(number)];
        EXPECT_EQ(MemoryGuard::LiveBlocks(), liveTexts);
        EXPECT_EQ(CountingNew::LiveBlocks(), liveBlocks);
        ++injected;
        held += sweep::Complaints() == before ? 1U : 0U;
    }
    std::printf("C interface, %-11s: %zu faults injected, %zu held: %zu done all the same, %zu out of memory, "
                "%zu incomplete, %zu failed\n",
                GetParam().name, injected, held, statuses[KV_OK], statuses[KV_NO_MEMORY], statuses[KV_INCOMPLETE],
                statuses[KV_FAILED]);
    RecordProperty("injected", std::to_string(injected));
    RecordProperty("held", std::to_string(held));
}

INSTANTIATE_TEST_SUITE_P(All, MemoryFaults, testing::ValuesIn(kinds),
                         [](const auto& kind) { return std::string(kind.param.name); });

/// The allocations of functions without a handle.
TEST(NewHandle, ThatFindsNoMemoryIsNoneAndLeaksNothing) {
    CountingNew::CountOtherThreads();
    kv_coupling* handle = nullptr;
    const auto make = [&] {
        const CountingNew::InLibrary inLibrary;
        return kv_new(KV_API_VERSION, nullptr, &handle);
    };
    ASSERT_EQ(make(), KV_OK);
    ASSERT_EQ(kv_delete(handle), KV_OK);
    CountingNew::Fail(0);
    ASSERT_EQ(make(), KV_OK);
    const std::size_t allocations = CountingNew::Count();
    ASSERT_EQ(kv_delete(handle), KV_OK);
    ASSERT_GT(allocations, 2U);
    std::size_t failed = 0;
    for (std::size_t number = 1; number <= allocations; ++number) {
        SCOPED_TRACE(number);
        // The thread keeps the text of its last error: each time the same one.
        ASSERT_EQ(kv_save_project(nullptr), KV_BAD_ARGUMENT);
        const std::size_t before = CountingNew::LiveBlocks();
        CountingNew::Fail(number);
        const kv_status status = make();
        CountingNew::Fail(0);
        EXPECT_TRUE(status == KV_OK || status == KV_NO_MEMORY) << status;
        EXPECT_EQ(handle != nullptr, status == KV_OK);
        failed += status == KV_NO_MEMORY ? 1U : 0U;
        EXPECT_EQ(kv_delete(handle), KV_OK);
        ASSERT_EQ(kv_save_project(nullptr), KV_BAD_ARGUMENT);
        EXPECT_EQ(CountingNew::LiveBlocks(), before);
    }
    EXPECT_GT(failed, 2U);
}

#ifdef __GLIBCXX__
TEST(LeakBalance, TwoHundredStepsThroughTheInterfaceLeaveTheirHistoryAndNothingElse) {
    CountingNew::CountOtherThreads();
    MemoryGuard::WatchAllThreads();
    constexpr int warmUp = 20;
    constexpr int further = 200;
    HandleSession session({warmUp + further, 2, 3});
    const std::vector<Call> calls = session.Calls();
    const auto run = [&](int first, int end) {
        for (int call = first; call < end; ++call) {
            EXPECT_EQ(RunInLibrary(calls[static_cast<std::size_t>(call)]), KV_OK);
            session.Desktop().world.ClearJournal();
        }
    };
    run(0, 3 + warmUp);
    const std::size_t texts = MemoryGuard::LiveBlocks();
    const std::size_t blocks = CountingNew::LiveBlocks();
    run(3 + warmUp, 3 + warmUp + further);
    EXPECT_EQ(MemoryGuard::LiveBlocks(), texts);
    EXPECT_EQ(CountingNew::LiveBlocks() - blocks, std::size_t{further}) << "a row of the history for each step";
    EXPECT_TRUE(session.HoldsNothingElse());
}
#endif

} // namespace
} // namespace capi
