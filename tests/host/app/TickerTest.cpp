#include "host/app/Ticker.h"

#include <future>
#include <gtest/gtest.h>
#include <vector>

namespace kinora::host {
namespace {

using std::chrono::milliseconds;

/// Notes ticks, and can be waited on for one.
struct Ticks {
    std::vector<int> counts;
    std::promise<void> third;

    void Add(int count) {
        counts.push_back(count);
        if (counts.size() == 3) {
            third.set_value();
        }
    }
};

TEST(Ticker, CountsWhatWorkTakes) {
    Ticks ticks;
    Ticker ticker(milliseconds(2), [&](int count) { ticks.Add(count); });
    const auto start = std::chrono::steady_clock::now();
    ticker.Begin();
    ticks.third.get_future().wait();
    ticker.End();
    EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(6));
    const std::size_t counted = ticks.counts.size();
    for (std::size_t i = 0; i < counted; ++i) {
        EXPECT_EQ(ticks.counts[i], static_cast<int>(i) + 1);
    }
    std::this_thread::sleep_for(milliseconds(10));
    EXPECT_EQ(ticks.counts.size(), counted);
}

TEST(Ticker, BeginsAnew) {
    Ticks ticks;
    Ticker ticker(milliseconds(2), [&](int count) { ticks.Add(count); });
    ticker.Begin();
    ticks.third.get_future().wait();
    ticker.End();
    ticks.counts.clear();
    ticks.third = {};
    ticker.Begin();
    ticks.third.get_future().wait();
    ticker.Between([&] { EXPECT_EQ(ticks.counts.front(), 1); });
}

TEST(Ticker, SaysNothingOfWhatTakesNoTime) {
    Ticks ticks;
    {
        Ticker ticker(std::chrono::hours(1), [&](int count) { ticks.Add(count); });
        ticker.Begin();
        ticker.End();
        ticker.Begin();
    }
    EXPECT_TRUE(ticks.counts.empty());
}

} // namespace
} // namespace kinora::host
