#include "host/mechanism/Mechanism.h"

#include "scenario/Errors.h"
#include "tests/host/Joints.h"
#include "tests/support/Pi.h"

#include <cmath>
#include <gtest/gtest.h>

namespace kinora::host {

using namespace scenario;

namespace {

Expression Formula(const char* text) {
    return Expression::Parse(text, Expression::Variables::TimeAndCoordinate);
}

/// One body of 2 kg, half a metre along y from the origin, on one joint.
Scenario OneJoint(JointType type, const Vector& axis, FreeMotion motion) {
    Scenario scenario;
    Body body;
    body.name = "bob";
    body.X_WB0.p_WB_W = {0.0, 0.5, 0.0};
    body.mass = 2.0;
    body.principalInertia_B = {0.01, 0.02, 0.03};
    scenario.bodies = {body};
    scenario.joints = {OneCoordinateJoint("joint", type, axis, std::move(motion))};
    return scenario;
}

/// Runs without a field. The last step ends at `end`.
JointRecord RunFieldFree(const Scenario& scenario, double end, int steps) {
    Mechanism mechanism(scenario);
    const std::vector<Load> none(scenario.bodies.size());
    mechanism.Start();
    mechanism.ApplyLoads(none);
    for (int step = 1; step <= steps; ++step) {
        mechanism.Move(end * step / steps);
        mechanism.ApplyLoads(none);
    }
    return mechanism.Joints()[0];
}

TEST(Mechanism, ThrowsAParabolaExactly) {
    Scenario scenario = OneJoint(JointType::Slider, Vector::UnitZ(), {});
    FreeMotionOf(scenario.joints[0]).speed = 3.0;
    scenario.gravity_W = {0.0, 0.0, -9.80665};
    const JointRecord record = RunFieldFree(scenario, 1.0, 10);
    EXPECT_NEAR(record.coordinates[0].coordinate, 3.0 - 0.5 * 9.80665, 1e-13);
    EXPECT_NEAR(record.coordinates[0].speed, 3.0 - 9.80665, 1e-13);
    EXPECT_NEAR(record.energy.Imbalance(), 0.0, 1e-12);
}

TEST(Mechanism, SwingsOnASpringWithSecondOrder) {
    FreeMotion motion;
    motion.start = 0.01;
    motion.spring = {200.0, 0.0};
    const Scenario scenario = OneJoint(JointType::Slider, Vector::UnitX(), motion);
    const double omega = 10.0;
    double previous = 0.0;
    for (const int steps : {100, 200, 400}) {
        const double error =
            std::fabs(RunFieldFree(scenario, 1.0, steps).coordinates[0].coordinate - 0.01 * std::cos(omega));
        if (previous > 0.0) {
            EXPECT_NEAR(previous / error, 4.0, 0.1);
        }
        previous = error;
    }
}

TEST(Mechanism, KeepsTheEnergyOfASpringOverTenThousandSwings) {
    FreeMotion motion;
    motion.start = 0.01;
    motion.spring = {200.0, 0.0};
    const Scenario scenario = OneJoint(JointType::Slider, Vector::UnitX(), motion);
    const double period = 2.0 * pi / 10.0;
    Mechanism mechanism(scenario);
    const std::vector<Load> none(1);
    mechanism.Start();
    mechanism.ApplyLoads(none);
    const double energy = mechanism.Joints()[0].energy.initial;
    double worst = 0.0;
    for (int step = 1; step <= 200000; ++step) {
        mechanism.Move(step * period / 20.0);
        mechanism.ApplyLoads(none);
        worst = std::fmax(worst, std::fabs(mechanism.Joints()[0].energy.Imbalance()));
    }
    // Velocity Verlet: the error of the energy oscillates within (omega h)^2 / 4 of it and never drifts.
    EXPECT_LT(worst, 0.25 * std::pow(2.0 * pi / 20.0, 2) * energy * 1.1);
}

TEST(Mechanism, RunsBackToWhereItCameFrom) {
    FreeMotion motion;
    motion.start = 0.3;
    motion.speed = 1.0;
    motion.load = Formula("-40*q^3");
    Scenario scenario = OneJoint(JointType::Slider, Vector::UnitX(), motion);
    const JointRecord there = RunFieldFree(scenario, 2.0, 100);
    auto& back = FreeMotionOf(scenario.joints[0]);
    back.start = there.coordinates[0].coordinate;
    back.speed = -there.coordinates[0].speed;
    const JointRecord home = RunFieldFree(scenario, 2.0, 100);
    EXPECT_NEAR(home.coordinates[0].coordinate, 0.3, 1e-10);
    EXPECT_NEAR(home.coordinates[0].speed, -1.0, 1e-10);
}

TEST(Mechanism, DecaysWithADamper) {
    FreeMotion motion;
    motion.start = 0.01;
    motion.spring = {200.0, 0.0};
    motion.damping = 4.0;
    const Scenario scenario = OneJoint(JointType::Slider, Vector::UnitX(), motion);
    const JointRecord record = RunFieldFree(scenario, 1.0, 2000);
    const double delta = 1.0, omega = std::sqrt(100.0 - delta * delta);
    const double expected = 0.01 * std::exp(-delta) * (std::cos(omega) + delta / omega * std::sin(omega));
    EXPECT_NEAR(record.coordinates[0].coordinate, expected, 1e-7);
    EXPECT_NEAR(record.energy.Imbalance(), 0.0, 1e-5 * record.energy.initial);
    EXPECT_GT(record.energy.dissipated, 0.8 * record.energy.initial);
}

TEST(Mechanism, LosesAFixedLengthPerSwingToDryFriction) {
    // Between turning points the amplitude shrinks by 2 Ff / k.
    FreeMotion motion;
    motion.start = 0.01;
    motion.spring = {200.0, 0.0};
    motion.friction = 0.1;
    const Scenario scenario = OneJoint(JointType::Slider, Vector::UnitX(), motion);
    EXPECT_NEAR(RunFieldFree(scenario, pi / 10.0, 1000).coordinates[0].coordinate, -(0.01 - 0.001), 1e-8);
    EXPECT_NEAR(RunFieldFree(scenario, 2.0 * pi / 10.0, 2000).coordinates[0].coordinate, 0.01 - 0.002, 1e-8);
    // It comes to rest where the spring cannot move it, with all energy accounted for.
    const JointRecord rest = RunFieldFree(scenario, 10.0, 20000);
    EXPECT_EQ(rest.coordinates[0].speed, 0.0);
    EXPECT_LE(std::fabs(rest.coordinates[0].coordinate), 0.1 / 200.0 + 1e-6);
    EXPECT_NEAR(rest.energy.Imbalance(), 0.0, 1e-4 * rest.energy.initial);
}

TEST(Mechanism, SwingsAsAPendulum) {
    // Hinge through the origin along x, the bob half a metre away: I = 0.01 + 2 * 0.25. Large amplitude: the period is
    // that of the mathematical pendulum of the same omega times the complete elliptic integral.
    FreeMotion motion;
    motion.start = 1.0;
    Scenario scenario = OneJoint(JointType::Hinge, Vector::UnitX(), motion);
    scenario.bodies[0].X_WB0.p_WB_W = {0.0, 0.0, -0.5};
    scenario.gravity_W = {0.0, 0.0, -9.80665};
    const double omega = std::sqrt(2.0 * 9.80665 * 0.5 / 0.51);
    // K(k) by the arithmetic-geometric mean, k = sin(1/2).
    double a = 1.0, b = std::cos(0.5);
    for (int i = 0; i < 6; ++i) {
        const double mean = 0.5 * (a + b);
        b = std::sqrt(a * b);
        a = mean;
    }
    const double period = 2.0 * pi / (omega * a);
    const JointRecord record = RunFieldFree(scenario, period, 4000);
    EXPECT_NEAR(record.coordinates[0].coordinate, 1.0, 1e-8);
    EXPECT_NEAR(record.coordinates[0].speed, 0.0, 1e-4);
    EXPECT_NEAR(record.energy.Imbalance(), 0.0, 1e-6);
}

TEST(Mechanism, FollowsPrescribedMotion) {
    Scenario scenario = OneJoint(JointType::Hinge, Vector::UnitX(), {});
    scenario.joints[0].coordinates[0].motion =
        PrescribedMotion(Expression::Parse("pi/2*t", Expression::Variables::Time));
    Mechanism mechanism(scenario);
    mechanism.Start();
    mechanism.ApplyLoads(std::vector<Load>(1));
    EXPECT_LT((mechanism.Poses()[0].p_WB_W - Vector(0.0, 0.5, 0.0)).norm(), 1e-15);
    mechanism.Move(1.0);
    EXPECT_LT((mechanism.Poses()[0].p_WB_W - Vector(0.0, 0.0, 0.5)).norm(), 1e-15);
    EXPECT_LT((mechanism.Poses()[0].R_WB.col(1) - Vector::UnitZ()).norm(), 1e-15);
    EXPECT_NEAR(mechanism.Joints()[0].coordinates[0].speed, pi / 2, 1e-15);
}

TEST(Mechanism, ThePrescribedSpeedIsThatOfTheMomentFromTheStartOn) {
    Scenario scenario = OneJoint(JointType::Slider, Vector::UnitX(), {});
    scenario.joints[0].coordinates[0].motion =
        PrescribedMotion(Expression::Parse("3*t + t^2", Expression::Variables::Time));
    Mechanism mechanism(scenario);
    mechanism.Start();
    EXPECT_DOUBLE_EQ(mechanism.Joints()[0].coordinates[0].speed, 3.0);
    mechanism.Move(0.5);
    EXPECT_DOUBLE_EQ(mechanism.Joints()[0].coordinates[0].speed, 4.0);
    scenario.joints[0].coordinates[0].motion = PrescribedMotion(MotionTable{{{0.0, 0.0}, {0.5, 1.0}, {1.5, 5.0}}});
    mechanism.Start();
    EXPECT_DOUBLE_EQ(mechanism.Joints()[0].coordinates[0].speed, 2.0);
    mechanism.Move(0.5);
    EXPECT_DOUBLE_EQ(mechanism.Joints()[0].coordinates[0].speed, 4.0);
}

TEST(Mechanism, RefusesAPrescribedCoordinateThatIsNoNumber) {
    Scenario scenario = OneJoint(JointType::Slider, Vector::UnitX(), {});
    scenario.joints[0].coordinates[0].motion =
        PrescribedMotion(Expression::Parse("1/(1-t)", Expression::Variables::Time));
    Mechanism mechanism(scenario);
    mechanism.Start();
    EXPECT_THROW(mechanism.Move(1.0), RunError);
}

TEST(Mechanism, TurnsForcesAndTorquesIntoWorkAlongTheCoordinate) {
    // Hinge along x through (0, 0.2, 0): a force along z on the body's origin 0.3 m away, and a torque.
    FreeMotion motion;
    Scenario scenario = OneJoint(JointType::Hinge, Vector::UnitX(), motion);
    scenario.joints[0].p_WJ_W = {0.0, 0.2, 0.0};
    Mechanism mechanism(scenario);
    mechanism.Start();
    Load load;
    load.force_W = {5.0, 6.0, 7.0};
    load.torque_W = {0.4, 0.5, 0.6};
    mechanism.ApplyLoads({load});
    EXPECT_NEAR(mechanism.Joints()[0].fieldForce[0], 0.4 + 0.3 * 7.0, 1e-14);
}

TEST(Mechanism, AddsUpSeveralBodiesOnOneJoint) {
    FreeMotion motion;
    motion.addedInertia = 1.0;
    Scenario scenario = OneJoint(JointType::Slider, Vector::UnitZ(), motion);
    scenario.bodies.push_back(scenario.bodies[0]);
    scenario.bodies[1].name = "second";
    scenario.bodies[1].X_WB0.p_WB_W = {0.0, -0.5, 0.0};
    scenario.joints[0].bodies = {0, 1};
    Mechanism mechanism(scenario);
    mechanism.Start();
    Load load;
    load.force_W = {0.0, 0.0, 5.0};
    mechanism.ApplyLoads({load, load});
    // 10 N on 2 + 2 + 1 kg.
    mechanism.Move(1.0);
    EXPECT_DOUBLE_EQ(mechanism.Poses()[0].p_WB_W.z(), 1.0);
    EXPECT_DOUBLE_EQ(mechanism.Poses()[1].p_WB_W.z(), 1.0);
    EXPECT_DOUBLE_EQ(mechanism.Poses()[1].p_WB_W.y(), -0.5);
}

TEST(Mechanism, CountsTheWorkOfAConstantField) {
    const Scenario scenario = OneJoint(JointType::Slider, Vector::UnitZ(), {});
    Mechanism mechanism(scenario);
    Load load;
    load.force_W = {0.0, 0.0, 3.0};
    mechanism.Start();
    mechanism.ApplyLoads({load});
    for (int step = 1; step <= 10; ++step) {
        mechanism.Move(0.1 * step);
        mechanism.ApplyLoads({load});
    }
    const EnergyAccount& energy = mechanism.Joints()[0].energy;
    EXPECT_NEAR(energy.fieldWork, 3.0 * 0.5 * 1.5, 1e-13);
    EXPECT_NEAR(energy.kinetic, energy.fieldWork, 1e-13);
}

TEST(Mechanism, BouncesLessAndLessAndRestsAtItsStop) {
    FreeMotion motion;
    motion.start = 1.0;
    motion.stops = {0.0, std::numeric_limits<double>::infinity(), 0.5};
    Scenario scenario = OneJoint(JointType::Slider, Vector::UnitZ(), motion);
    scenario.gravity_W = {0.0, 0.0, -9.80665};
    const JointRecord record = RunFieldFree(scenario, 3.0, 30000);
    EXPECT_EQ(record.coordinates[0].coordinate, 0.0);
    EXPECT_EQ(record.coordinates[0].speed, 0.0);
    EXPECT_NEAR(record.energy.dissipated, record.energy.initial - record.energy.potential,
                1e-3 * record.energy.initial);
}

TEST(Mechanism, ContinuesToTheLastBitAfterARestore) {
    FreeMotion motion;
    motion.start = 0.01;
    motion.spring = {200.0, 0.0};
    motion.damping = 0.3;
    const Scenario scenario = OneJoint(JointType::Slider, Vector::UnitX(), motion);
    const std::vector<Load> none(1);
    Mechanism whole(scenario);
    Mechanism first(scenario);
    whole.Start();
    whole.ApplyLoads(none);
    first.Start();
    first.ApplyLoads(none);
    for (int step = 1; step <= 50; ++step) {
        whole.Move(step * 0.01);
        whole.ApplyLoads(none);
        if (step <= 20) {
            first.Move(step * 0.01);
            first.ApplyLoads(none);
        }
    }
    Mechanism second(scenario);
    second.Restore(20 * 0.01, first.Records());
    for (int step = 21; step <= 50; ++step) {
        second.Move(step * 0.01);
        second.ApplyLoads(none);
    }
    EXPECT_EQ(second.Joints()[0].coordinates[0].coordinate, whole.Joints()[0].coordinates[0].coordinate);
    EXPECT_EQ(second.Joints()[0].coordinates[0].speed, whole.Joints()[0].coordinates[0].speed);
    EXPECT_EQ(second.Joints()[0].energy.dissipated, whole.Joints()[0].energy.dissipated);
}

} // namespace
} // namespace kinora::host
