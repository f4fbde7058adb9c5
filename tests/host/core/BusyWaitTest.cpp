#include "host/core/BusyWait.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace kinora::host {
namespace {

using testing::HasSubstr;

class BusyWaitTest : public testing::Test {
protected:
    std::vector<std::string> m_notices;
    BusyWait m_wait{20.0, [this](const std::string& text) { m_notices.push_back(text); }};
};

TEST_F(BusyWaitTest, RetriesAtAPaceThatLeavesTheDesktopAlone) {
    EXPECT_EQ(m_wait.OnRejected(0), 250u);
    EXPECT_EQ(m_wait.OnRejected(19999), 250u);
}

TEST_F(BusyWaitTest, SaysAtOnceThatItWaitsAndThenEveryFiveSeconds) {
    for (std::uint32_t elapsed = 0; elapsed < 12000; elapsed += 250) {
        m_wait.OnRejected(elapsed);
    }
    ASSERT_EQ(m_notices.size(), 3u);
    EXPECT_THAT(m_notices[0], HasSubstr("The desktop is busy (is a dialog open?); waiting, 20 s left."));
    EXPECT_THAT(m_notices[2], HasSubstr("10 s left"));
}

TEST_F(BusyWaitTest, GivesUpAtTheLimitAndSaysSo) {
    EXPECT_EQ(m_wait.OnRejected(20000), std::nullopt);
    EXPECT_THAT(m_notices.back(), HasSubstr("busy for 20 s; giving the call up"));
}

TEST_F(BusyWaitTest, BeginsAnewWithTheNextCall) {
    m_wait.OnRejected(15000);
    m_wait.OnRejected(0);
    EXPECT_EQ(m_notices.size(), 2u);
    EXPECT_THAT(m_notices[1], HasSubstr("20 s left"));
}

} // namespace
} // namespace kinora::host
