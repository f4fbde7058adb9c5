// The filter as COM finds it registered. That COM asks it when a desktop turns a call away is COM's part (Wine 8 does
// not do so yet, it lets such calls through).
#include "programs/BusyFilter.h"

#include "host/app/ComScope.h"
#include "host/core/BusyWait.h"

#include <windows.h>

#include <objbase.h>

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace kinora::host {
namespace {

/// Takes the thread's filter, asks it something, and puts it back.
template <class Question>
DWORD AskRegisteredFilter(Question question) {
    IMessageFilter* filter = nullptr;
    EXPECT_TRUE(SUCCEEDED(CoRegisterMessageFilter(nullptr, &filter)));
    if (!filter) {
        ADD_FAILURE() << "no filter is registered";
        return 0;
    }
    const DWORD answer = question(*filter);
    CoRegisterMessageFilter(filter, nullptr);
    return answer;
}

DWORD AnswerToRejection(DWORD elapsedMs, DWORD type) {
    return AskRegisteredFilter(
        [&](IMessageFilter& filter) { return filter.RetryRejectedCall(nullptr, elapsedMs, type); });
}

class BusyFilterTest : public testing::Test {
protected:
    const ComScope m_com;
    std::vector<std::string> m_notices;
    BusyWait m_wait{2.0, [this](const std::string& text) { m_notices.push_back(text); }};
    const programs::BusyFilter m_filter{[this](std::uint32_t elapsedMs) { return m_wait.OnRejected(elapsedMs); }};
};

TEST_F(BusyFilterTest, RetriesACallThatIsTurnedAwayAndSaysSo) {
    // Anything from 100 on is a pause in milliseconds before the next try.
    EXPECT_EQ(AnswerToRejection(0, SERVERCALL_RETRYLATER), 250u);
    EXPECT_EQ(AnswerToRejection(250, SERVERCALL_REJECTED), 250u);
    ASSERT_EQ(m_notices.size(), 1u);
    EXPECT_NE(m_notices[0].find("The desktop is busy"), std::string::npos);
}

TEST_F(BusyFilterTest, GivesTheCallUpAtTheLimit) {
    EXPECT_EQ(AnswerToRejection(2000, SERVERCALL_RETRYLATER), static_cast<DWORD>(-1));
    EXPECT_NE(m_notices.back().find("giving the call up"), std::string::npos);
}

TEST_F(BusyFilterTest, WaitsOnForACallInProgressAndTakesIncomingCalls) {
    EXPECT_EQ(AskRegisteredFilter([](IMessageFilter& filter) { return filter.MessagePending(nullptr, 0, 0); }),
              static_cast<DWORD>(PENDINGMSG_WAITDEFPROCESS));
    EXPECT_EQ(
        AskRegisteredFilter([](IMessageFilter& filter) { return filter.HandleInComingCall(0, nullptr, 0, nullptr); }),
        static_cast<DWORD>(SERVERCALL_ISHANDLED));
}

TEST(BusyFilter, PutsTheFormerFilterBack) {
    const ComScope com;
    const programs::BusyFilter former([](std::uint32_t) { return 300U; });
    {
        const programs::BusyFilter filter([](std::uint32_t) { return 200U; });
        EXPECT_EQ(AnswerToRejection(0, SERVERCALL_RETRYLATER), 200u);
    }
    EXPECT_EQ(AnswerToRejection(0, SERVERCALL_RETRYLATER), 300u);
}

} // namespace
} // namespace kinora::host
