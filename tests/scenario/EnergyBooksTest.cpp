#include "scenario/EnergyBooks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kinora::scenario {
namespace {

EnergyBooks BooksOf(double imbalance) {
    EnergyBooks books;
    books.Add({0.0, 0.0, 50.0, 0.0, 0.0, 0.0, 0.0, 0.0});
    books.Add({0.1, 1.5, 48.0, 0.0, 0.0, 0.0, 0.4, imbalance});
    books.Add({0.2, 0.0, 50.0, 0.0, 0.0, 0.0, 0.5, 0.0});
    return books;
}

TEST(EnergyBooks, CloseWithinAHundredthOfWhatWentThrough) {
    // Two joules: the potential energy's change, not its level.
    EXPECT_DOUBLE_EQ(BooksOf(0.0).throughput, 2.0);
    EXPECT_TRUE(BooksOf(-0.0199).Close());
    EXPECT_FALSE(BooksOf(-0.0201).Close());
    EXPECT_FALSE(BooksOf(0.0201).Close());
}

TEST(EnergyBooks, CountWhatSpringsAndBushingsDo) {
    EnergyBooks books;
    books.Add({0.0, 0.0, 0.0, 0.0, 0.0, -3.0, 0.0, 0.02});
    EXPECT_EQ(books.throughput, 3.0);
    EXPECT_TRUE(books.Close());
}

TEST(EnergyBooks, TakeNoRoundingForAnError) {
    EnergyBooks books;
    books.Add({0.0, 1e-20, 0.0, 0.0, 0.0, 0.0, 0.0, 1e-20});
    EXPECT_TRUE(books.Close());
}

TEST(EnergyBooks, SayHowFarWhenAndWhatHelps) {
    const std::string warning = BooksOf(-0.5).Warning("slide");
    EXPECT_THAT(warning, testing::HasSubstr("joint \"slide\" do not close: -0.5 J at 0.1 s are unexplained, 25 % of"));
    EXPECT_THAT(warning, testing::HasSubstr("halve \"solver.step\""));
}

} // namespace
} // namespace kinora::scenario
