// A desktop in the process of its host calls back: in the middle of a call it asks the same handle for every operation.
// All of them fail at once, and the call under way comes to the same end.

#include "tests/capi/HandleSession.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>

namespace capi {
namespace {

/// Every operation that needs the handle's thread.
std::vector<Call> OperationsOf(HandleSession& session) {
    kv_coupling* const handle = session.Handle();
    return {
        {"kv_create_project", [&] { return session.Create(); }},
        {"kv_open_project", [=] { return kv_open_project(handle, "magnets.obj", "Design"); }},
        {"kv_get_designs",
         [=] {
             kv_texts* designs = nullptr;
             return kv_get_designs(handle, "magnets.obj", &designs);
         }},
        {"kv_init_geometry", [=] { return kv_init_geometry(handle, "magnets.obj", "mm"); }},
        {"kv_init_magnetic_objects", [&] { return session.Init(); }},
        {"kv_analyze",
         [&] {
             std::vector<kv_load> loads = session.Loads();
             std::size_t count = 0;
             std::int32_t status = 0;
             return kv_analyze(session.Handle(), 0.0, session.Poses(0).data(), loads.size(), loads.data(), &count,
                               &status);
         }},
        {"kv_get_messages",
         [=] {
             kv_texts* messages = nullptr;
             return kv_get_messages(handle, 0, &messages);
         }},
        {"kv_save_project", [=] { return kv_save_project(handle); }},
        {"kv_close_project", [=] { return kv_close_project(handle); }},
        {"kv_quit", [=] { return kv_quit(handle); }},
        {"kv_release", [=] { return kv_release(handle); }},
        {"kv_delete", [=] { return kv_delete(handle); }},
    };
}

std::string JournalOf(HandleSession& session) {
    for (const Call& call : session.Calls()) {
        EXPECT_EQ(call.run(), KV_OK) << call.name << ": " << ErrorText(session.Handle());
    }
    return session.Desktop().world.Journal();
}

TEST(CallFromInside, FailsAtOnceAndTouchesNothing) {
    std::string expected;
    {
        HandleSession undisturbed;
        undisturbed.Desktop().messages = {L"a message"};
        expected = JournalOf(undisturbed);
    }
    HandleSession session;
    session.Desktop().messages = {L"a message"};
    const std::vector<Call> operations = OperationsOf(session);
    std::size_t asked = 0;
    bool isAsking = false;
    session.Desktop().world.observer = [&](const fake::Entry& entry) {
        // Where nothing is held yet there is nothing to refuse: a launch.
        if (isAsking || entry.method == "GetAppDesktop") {
            return;
        }
        isAsking = true;
        const Call& operation = operations[asked++ % operations.size()];
        EXPECT_EQ(operation.run(), KV_FAILED) << operation.name << " in the middle of " << entry.method;
        isAsking = false;
    };
    EXPECT_EQ(JournalOf(session), expected);
    EXPECT_GT(asked, 200U);
    session.Desktop().world.observer = nullptr;
}

TEST(CallFromInside, OfAnotherHandleIsFree) {
    HandleSession session;
    ASSERT_EQ(session.Create(), KV_OK);
    const Handle other;
    kv_status status = KV_INTERNAL;
    session.Desktop().project.On("Save", [&](const fake::Arguments&) {
        status = kv_quit(other);
        return fake::Nothing();
    });
    EXPECT_EQ(kv_save_project(session.Handle()), KV_OK);
    EXPECT_EQ(status, KV_OK);
}

} // namespace
} // namespace capi
