// A handle that is deleted while others use it, and calls of several threads at once. Events, no pauses.

#include "tests/capi/HandleSession.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <future>
#include <gtest/gtest.h>
#include <thread>

namespace capi {
namespace {

using namespace std::chrono_literals;
constexpr auto longest = 20s; // far more than any takes on a slow machine

/// Holds a method of the desktop in the middle of a call, until the test lets it go on.
class Gate {
public:
    explicit Gate(fake::Object& object, const char* method, const fake::Answer& answer) {
        object.On(method, [this, answer](const fake::Arguments&) {
            m_reached.set_value();
            EXPECT_EQ(m_isOpen.get_future().wait_for(longest), std::future_status::ready);
            return answer;
        });
    }
    /// Waits for the call.
    void Reach() { ASSERT_EQ(m_reached.get_future().wait_for(longest), std::future_status::ready); }
    void Open() { m_isOpen.set_value(); }

private:
    std::promise<void> m_reached;
    std::promise<void> m_isOpen;
};

std::future<kv_status> Start(const std::function<kv_status()>& call) {
    return std::async(std::launch::async, call);
}

kv_status EndOf(std::future<kv_status>& call) {
    if (call.wait_for(longest) != std::future_status::ready) {
        ADD_FAILURE() << "a call hangs";
        std::abort(); // nobody can wait for it
    }
    return call.get();
}

/// Waits until a handle is none any more.
void AwaitDeletion(kv_coupling* handle) {
    const auto end = std::chrono::steady_clock::now() + longest;
    const char* text = nullptr;
    while (kv_error_text(handle, &text) == KV_OK && std::chrono::steady_clock::now() < end) {
        std::this_thread::yield();
    }
}

class Deletion : public testing::Test {
protected:
    Deletion() {
        EXPECT_EQ(m_session.Create(), KV_OK);
        EXPECT_EQ(m_session.Init(), KV_OK);
    }
    HandleSession m_session;
};

TEST_F(Deletion, WaitsForTheCallUnderWayAndRefusesThoseThatWait) {
    Gate solve(m_session.Desktop().design, "Analyze", fake::Long(0));
    kv_coupling* const handle = m_session.Handle();
    auto step = Start([&] { return m_session.Step(0); });
    solve.Reach();
    std::vector<std::future<kv_status>> waiting;
    for (int call = 0; call < 4; ++call) {
        waiting.push_back(Start([=] { return call % 2 == 0 ? kv_save_project(handle) : kv_quit(handle); }));
    }
    auto deletion = Start([&] {
        m_session.DeleteHandle();
        return KV_OK;
    });
    AwaitDeletion(handle);
    for (auto& call : waiting) {
        EXPECT_EQ(EndOf(call), KV_BAD_ARGUMENT) << "while the call under way still is";
    }
    EXPECT_EQ(kv_save_project(handle), KV_BAD_ARGUMENT);
    EXPECT_EQ(kv_delete(handle), KV_BAD_ARGUMENT) << "the second one does not wait";
    EXPECT_EQ(deletion.wait_for(0s), std::future_status::timeout);
    solve.Open();
    EXPECT_EQ(EndOf(step), KV_OK) << "the call under way comes to its end";
    EXPECT_EQ(EndOf(deletion), KV_OK);
    EXPECT_EQ(m_session.LoadCount(), 3U);
    EXPECT_EQ(m_session.Desktop().world.Count("Save"), 0U);
    EXPECT_EQ(m_session.Owned(), "0000");
}

TEST_F(Deletion, OfOneOfTwoHandlesLeavesTheOther) {
    Gate solve(m_session.Desktop().design, "Analyze", fake::Long(0));
    auto step = Start([&] { return m_session.Step(0); });
    solve.Reach();
    HandleSession other;
    EXPECT_EQ(other.Create(), KV_OK) << "it does not wait for the first one's call";
    other.DeleteHandle();
    solve.Open();
    EXPECT_EQ(EndOf(step), KV_OK);
}

TEST_F(Deletion, ManyAtOnceAreOne) {
    kv_coupling* handle = nullptr;
    ASSERT_EQ(kv_new(KV_API_VERSION, nullptr, &handle), KV_OK);
    std::vector<std::future<kv_status>> deletions;
    for (int i = 0; i < 8; ++i) {
        deletions.push_back(Start([=] { return kv_delete(handle); }));
    }
    int done = 0;
    for (auto& deletion : deletions) {
        const kv_status status = EndOf(deletion);
        EXPECT_TRUE(status == KV_OK || status == KV_BAD_ARGUMENT);
        done += status == KV_OK ? 1 : 0;
    }
    EXPECT_EQ(done, 1);
}

TEST_F(Deletion, ALastErrorCanBeReadWhileACallIsUnderWay) {
    EXPECT_EQ(kv_init_geometry(m_session.Handle(), nullptr, "mm"), KV_BAD_ARGUMENT);
    Gate solve(m_session.Desktop().design, "Analyze", fake::Long(0));
    auto step = Start([&] { return m_session.Step(0); });
    solve.Reach();
    EXPECT_EQ(ErrorText(m_session.Handle()).find("kv_init_geometry: "), 0U);
    solve.Open();
    EXPECT_EQ(EndOf(step), KV_OK);
}

TEST(Threads, CallsOfManyComeOneAfterTheOther) {
    HandleSession session;
    ASSERT_EQ(session.Create(), KV_OK);
    std::atomic<int> inside{0};
    std::atomic<int> most{0};
    session.Desktop().project.On("Save", [&](const fake::Arguments&) {
        const int now = ++inside;
        most = std::max<int>(most, now);
        std::this_thread::yield();
        --inside;
        return fake::Nothing();
    });
    session.Desktop().world.ClearJournal();
    std::vector<std::future<kv_status>> calls;
    for (int call = 0; call < 32; ++call) {
        calls.push_back(Start([&] { return kv_save_project(session.Handle()); }));
    }
    for (auto& call : calls) {
        EXPECT_EQ(EndOf(call), KV_OK);
    }
    EXPECT_EQ(session.Desktop().world.Count("Save"), 32U);
    EXPECT_EQ(most, 1);
}

TEST(Threads, AHandleIsUsedByAnotherThreadThanMadeIt) {
    HandleSession session;
    for (const Call& call : session.Calls()) {
        auto onAnother = Start(call.run);
        EXPECT_EQ(EndOf(onAnother), KV_OK) << call.name;
    }
}

} // namespace
} // namespace capi
