// How long a busy desktop is waited for: the pause until the next try, as the system is told it.

#include "capi/BusyPatience.h"

#include <gtest/gtest.h>

namespace kinora::capi {
namespace {

TEST(BusyPatience, TriesAgainUntilTheTimeIsOver) {
    const BusyPatience patience(1000);
    EXPECT_EQ(patience.OnRejected(0), 100U);
    EXPECT_EQ(patience.OnRejected(900), 100U);
    EXPECT_EQ(patience.OnRejected(950), 50U) << "no longer than wanted";
    EXPECT_EQ(patience.OnRejected(1000), std::nullopt);
    EXPECT_EQ(patience.OnRejected(5000), std::nullopt);
}

TEST(BusyPatience, OfZeroTriesNotAgain) {
    EXPECT_EQ(BusyPatience(0).OnRejected(0), std::nullopt);
}

TEST(BusyPatience, MayHaveNoEnd) {
    const BusyPatience patience(KV_WAIT_FOREVER);
    EXPECT_EQ(patience.OnRejected(0), 100U);
    EXPECT_EQ(patience.OnRejected(UINT32_MAX - 1), 1U) << "the system's clock has no more milliseconds";
    EXPECT_TRUE(patience.OnRejected(UINT32_MAX).has_value());
}

TEST(BusyPatience, EndsWithItsHandle) {
    BusyPatience patience(KV_WAIT_FOREVER);
    patience.End();
    EXPECT_EQ(patience.OnRejected(0), std::nullopt);
}

} // namespace
} // namespace kinora::capi
