// Every call of a whole session through the C interface fails once, in several ways, or is the first one that finds the
// desktop dead. Status and text say so, nothing is leaked, and the handle works on.

#include "tests/capi/HandleSession.h"
#include "tests/fault/Sweep.h"

#include <algorithm>
#include <cstdio>
#include <gtest/gtest.h>
#include <ostream>
#include <set>

namespace capi {
namespace {

constexpr auto serverUnavailable = static_cast<HRESULT>(0x800706BAL);

/// One way to fail.
struct Way {
    const char* name;
    void (*inject)(fake::World& world, std::size_t call);
    /// What a call may come to.
    std::set<kv_status> statuses;
    /// True when no call succeeds from then on.
    bool isForGood = false;
};

void PrintTo(const Way& way, std::ostream* stream) {
    *stream << way.name;
}

/// A throwing desktop is one of C++ in this process.
struct Complaint {};

const Way ways[] = {
    {"NameUnknown",
     [](fake::World& world, std::size_t call) {
         world.Inject(call, {DISP_E_UNKNOWNNAME, {}});
     },
     {KV_OK, KV_FAILED}},
    {"CallFails",
     [](fake::World& world, std::size_t call) {
         world.Inject(call, {S_OK, fake::FailsWith(fake::Texts({L"left", L"behind"}))});
     },
     {KV_OK, KV_FAILED}},
    {"Nothing",
     [](fake::World& world, std::size_t call) {
         world.Inject(call, {S_OK, fake::Nothing()});
     },
     {KV_OK, KV_FAILED}},
    {"Busy",
     [](fake::World& world, std::size_t call) {
         world.Inject(call, {S_OK, fake::Fails(RPC_E_CALL_REJECTED)});
     },
     {KV_OK, KV_BUSY, KV_FAILED}},
    {"Throws",
     [](fake::World& world, std::size_t call) {
         world.observer = [&world, call](const fake::Entry&) {
             if (world.CallNumber() == call) {
                 throw Complaint();
             }
         };
     },
     {KV_OK, KV_INTERNAL, KV_INCOMPLETE, KV_NOT_STARTED}},
    {"Dead",
     [](fake::World& world, std::size_t call) { world.Die(call, serverUnavailable); },
     {KV_OK, KV_FAILED, KV_INCOMPLETE},
     true},
    {"DiesInTheCall",
     [](fake::World& world, std::size_t call) {
         world.Inject(call, {S_OK, fake::Fails(RPC_E_DISCONNECTED)});
         world.Die(call + 1, RPC_E_DISCONNECTED);
     },
     {KV_OK, KV_FAILED, KV_INCOMPLETE},
     true},
};

std::size_t CountCalls() {
    HandleSession session;
    for (const Call& call : session.Calls()) {
        EXPECT_EQ(call.run(), KV_OK) << call.name;
    }
    return session.Desktop().world.CallNumber();
}

class CallFaults : public testing::TestWithParam<Way> {
protected:
    /// Runs the session until a call fails, or to its end.
    static kv_status RunWithFault(HandleSession& session) {
        for (const Call& call : session.Calls()) {
            const std::string before = ErrorText(session.Handle());
            const kv_status status = call.run();
            EXPECT_EQ(GetParam().statuses.count(status), 1U)
                << call.name << " is " << status << ": " << ErrorText(session.Handle());
            EXPECT_EQ(ErrorText(session.Handle()) == before, status == KV_OK);
            EXPECT_TRUE(session.HoldsNothingElse()) << call.name;
            if (status != KV_OK) {
                return status;
            }
        }
        return KV_OK;
    }

    static void Check(std::size_t number) {
        HandleSession session;
        GetParam().inject(session.Desktop().world, number);
        const kv_status status = RunWithFault(session);
        if (status != KV_OK && GetParam().isForGood) {
            EXPECT_EQ(kv_save_project(session.Handle()), KV_FAILED);
        }
        if (status != KV_OK) {
            EXPECT_TRUE(session.Repair()) << ErrorText(session.Handle());
        }
        session.DeleteHandle();
        EXPECT_EQ(session.Desktop().world.OutstandingReferences(), 0);
    }
};

TEST_P(CallFaults, AreToldAndLeakNothing) {
    constexpr std::size_t enough = 10; // complaints to read
    const std::size_t calls = CountCalls();
    ASSERT_GT(calls, 400U);
    std::size_t injected = 0;
    std::size_t held = 0;
    // Each way begins at another call, so that all ways together take every call.
    const auto way = static_cast<std::size_t>(
        std::find_if(std::begin(ways), std::end(ways), [](const Way& row) { return row.name == GetParam().name; }) -
        std::begin(ways));
    for (std::size_t number = 1 + way % sweep::Stride(); number <= calls && injected - held < enough;
         number += sweep::Stride()) {
        SCOPED_TRACE(testing::Message() << "call " << number << " of " << calls);
        const int before = sweep::Complaints();
        Check(number);
        ++injected;
        held += sweep::Complaints() == before ? 1U : 0U;
    }
    std::printf("C interface, %-13s: %zu faults injected, %zu held\n", GetParam().name, injected, held);
    RecordProperty("injected", std::to_string(injected));
    RecordProperty("held", std::to_string(held));
}

INSTANTIATE_TEST_SUITE_P(All, CallFaults, testing::ValuesIn(ways),
                         [](const auto& way) { return std::string(way.param.name); });

} // namespace
} // namespace capi
