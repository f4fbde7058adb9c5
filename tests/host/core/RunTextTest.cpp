#include "host/core/RunText.h"

#include "tests/host/Joints.h"

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

TEST_F(RunTextTest, WorkingLineKeepsItsOwnTextWhole) {
    EXPECT_EQ(WorkingLine("", "working", 3, 80), "working, 3 s");
    EXPECT_EQ(WorkingLine("[####....]  40%", "solving", 12, 80), "[####....]  40%  solving, 12 s");
    EXPECT_EQ(WorkingLine("[####....]  40%", "solving", 12, 20), "[####  solving, 12 s");
    EXPECT_EQ(WorkingLine("[####....]  40%", "solving", 12, 10), "  solving,");
    EXPECT_EQ(WorkingLine("[####....]  40%", "solving", 12, 0), "");
}

TEST_F(RunTextTest, LinesAreCutByColumnsAndBetweenCharacters) {
    EXPECT_EQ(CutToColumns("Spule", 5), "Spule");
    EXPECT_EQ(CutToColumns("Spulenk\u00f6rper", 8), "Spulenk\u00f6");
    EXPECT_EQ(CutToColumns("\u2192 rotor", 3), "\u2192 r");
    // Two columns each.
    EXPECT_EQ(CutToColumns("\u78c1\u77f3", 4), "\u78c1\u77f3");
    EXPECT_EQ(CutToColumns("\u78c1\u77f3", 3), "\u78c1");
    EXPECT_EQ(CutToColumns("\U0001F9F2\U0001F680!", 4), "\U0001F9F2\U0001F680");
    // Some terminals give an accent a column of its own.
    EXPECT_EQ(CutToColumns("o\u0308x", 2), "o\u0308");
    EXPECT_EQ(CutToColumns("rotor", 0), "");
    EXPECT_EQ(CutToColumns("rotor", -3), "");
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

/// A free joint, a spring and a bushing.
class SixDegreesText : public RunTextTest {
protected:
    void SetUp() override {
        RunTextTest::SetUp();
        FreePlacement start;
        start.angularVelocity_W = {0.0, 0.0, 150.0};
        start.angularDamping = 1e-6;
        m_scenario.joints = {PlacementJoint("flight", JointType::Free, start)};
        SpringElement spring;
        spring.name = "coil";
        spring.to.body = 0;
        spring.stiffness = 200.0;
        spring.length = 0.04;
        m_scenario.springs = {spring};
        m_scenario.loads = {
            {0, {Expression::Parse("-5*x", Expression::Variables::TimeAndPlace), {}, {}}, {}, true, Vector::Zero()}};
        m_record = Record(2);
        m_record.mechanism.joints[0].coordinates.clear();
        m_record.mechanism.joints[0].placement.displacement_W = {0.0, 1e-20, 0.0025};
        m_record.mechanism.joints[0].placement.swept_W = {0.0, 0.0, 12.566370614359172};
        m_record.mechanism.joints[0].energy.elementWork = 0.25;
        m_record.mechanism.springs.resize(1);
        m_record.mechanism.springs[0].potential = 0.125;
        m_record.mechanism.springs[0].dissipated = 0.5;
    }

    StepRecord m_record;
};

TEST_F(SixDegreesText, StepLineHoldsWayAndTurns) {
    EXPECT_EQ(StepLine(m_scenario, m_record),
              "step 2/4  1 s  rotor (1.25, 0, 0) N  flight (0, 0, 2.5) mm (0, 0, 720) deg");
}

TEST_F(SixDegreesText, EnergyTableHasTheWorkOfSprings) {
    EXPECT_EQ(EnergyTable(m_scenario, m_record),
              "Energy, J: gain of kinetic and potential energy + dissipated = field work + load work + work of springs "
              "and bushings + imbalance\n"
              "joint                gain   field work    load work      springs   dissipated    imbalance\n"
              "flight                  0            0            0         0.25            0        -0.25\n"
              "springs and bushings hold 0.125 J and have dissipated 0.5 J\n");
}

TEST_F(SixDegreesText, ModelNamesJointsSpringsAndLoads) {
    const std::string model = ModelText(m_scenario);
    EXPECT_THAT(model,
                HasSubstr("  free \"flight\" about (0, 0, 0) m, moves rotor\n"
                          "    free, starts displaced by (0, 0, 0) m with (0, 0, 0) m/s, turned by (0, 0, 0) rad "
                          "with (0, 0, 150) rad/s, angular damping 1e-06\n"));
    EXPECT_THAT(model, HasSubstr("springs and bushings\n  spring \"coil\" from the ground at (0, 0, 0) m to rotor at "
                                 "(0, 0, 0) m: stiffness 200, damping 0, relaxed at 0.04 m\n"));
    EXPECT_THAT(model, HasSubstr("loads\n  on rotor in its own axes: force (-5*x, 0, 0) N, torque (0, 0, 0) N m\n"));
}

TEST_F(RunTextTest, ModelTellsDirectionsThatWereGivenFromTheUsualOne) {
    m_scenario.materials = {{"block", {"magnet_1T", {0, 0, -1}}}, {"yoke", {"steel_soft", {1, 0, 0}}}};
    m_scenario.undirected = {"yoke"};
    EXPECT_THAT(ModelText(m_scenario), HasSubstr("materials\n"
                                                 "  block: magnet_1T along (0, 0, -1)\n"
                                                 "  yoke: steel_soft along (1, 0, 0) if it is a magnet\n"));
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
