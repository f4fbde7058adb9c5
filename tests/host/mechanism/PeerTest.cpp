// Against a multibody library of others, where it is installed (Debian: libsimbody-dev).

#ifdef KINORA_HAS_SIMBODY
#include "host/mechanism/Mechanism.h"
#include "tests/host/Joints.h"

#include <Simbody.h>
#endif

#include <gtest/gtest.h>

namespace kinora::host {
namespace {

#ifdef KINORA_HAS_SIMBODY

using namespace scenario;

constexpr double flightSeconds = 0.5;

SimTK::Vec3 ToSimTk(const Vector& vector) {
    return {vector.x(), vector.y(), vector.z()};
}

/// A body off its centre of mass that flies, tumbles and hangs on a spring at its corner.
Scenario Tumbling() {
    FreePlacement start;
    start.turn = TurnBy({0.1, 0.2, -0.1});
    start.velocity_W = {0.3, -0.2, 0.5};
    start.angularVelocity_W = {6.0, -3.0, 9.0};
    Scenario scenario;
    Body body;
    body.name = "body";
    body.mass = 2.0;
    body.p_BC_B = {0.01, -0.02, 0.015};
    body.principalInertia_B = {0.011, 0.017, 0.02};
    scenario.bodies = {body};
    scenario.joints = {PlacementJoint("flight", JointType::Free, start)};
    scenario.gravity_W = {0.0, 0.0, -9.80665};
    SpringElement spring;
    spring.name = "spring";
    spring.from.X_BF.p_WB_W = {0.1, 0.0, 0.5};
    spring.to.body = 0;
    spring.to.X_BF.p_WB_W = {0.05, 0.03, -0.04};
    spring.stiffness = 200.0;
    spring.length = 0.4;
    scenario.springs = {spring};
    return scenario;
}

SimTK::Transform SolvedByThePeer(const Scenario& scenario) {
    const Body& body = scenario.bodies[0];
    const auto& start = std::get<FreePlacement>(scenario.joints[0].placement);
    SimTK::MultibodySystem system;
    SimTK::SimbodyMatterSubsystem matter(system);
    SimTK::GeneralForceSubsystem forces(system);
    const SimTK::Force::UniformGravity gravity(forces, matter, ToSimTk(scenario.gravity_W));
    const SimTK::Vec3 centre = ToSimTk(body.p_BC_B);
    const SimTK::Inertia inertia =
        SimTK::Inertia(ToSimTk(body.principalInertia_B)).shiftFromMassCenter(centre, body.mass);
    const SimTK::MobilizedBody::Free flight(matter.Ground(), SimTK::Transform(),
                                            SimTK::Body::Rigid(SimTK::MassProperties(body.mass, centre, inertia)),
                                            SimTK::Transform());
    const SpringElement& spring = scenario.springs[0];
    const SimTK::Force::TwoPointLinearSpring spanned(forces, matter.Ground(), ToSimTk(spring.from.X_BF.p_WB_W), flight,
                                                     ToSimTk(spring.to.X_BF.p_WB_W), spring.stiffness, spring.length);
    SimTK::State state = system.realizeTopology();
    const SimTK::Rotation turn(SimTK::Quaternion(start.turn.w(), start.turn.x(), start.turn.y(), start.turn.z()));
    flight.setQToFitTransform(state, SimTK::Transform(turn));
    system.realize(state, SimTK::Stage::Position);
    const Vector ofOrigin = start.velocity_W - start.angularVelocity_W.cross(start.turn * body.p_BC_B);
    flight.setUToFitVelocity(state, SimTK::SpatialVec(ToSimTk(start.angularVelocity_W), ToSimTk(ofOrigin)));
    SimTK::RungeKuttaMersonIntegrator integrator(system);
    integrator.setAccuracy(1e-11);
    SimTK::TimeStepper stepper(system, integrator);
    stepper.initialize(state);
    stepper.stepTo(flightSeconds);
    return flight.getBodyTransform(stepper.getState());
}

/// Errors of place and turn.
std::pair<double, double> ErrorAgainst(const SimTK::Transform& peer, const Scenario& scenario, int steps) {
    Mechanism mechanism(scenario);
    const std::vector<Load> none(1);
    mechanism.Start();
    mechanism.ApplyLoads(none);
    for (int step = 1; step <= steps; ++step) {
        mechanism.Move(flightSeconds * step / steps);
        mechanism.ApplyLoads(none);
    }
    Matrix R_WB;
    Vector p_WB_W;
    for (int row = 0; row < 3; ++row) {
        p_WB_W[row] = peer.p()[row];
        for (int column = 0; column < 3; ++column) {
            R_WB(row, column) = peer.R()[row][column];
        }
    }
    const Pose& X_WB = mechanism.Poses()[0];
    return {(X_WB.p_WB_W - p_WB_W).norm(), (X_WB.R_WB - R_WB).norm()};
}

TEST(Peer, GoesToTheSameMotionWithTheSquareOfTheStep) {
    const Scenario scenario = Tumbling();
    const SimTK::Transform peer = SolvedByThePeer(scenario);
    const auto [place1, turn1] = ErrorAgainst(peer, scenario, 1000);
    const auto [place2, turn2] = ErrorAgainst(peer, scenario, 2000);
    EXPECT_NEAR(place1 / place2, 4.0, 0.1);
    EXPECT_NEAR(turn1 / turn2, 4.0, 0.1);
    const auto [place, turn] = ErrorAgainst(peer, scenario, 20000);
    EXPECT_LT(place, 2e-7);
    EXPECT_LT(turn, 2e-6);
}

#else

TEST(Peer, GoesToTheSameMotionWithTheSquareOfTheStep) {
    GTEST_SKIP() << "The multibody library of others is not installed (Debian: libsimbody-dev).";
}

#endif

} // namespace
} // namespace kinora::host
