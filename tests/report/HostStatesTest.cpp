#include "report/core/HostStates.h"

#include "scenario/Errors.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kinora::report {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string head = "Step,Time [s],a.X [m],a.Force_x [N],lift.Coordinate [m],lift.Field force [N]\n";

CouplingLog LogWithTimes(Column times) {
    CouplingLog log;
    log.rows = times.size();
    log.times = std::move(times);
    return log;
}

TEST(HostStates, TakesTheJointsAndTheExactTimes) {
    const HostStates states =
        ParseHostStates(head + "0,0,1,2,0.5,7\n1,123.4567891,1,2,0.75,8\n", "states.csv", LogWithTimes({0.0, 123.457}));
    EXPECT_THAT(*states.times, ElementsAre(0.0, 123.4567891));
    ASSERT_EQ(states.series.size(), 2u);
    EXPECT_EQ(states.series[0].group, "lift");
    EXPECT_EQ(states.series[0].unit, "m");
    EXPECT_EQ(states.series[1].name, "Field force");
    EXPECT_THAT(states.series[1].values, ElementsAre(7.0, 8.0));
    EXPECT_THAT(states.notices, IsEmpty());
}

TEST(HostStates, TellsTimesThatSixDigitsCannotTellApart) {
    const HostStates states = ParseHostStates(head + "0,100.0001,1,2,1,7\n1,100.0002,1,2,2,8\n2,100.0003,1,2,3,9\n",
                                              "states.csv", LogWithTimes({100.0, 100.0, 100.0}));
    EXPECT_THAT(states.series[0].values, ElementsAre(1.0, 2.0, 3.0));
}

TEST(HostStates, LeavesGapsForStepsThatItLacks) {
    const HostStates states =
        ParseHostStates(head + "0,0,1,2,0.5,7\n2,2,1,2,1.5,9\n3,3,1,2", "states.csv", LogWithTimes({0, 1, 2, 3}));
    EXPECT_FALSE(states.times);
    EXPECT_TRUE(std::isnan(states.series[0].values[1]));
    EXPECT_EQ(states.series[0].values[2], 1.5);
    ASSERT_EQ(states.notices.size(), 1u);
    EXPECT_THAT(states.notices[0].text, HasSubstr("2 of 4 steps of the log are not in the host's states, states.csv"));
}

const std::string accounts =
    "Step,Time [s],swing.Kinetic [J],swing.Potential [J],swing.Field work [J],swing.Load work [J],"
    "swing.Dissipated [J],swing.Imbalance [J]\n";

TEST(HostStates, TellsEnergyBooksThatDoNotClose) {
    const HostStates states = ParseHostStates(
        accounts + "0,0,0,-5,0,0,0,0\n1,0.5,1,-4,2,0,0,0.25\n2,1,0,-5,0.5,0,0,-0.5\n3,1.5,0,-5,0.5,0,0,\n",
        "states.csv", LogWithTimes({0.0, 0.5, 1.0, 1.5}));
    ASSERT_EQ(states.notices.size(), 1u);
    EXPECT_EQ(states.notices[0].severity, Severity::Warning);
    EXPECT_EQ(states.notices[0].text,
              "The energy books of joint \"swing\" do not close: -0.5 J at 1 s are unexplained, 25 % of the 2 J that "
              "went through. The time step is too long for this motion, or the field's loads are not exact enough: "
              "halve \"solver.step\" until the figure falls.");
}

TEST(HostStates, CountsTheWorkOfSpringsAndBushingsWhereThereIsSuchAColumn) {
    // Ten joules went through a spring; beside them 0.05 J are little, beside one joule they are not.
    const std::string rows = "0,0,0,0,0,0,0,0,0\n1,0.5,1,0,0,0,-10,0,-0.05\n";
    const std::string withElements = "Step,Time [s],a.Kinetic [J],a.Potential [J],a.Field work [J],a.Load work [J],"
                                     "a.Element work [J],a.Dissipated [J],a.Imbalance [J]\n";
    const HostStates states = ParseHostStates(withElements + rows, "states.csv", LogWithTimes({0.0, 0.5}));
    EXPECT_THAT(states.notices, IsEmpty());
    ASSERT_EQ(states.series.size(), 7u);
    EXPECT_EQ(states.series[4].name, "Element work");
    EXPECT_THAT(states.series[4].values, ElementsAre(0.0, -10.0));
    // Of one joule in kinetic energy a fifth is much.
    const std::string open = "0,0,0,0,0,0,0,0,0\n1,0.5,1,0,0,0,0.8,0,0.2\n";
    EXPECT_EQ(ParseHostStates(withElements + open, "states.csv", LogWithTimes({0.0, 0.5})).notices.size(), 1u);
}

TEST(HostStates, TellsEnergyBooksWhateverTheLogHas) {
    CouplingLog log;
    EXPECT_EQ(ParseHostStates(accounts + "0,0,1,0,0,0,0,1\n", "states.csv", log).notices.size(), 2u);
}

TEST(HostStates, FindsNothingToSayAboutEnergyBooksThatClose) {
    const std::string rows = "0,0,0,-5,0,0,0,0\n1,0.5,1,-4,2,0,0,0.02\n";
    EXPECT_THAT(ParseHostStates(accounts + rows, "states.csv", LogWithTimes({0.0, 0.5})).notices, IsEmpty());
}

TEST(HostStates, TakesAnEmptyCellForNoValue) {
    const HostStates states =
        ParseHostStates(accounts + "0,0,,,0,,,\n1,0.5,,,2,,,\n", "states.csv", LogWithTimes({0.0, 0.5}));
    ASSERT_EQ(states.series.size(), 1u);
    EXPECT_EQ(states.series[0].name, "Field work");
    EXPECT_THAT(states.series[0].values, ElementsAre(0.0, 2.0));
    EXPECT_THAT(*states.times, ElementsAre(0.0, 0.5));
    EXPECT_THAT(states.notices, IsEmpty());
}

TEST(HostStates, RefusesAnotherTable) {
    EXPECT_THROW(ParseHostStates("Step,SimTime\n", "other.csv", LogWithTimes({})), scenario::InputError);
}

} // namespace
} // namespace kinora::report
