#include "host/mechanism/FreeTurn.h"
#include "host/mechanism/Mechanism.h"
#include "tests/host/Joints.h"
#include "tests/support/Pi.h"

#include <cmath>
#include <gtest/gtest.h>
#include <optional>

namespace kinora::host {

using namespace scenario;

namespace {

constexpr double gravity = 9.80665;

/// One body on a ball or free joint.
Scenario OneBody(JointType type, const Vector& inertia, const FreePlacement& start) {
    Scenario scenario;
    Body body;
    body.name = "top";
    body.mass = 2.0;
    body.principalInertia_B = inertia;
    scenario.bodies = {body};
    scenario.joints = {PlacementJoint("top_joint", type, start)};
    return scenario;
}

/// Runs without a field and calls `look` after each step.
template <class Look>
void RunFieldFree(Mechanism& mechanism, double end, int steps, Look look) {
    const std::vector<Load> none(mechanism.Poses().size());
    mechanism.Start();
    mechanism.ApplyLoads(none);
    for (int step = 1; step <= steps; ++step) {
        mechanism.Move(end * step / steps);
        mechanism.ApplyLoads(none);
        look();
    }
}

PlacementState StateAfter(const Scenario& scenario, double end, int steps) {
    Mechanism mechanism(scenario);
    RunFieldFree(mechanism, end, steps, [] {});
    return mechanism.Joints()[0].placement;
}

/// Complete elliptic integral of the first kind, by the arithmetic-geometric mean.
double EllipticK(double k) {
    double a = 1.0;
    double b = std::sqrt(1.0 - k * k);
    for (int i = 0; i < 8; ++i) {
        const double mean = 0.5 * (a + b);
        b = std::sqrt(a * b);
        a = mean;
    }
    return pi / (2.0 * a);
}

TEST(RigidBody, KeepsMomentumAndEnergyWhileItTumbles) {
    FreePlacement start;
    start.turn = TurnBy({0.3, -1.2, 0.7});
    start.angularVelocity_W = {0.2, 1.0, 0.4};
    for (const JointType type : {JointType::Free, JointType::Ball}) {
        const Scenario scenario = OneBody(type, {0.01, 0.02, 0.025}, start);
        Mechanism mechanism(scenario);
        mechanism.Start();
        const double stepSeconds = 2.0 * pi / 100.0 / start.angularVelocity_W.norm();
        const Vector momentum = mechanism.Joints()[0].placement.angularMomentum_W;
        const double energy = mechanism.Joints()[0].energy.kinetic;
        double worstEnergy = 0.0;
        double worstNorm = 0.0;
        double worstMomentum = 0.0;
        const int steps = type == JointType::Free ? 10000 : 1000;
        RunFieldFree(mechanism, steps * stepSeconds, steps, [&] {
            const JointRecord& record = mechanism.Joints()[0];
            const Matrix inertia_W = mechanism.Poses()[0].R_WB * Vector(0.01, 0.02, 0.025).asDiagonal() *
                                     mechanism.Poses()[0].R_WB.transpose();
            const Vector ofVelocity = inertia_W * record.placement.angularVelocity_W;
            worstMomentum = std::fmax(worstMomentum, (ofVelocity - momentum).norm() / momentum.norm());
            worstEnergy = std::fmax(worstEnergy, std::fabs(record.energy.kinetic / energy - 1.0));
            worstNorm = std::fmax(worstNorm, std::fabs(record.placement.turn.norm() - 1.0));
        });
        EXPECT_LT(worstMomentum, 1e-12);
        EXPECT_LT(worstEnergy, 1e-12);
        EXPECT_LT(worstNorm, 1e-15);
    }
}

/// L. D. Landau, E. M. Lifshitz, "Mechanics", section 37: the angular velocity about the middle axis goes as sn.
TEST(RigidBody, FlipsItsMiddleAxisInTheClosedFormsPeriod) {
    const Vector inertia(0.01, 0.02, 0.03);
    FreePlacement start;
    start.angularVelocity_W = {0.0, 1.0, 1e-3};
    const Vector momentum = inertia.cwiseProduct(start.angularVelocity_W);
    const double doubleEnergy = momentum.dot(start.angularVelocity_W);
    const double squared = momentum.squaredNorm();
    const double slow = (inertia[2] - inertia[1]) * (squared - doubleEnergy * inertia[0]);
    const double modulus = std::sqrt((inertia[1] - inertia[0]) * (doubleEnergy * inertia[2] - squared) / slow);
    const double period = 4.0 * EllipticK(modulus) * std::sqrt(inertia.prod() / slow);
    const Scenario scenario = OneBody(JointType::Free, inertia, start);
    Mechanism mechanism(scenario);
    const double stepSeconds = 2.0 * pi / 100.0;
    std::vector<double> crossings;
    double before = 1.0;
    RunFieldFree(mechanism, 3000 * stepSeconds, 3000, [&] {
        const double now =
            (mechanism.Poses()[0].R_WB.transpose() * mechanism.Joints()[0].placement.angularVelocity_W).y();
        if (before * now < 0.0) {
            crossings.push_back(mechanism.Time() - stepSeconds * now / (now - before));
        }
        before = now;
    });
    ASSERT_GE(crossings.size(), 4u);
    EXPECT_NEAR(crossings[2] - crossings[0], period, 1e-4 * period);
    EXPECT_NEAR(crossings[3] - crossings[1], period, 1e-4 * period);
}

/// A symmetric heavy top on its tip (L. D. Landau, E. M. Lifshitz, "Mechanics", section 35): steady precession, I1
/// W^2 cos - I3 w3 W + m g l = 0.
TEST(RigidBody, PrecessesAsASymmetricHeavyTop) {
    const double arm = 0.04;
    const double tilt = 0.4;
    const double spin = 300.0; // about its own axis
    Scenario scenario = OneBody(JointType::Ball, {0.0011, 0.0011, 0.0006}, {});
    scenario.bodies[0].X_WB0.p_WB_W = {0.0, 0.0, arm};
    scenario.gravity_W = {0.0, 0.0, -gravity};
    const double across = 0.0011 + 2.0 * arm * arm;
    const double gyroscopic = 0.0006 * spin;
    const double weight = 2.0 * gravity * arm;
    const double precession =
        (gyroscopic - std::sqrt(gyroscopic * gyroscopic - 4.0 * across * std::cos(tilt) * weight)) /
        (2.0 * across * std::cos(tilt));
    auto& start = std::get<FreePlacement>(scenario.joints[0].placement);
    start.turn = TurnBy({0.0, tilt, 0.0});
    const Vector axis_W = start.turn * Vector::UnitZ();
    // Along the own axis the precession counts too.
    start.angularVelocity_W = precession * Vector::UnitZ() + (spin - precession * std::cos(tilt)) * axis_W;
    const double duration = 2.0 * pi / precession;
    Mechanism mechanism(scenario);
    double worstTilt = 0.0;
    double heading = 0.0;
    double before = 0.0;
    RunFieldFree(mechanism, duration, 4000, [&] {
        const Vector now = mechanism.Poses()[0].R_WB.col(2);
        worstTilt = std::fmax(worstTilt, std::fabs(std::acos(now.z()) - tilt));
        const double angle = std::atan2(now.y(), now.x());
        heading += std::remainder(angle - before, 2.0 * pi);
        before = angle;
    });
    EXPECT_NEAR(heading, 2.0 * pi, 1e-4 * 2.0 * pi);
    EXPECT_LT(worstTilt, 1e-4);
    EXPECT_NEAR(mechanism.Joints()[0].energy.Imbalance(), 0.0, 1e-6 * mechanism.Joints()[0].energy.kinetic);
}

/// A tumbling body that hangs off its centre on a bushing to the ground, and flies.
Scenario TumblingOnBushing() {
    FreePlacement start;
    start.turn = TurnBy({0.1, 0.2, -0.1});
    start.velocity_W = {0.3, -0.2, 0.5};
    start.angularVelocity_W = {2.0, -1.0, 3.0};
    Scenario scenario = OneBody(JointType::Free, {0.011, 0.017, 0.02}, start);
    scenario.bodies[0].p_BC_B = {0.01, -0.02, 0.015};
    scenario.bodies[0].X_WB0.R_WB = Rotation(Vector(1.0, 2.0, -1.0).normalized(), 0.8);
    scenario.gravity_W = {0.0, 0.0, -gravity};
    Bushing bushing;
    bushing.name = "mount";
    bushing.to.body = 0;
    bushing.to.X_BF = Inverse(scenario.bodies[0].X_WB0);
    bushing.stiffness = {300.0, 500.0, 800.0};
    bushing.angularStiffness = {0.5, 0.8, 0.3};
    scenario.bushings = {bushing};
    return scenario;
}

TEST(RigidBody, HalvingTheStepQuartersTheError) {
    const Scenario scenario = TumblingOnBushing();
    const PlacementState coarse = StateAfter(scenario, 0.5, 500);
    const PlacementState middle = StateAfter(scenario, 0.5, 1000);
    const PlacementState fine = StateAfter(scenario, 0.5, 2000);
    const auto turnBetween = [](const PlacementState& a, const PlacementState& b) {
        return RotationVector(a.turn * b.turn.conjugate()).norm();
    };
    EXPECT_NEAR((coarse.p_WC_W - middle.p_WC_W).norm() / (middle.p_WC_W - fine.p_WC_W).norm(), 4.0, 0.1);
    EXPECT_NEAR(turnBetween(coarse, middle) / turnBetween(middle, fine), 4.0, 0.1);
    EXPECT_LT(turnBetween(middle, fine), 1e-4);
}

TEST(RigidBody, RunsBackToWhereItCameFrom) {
    Scenario scenario = TumblingOnBushing();
    const PlacementState there = StateAfter(scenario, 0.5, 500);
    auto& back = std::get<FreePlacement>(scenario.joints[0].placement);
    const FreePlacement start = back;
    back.way_W = there.displacement_W;
    back.turn = there.turn;
    back.velocity_W = -there.velocity_W;
    back.angularVelocity_W = -there.angularVelocity_W;
    const PlacementState home = StateAfter(scenario, 0.5, 500);
    EXPECT_LT(home.displacement_W.norm(), 1e-11);
    EXPECT_LT(RotationVector(home.turn * start.turn.conjugate()).norm(), 1e-11);
    EXPECT_LT((home.velocity_W + start.velocity_W).norm(), 1e-9);
    EXPECT_LT((home.angularVelocity_W + start.angularVelocity_W).norm(), 1e-9);
}

TEST(RigidBody, EnergyBooksCloseAndDoNotDrift) {
    const Scenario scenario = TumblingOnBushing();
    const auto worstImbalance = [&](double end, int steps) {
        Mechanism mechanism(scenario);
        std::optional<double> stored;
        RunFieldFree(mechanism, end, steps, [&] {
            const double loss = mechanism.Records().bushings[0].potential + mechanism.Joints()[0].energy.elementWork;
            stored = stored.value_or(loss);
            // What the joint has lost the bushing holds.
            EXPECT_NEAR(loss, *stored, 1e-3 * mechanism.Joints()[0].energy.kinetic);
        });
        const JointRecord& record = mechanism.Joints()[0];
        EXPECT_TRUE(record.books.Close());
        return std::fabs(record.books.worstImbalance) / record.books.throughput;
    };
    const double once = worstImbalance(1.0, 1000);
    EXPECT_LT(once, 1e-3);
    EXPECT_LT(worstImbalance(5.0, 5000), 3.0 * once);
    EXPECT_NEAR(once / worstImbalance(1.0, 2000), 4.0, 0.4);
}

TEST(RigidBody, FliesAParabolaAboutItsCentreOfMass) {
    FreePlacement start;
    start.velocity_W = {1.0, 2.0, 3.0};
    start.angularVelocity_W = {0.0, 0.0, 10.0};
    Scenario scenario = OneBody(JointType::Free, {0.01, 0.01, 0.01}, start);
    scenario.bodies[0].p_BC_B = {0.1, 0.0, 0.0};
    scenario.gravity_W = {0.0, 0.0, -gravity};
    Mechanism mechanism(scenario);
    RunFieldFree(mechanism, 1.0, 100, [] {});
    const PlacementState& state = mechanism.Joints()[0].placement;
    EXPECT_LT((state.p_WC_W - Vector(1.1, 2.0, 3.0 - 0.5 * gravity)).norm(), 1e-12);
    EXPECT_LT((state.swept_W - Vector(0.0, 0.0, 10.0)).norm(), 1e-12);
    const Vector origin = state.p_WC_W - 0.1 * Vector(std::cos(10.0), std::sin(10.0), 0.0);
    EXPECT_LT((mechanism.Poses()[0].p_WB_W - origin).norm(), 1e-12);
    EXPECT_LT((state.displacement_W - origin).norm(), 1e-12);
    EXPECT_NEAR(mechanism.Joints()[0].energy.Imbalance(), 0.0, 1e-11);
}

TEST(RigidBody, TakesSeveralBodiesAsOne) {
    // Two equal bodies whose own axes are turned: the same as one with the sum of their inertias.
    FreePlacement start;
    start.angularVelocity_W = {3.0, 1.0, -2.0};
    Scenario scenario = OneBody(JointType::Free, {0.01, 0.02, 0.025}, start);
    scenario.bodies[0].X_WB0 = {Vector(0.05, 0.0, 0.02), Rotation(Vector::UnitY(), 0.5)};
    Body second = scenario.bodies[0];
    second.X_WB0 = {Vector(-0.05, 0.0, -0.02), Rotation(Vector::UnitZ(), -0.9)};
    scenario.bodies.push_back(second);
    scenario.joints[0].bodies = {0, 1};
    Matrix inertia = Matrix::Zero();
    for (const Body& body : scenario.bodies) {
        const Vector& p = body.X_WB0.p_WB_W;
        inertia += body.X_WB0.R_WB * body.principalInertia_B.asDiagonal() * body.X_WB0.R_WB.transpose() +
                   2.0 * (p.squaredNorm() * Matrix::Identity() - p * p.transpose());
    }
    Mechanism mechanism(scenario);
    mechanism.Start();
    const PlacementState before = mechanism.Joints()[0].placement;
    EXPECT_LT((before.angularMomentum_W - inertia * start.angularVelocity_W).norm(), 1e-15);
    RunFieldFree(mechanism, 1.0, 100, [] {});
    const PlacementState& after = mechanism.Joints()[0].placement;
    const Matrix turn = after.turn.toRotationMatrix();
    EXPECT_LT((turn * inertia * turn.transpose() * after.angularVelocity_W - before.angularMomentum_W).norm(), 1e-14);
    // They keep their distance.
    EXPECT_LT((mechanism.Poses()[0].p_WB_W - mechanism.Poses()[1].p_WB_W - turn * Vector(0.1, 0.0, 0.04)).norm(),
              1e-15);
}

TEST(RigidBody, FeelsForceAndTorqueOfTheFieldAboutItsCentreOfMass) {
    Scenario scenario = OneBody(JointType::Free, {0.01, 0.02, 0.04}, {});
    scenario.bodies[0].p_BC_B = {0.0, 0.3, 0.0};
    Mechanism mechanism(scenario);
    mechanism.Start();
    const std::vector<Load> loads = {{Vector(2.0, 0.0, 5.0), Vector(0.1, 0.2, 0.3)}};
    mechanism.ApplyLoads(loads);
    const Vector torque = Vector(0.1, 0.2, 0.3) - Vector(0.0, 0.3, 0.0).cross(Vector(2.0, 0.0, 5.0));
    Generalised expected(6);
    expected << Vector(2.0, 0.0, 5.0), torque;
    EXPECT_LT((mechanism.Joints()[0].fieldForce - expected).norm(), 1e-15);
    // In a first short step it starts to move that way.
    mechanism.Move(1e-6);
    mechanism.ApplyLoads(loads);
    const PlacementState& state = mechanism.Joints()[0].placement;
    EXPECT_LT((state.velocity_W - 1e-6 * Vector(1.0, 0.0, 2.5)).norm(), 1e-14);
    EXPECT_LT((state.angularVelocity_W - 1e-6 * torque.cwiseQuotient(Vector(0.01, 0.02, 0.04))).norm(), 1e-11);
}

TEST(RigidBody, DampingTakesSpeedAndTurnAsItSays) {
    FreePlacement start;
    start.velocity_W = {1.0, -2.0, 0.5};
    start.angularVelocity_W = {0.0, 0.0, 20.0};
    start.damping = 4.0;
    start.angularDamping = 0.02;
    const Scenario scenario = OneBody(JointType::Free, {0.01, 0.02, 0.025}, start);
    Mechanism mechanism(scenario);
    RunFieldFree(mechanism, 0.5, 1000, [] {});
    const JointRecord& record = mechanism.Joints()[0];
    EXPECT_LT((record.placement.velocity_W - std::exp(-4.0 / 2.0 * 0.5) * start.velocity_W).norm(), 1e-6);
    EXPECT_NEAR(record.placement.angularVelocity_W.z(), 20.0 * std::exp(-0.02 / 0.025 * 0.5), 1e-5);
    EXPECT_NEAR(record.energy.dissipated, record.energy.initial - record.energy.kinetic, 1e-11);
}

TEST(RigidBody, FollowsAPrescribedPlacement) {
    Scenario scenario = OneBody(JointType::Free, {0.01, 0.01, 0.01}, {});
    scenario.bodies[0].X_WB0.p_WB_W = {0.2, 0.0, 0.0};
    PrescribedPlacement motion;
    motion.way[2] = PrescribedMotion(Expression::Parse("0.5*t^2", Expression::Variables::Time));
    motion.turn = PrescribedTurn(
        AxisTurn{Vector::UnitZ(), PrescribedMotion(Expression::Parse("3*t", Expression::Variables::Time))});
    scenario.joints[0].placement = motion;
    Mechanism mechanism(scenario);
    RunFieldFree(mechanism, 4.0, 40, [] {});
    const PlacementState& state = mechanism.Joints()[0].placement;
    // The joint's point is the origin: the body goes round it and up.
    EXPECT_LT((mechanism.Poses()[0].p_WB_W - Vector(0.2 * std::cos(12.0), 0.2 * std::sin(12.0), 8.0)).norm(), 1e-14);
    EXPECT_LT((state.swept_W - Vector(0.0, 0.0, 12.0)).norm(), 1e-13);
    EXPECT_LT((state.angularVelocity_W - Vector(0.0, 0.0, 3.0)).norm(), 1e-15);
    EXPECT_LT((state.velocity_W - Vector(-0.6 * std::sin(12.0), 0.6 * std::cos(12.0), 4.0)).norm(), 1e-14);
}

TEST(FreeTurn, IsOfSixthOrderInItsStretches) {
    // Within one stretch the composition's own error shows: halving it divides that by 2^7.
    const PrincipalInertia inertia{Matrix::Identity(), {0.01, 0.02, 0.03}};
    const Vector momentum(0.004, 0.02, 0.01);
    const double stretch = 0.099 / (momentum.norm() / 0.01);
    const auto error = [&](double duration) {
        const FreeTurn once = TurnFreely(Quaternion::Identity(), momentum, inertia, duration);
        FreeTurn fine{Quaternion::Identity(), Vector::Zero()};
        for (int i = 0; i < 16; ++i) {
            fine.turn = TurnFreely(fine.turn, momentum, inertia, duration / 16).turn;
        }
        return RotationVector(once.turn * fine.turn.conjugate()).norm();
    };
    EXPECT_LT(error(stretch), 1e-11);
}

TEST(FreeTurn, TurnsBackExactly) {
    const PrincipalInertia inertia =
        PrincipalInertiaOf((Matrix() << 0.02, 0.003, -0.001, 0.003, 0.015, 0.002, -0.001, 0.002, 0.025).finished());
    const Vector momentum(0.1, -0.2, 0.3);
    const Quaternion start = TurnBy({1.0, 0.5, -0.3});
    const FreeTurn there = TurnFreely(start, momentum, inertia, 0.7);
    const FreeTurn back = TurnFreely(there.turn, momentum, inertia, -0.7);
    EXPECT_LT(RotationVector(back.turn * start.conjugate()).norm(), 1e-13);
    EXPECT_LT((there.swept_W + back.swept_W).norm(), 1e-13);
}

} // namespace
} // namespace kinora::host
