#include "host/core/RunText.h"

#include "tests/host/core/Joints.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kinora::host {

using namespace scenario;

namespace {

using testing::HasSubstr;

class RunTextTest : public testing::Test {
protected:
    void SetUp() override {
        m_scenario.bodies.resize(1);
        m_scenario.bodies[0].name = "rotor";
        m_scenario.joints = {OneCoordinateJoint("hinge", JointType::Hinge, Vector::UnitX(), FreeMotion())};
        m_scenario.stepping = {0.5, 4};
    }

    static StepRecord Record(int step) {
        StepRecord record;
        record.step = step;
        record.time = 0.5 * step;
        record.poses.resize(1);
        record.results.resize(1);
        record.results[0].force[0] = 1.25;
        record.results[0].torque[2] = -3000.0;
        record.mechanism.joints.resize(1);
        record.mechanism.joints[0].coordinates = {{0.5, 0.0}};
        return record;
    }

    Scenario m_scenario;
};

TEST_F(RunTextTest, StepLineHoldsTimeForcesAndJoints) {
    EXPECT_EQ(StepLine(m_scenario, Record(2)), "step 2/4  1 s  rotor (1.25, 0, 0) N  hinge 28.65 deg");
}

TEST_F(RunTextTest, ProgressLineTellsShareAndTimeLeft) {
    // Two of five steps took 30 s: three more take 45 s.
    EXPECT_EQ(ProgressLine(m_scenario, Record(1), 0, 30.0, 200),
              "[#########...............]  40%  45 s left  0.5 s  rotor (1.25, 0, 0) N  hinge 28.65 deg");
    EXPECT_THAT(ProgressLine(m_scenario, Record(1), 0, 300.0, 200), HasSubstr("7:30 min left"));
    EXPECT_THAT(ProgressLine(m_scenario, Record(1), 0, 30000.0, 200), HasSubstr("12:30 h left"));
    EXPECT_THAT(ProgressLine(m_scenario, Record(4), 3, 8.0, 200), HasSubstr("100%  0 s left"));
    EXPECT_EQ(ProgressLine(m_scenario, Record(1), 0, 30.0, 10), "[#########");
}

TEST_F(RunTextTest, TableShowsEveryStepOfAShortRun) {
    EXPECT_EQ(LoadTable(m_scenario, {Record(0), Record(1)}, 40),
              "  step      time s  body          Fx N        Fy N        Fz N      Tx mN m     Ty mN m     Tz mN m\n"
              "     0           0  rotor         1.25           0           0            0           0       -3000\n"
              "     1         0.5  rotor         1.25           0           0            0           0       -3000\n");
}

TEST_F(RunTextTest, TableOfALongRunIsThinnedAndSaysSo) {
    std::vector<StepRecord> records;
    for (int step = 0; step <= 100; ++step) {
        records.push_back(Record(step));
    }
    const std::string table = LoadTable(m_scenario, records, 40);
    EXPECT_LE(std::count(table.begin(), table.end(), '\n'), 40);
    EXPECT_THAT(table, HasSubstr("\n   100 "));
    EXPECT_THAT(table, HasSubstr("(every 3rd of 101 steps; all of them are in the coupling log)"));
}

TEST_F(RunTextTest, EnergyTableIsForFreeJointsOnly) {
    EXPECT_THAT(EnergyTable(m_scenario, Record(1)), HasSubstr("hinge"));
    m_scenario.joints[0].coordinates[0].motion = PrescribedMotion(Expression(0.0));
    EXPECT_EQ(EnergyTable(m_scenario, Record(1)), "");
}

TEST_F(RunTextTest, FailureListsMessagesAndAdvice) {
    OperationFailed failure("Analyze failed: step 1 at 0.05 s.", {"Look at the poses."});
    failure.messages = {{Severity::Error, "bodies overlap"}, {Severity::Info, "pass 1"}};
    EXPECT_EQ(FailureText(failure), "error: Analyze failed: step 1 at 0.05 s.\n"
                                    "The desktop says:\n"
                                    "  error: bodies overlap\n"
                                    "  info: pass 1\n"
                                    "What to try:\n"
                                    "  - Look at the poses.\n");
}

} // namespace
} // namespace kinora::host
