#include "host/mechanism/Mechanism.h"
#include "scenario/Errors.h"
#include "tests/host/Joints.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>

namespace kinora::host {

using namespace scenario;

namespace {

using testing::HasSubstr;

Expression Place(const char* formula) {
    return Expression::Parse(formula, Expression::Variables::TimeAndPlace);
}

/// Two free bodies without gravity.
Scenario TwoBodies() {
    Scenario scenario;
    for (const char* name : {"a", "b"}) {
        Body body;
        body.name = name;
        body.mass = 0.5;
        body.principalInertia_B = {1e-3, 2e-3, 2.5e-3};
        scenario.bodies.push_back(body);
        Joint joint = PlacementJoint(std::string(name) + "_flies", JointType::Free, {});
        joint.bodies = {scenario.bodies.size() - 1};
        scenario.joints.push_back(joint);
    }
    scenario.bodies[1].X_WB0 = {Vector(0.3, 0.1, 0.0), Rotation(Vector::UnitY(), 0.4)};
    scenario.joints[1].p_WJ_W = scenario.bodies[1].X_WB0.p_WB_W;
    std::get<FreePlacement>(scenario.joints[0].placement).angularVelocity_W = {1.0, 2.0, -3.0};
    std::get<FreePlacement>(scenario.joints[1].placement).velocity_W = {0.0, 0.5, 1.0};
    return scenario;
}

Attachment On(std::size_t body, const Vector& place) {
    return {body, {place, Matrix::Identity()}};
}

SpringElement SpringBetween(const Attachment& from, const Attachment& to) {
    SpringElement spring;
    spring.name = "spring";
    spring.from = from;
    spring.to = to;
    spring.stiffness = 40.0;
    spring.length = 0.2;
    return spring;
}

Bushing BushingBetween(const Attachment& from, const Attachment& to) {
    Bushing bushing;
    bushing.name = "mount";
    bushing.from = from;
    bushing.to = to;
    bushing.stiffness = {30.0, 50.0, 80.0};
    bushing.angularStiffness = {0.05, 0.08, 0.03};
    return bushing;
}

void Advance(Mechanism& mechanism, double stepSeconds, int steps) {
    const std::vector<Load> none(mechanism.Poses().size());
    if (mechanism.Time() == 0.0) {
        mechanism.ApplyLoads(none);
    }
    const double start = mechanism.Time();
    for (int step = 1; step <= steps; ++step) {
        mechanism.Move(start + step * stepSeconds);
        mechanism.ApplyLoads(none);
    }
}

struct Momenta {
    Vector linear = Vector::Zero();
    Vector angular = Vector::Zero();
};

Momenta MomentaOf(const Mechanism& mechanism) {
    Momenta momenta;
    for (const JointRecord& joint : mechanism.Joints()) {
        const PlacementState& state = joint.placement;
        momenta.linear += 0.5 * state.velocity_W;
        momenta.angular += state.angularMomentum_W + 0.5 * state.p_WC_W.cross(state.velocity_W);
    }
    return momenta;
}

TEST(Elements, KeepLinearAndAngularMomentumWithDampersToo) {
    Scenario scenario = TwoBodies();
    scenario.springs = {SpringBetween(On(0, {0.05, 0.0, 0.02}), On(1, {-0.03, 0.01, 0.0}))};
    scenario.springs[0].damping = 0.3;
    scenario.bushings = {BushingBetween(On(0, {0.1, 0.0, 0.0}), On(1, {-0.1, 0.0, 0.0}))};
    scenario.bushings[0].damping = {0.5, 0.2, 0.1};
    scenario.bushings[0].angularDamping = {1e-3, 2e-3, 5e-4};
    Mechanism mechanism(scenario);
    mechanism.Start();
    const Momenta before = MomentaOf(mechanism);
    Advance(mechanism, 1e-3, 500);
    const Momenta after = MomentaOf(mechanism);
    EXPECT_LT((after.linear - before.linear).norm(), 1e-14);
    EXPECT_LT((after.angular - before.angular).norm(), 1e-14);
    EXPECT_GT(mechanism.Records().springs[0].dissipated, 1e-4);
    EXPECT_GT(mechanism.Records().bushings[0].dissipated, 1e-4);
}

/// The energy of everything together, and what has gone.
double Total(const Mechanism& mechanism) {
    double total = 0.0;
    for (const JointRecord& joint : mechanism.Joints()) {
        total += joint.energy.kinetic + joint.energy.potential + joint.energy.dissipated;
    }
    for (const SpringRecord& spring : mechanism.Records().springs) {
        total += spring.potential + spring.dissipated;
    }
    for (const BushingRecord& bushing : mechanism.Records().bushings) {
        total += bushing.potential + bushing.dissipated;
    }
    return total;
}

TEST(Elements, TheEnergyThatIsLostIsWhatTheDampersTookToSecondOrder) {
    Scenario scenario = TwoBodies();
    scenario.bushings = {BushingBetween(On(0, {0.1, 0.0, 0.0}), On(1, {-0.1, 0.0, 0.0}))};
    scenario.bushings[0].damping = {0.5, 0.2, 0.1};
    const auto error = [&](int steps) {
        Mechanism mechanism(scenario);
        mechanism.Start();
        mechanism.ApplyLoads(std::vector<Load>(2));
        const double before = Total(mechanism);
        Advance(mechanism, 0.5 / steps, steps);
        EXPECT_LT(mechanism.Joints()[0].energy.Imbalance(), 1e-3 * before);
        return std::fabs(Total(mechanism) - before);
    };
    EXPECT_NEAR(error(400) / error(800), 4.0, 0.3);
}

TEST(Elements, ABushingsForcesAreTheSlopesOfItsEnergy) {
    std::mt19937 generator(4711);
    std::uniform_real_distribution<double> uniform(-1.0, 1.0);
    const auto vector = [&](double size) {
        return Vector(size * Vector(uniform(generator), uniform(generator), uniform(generator)));
    };
    const Bushing bushing = BushingBetween({}, {});
    for (int i = 0; i < 200; ++i) {
        const Pose X_WF{vector(1.0), TurnBy(vector(3.0)).toRotationMatrix()};
        // Up to 160 degrees against each other; at first hardly at all.
        const Vector turn =
            vector(1.0).normalized() * (i < 20 ? std::pow(10.0, -0.5 * i) : 2.8 * std::fabs(uniform(generator)));
        const Pose X_WG{X_WF.p_WB_W + vector(0.3), X_WF.R_WB * TurnBy(turn).toRotationMatrix()};
        const ElementEffect effect = EffectOf(bushing, X_WF, X_WG);
        constexpr double h = 1e-5;
        for (int axis = 0; axis < 3; ++axis) {
            const auto energy = [&](const Vector& way, const Vector& turnMore) {
                return EffectOf(bushing, X_WF, {X_WG.p_WB_W + way, TurnBy(turnMore).toRotationMatrix() * X_WG.R_WB})
                    .potential;
            };
            const Vector step = h * Vector::Unit(axis);
            const double force = -(energy(step, Vector::Zero()) - energy(-step, Vector::Zero())) / (2.0 * h);
            const double torque = -(energy(Vector::Zero(), step) - energy(Vector::Zero(), -step)) / (2.0 * h);
            EXPECT_NEAR(effect.force_W[axis], force, 1e-6);
            EXPECT_NEAR(effect.torque_W[axis], torque, 1e-7);
        }
    }
}

TEST(Elements, ADampedBushingDecaysAsTheClosedFormSays) {
    Scenario scenario = TwoBodies();
    scenario.bodies.pop_back();
    scenario.joints.pop_back();
    std::get<FreePlacement>(scenario.joints[0].placement).angularVelocity_W = Vector::Zero();
    std::get<FreePlacement>(scenario.joints[0].placement).way_W = {0.01, 0.0, 0.0};
    scenario.bushings = {BushingBetween({}, On(0, Vector::Zero()))};
    scenario.bushings[0].damping = {0.4, 0.0, 0.0};
    const double rate = 0.4 / (2.0 * 0.5);
    const double omega = std::sqrt(30.0 / 0.5 - rate * rate);
    Mechanism mechanism(scenario);
    mechanism.Start();
    Advance(mechanism, 1e-3, 2000);
    const double expected =
        0.01 * std::exp(-rate * 2.0) * (std::cos(omega * 2.0) + rate / omega * std::sin(omega * 2.0));
    EXPECT_NEAR(mechanism.Joints()[0].placement.displacement_W.x(), expected, 1e-7);
    EXPECT_NEAR(mechanism.Records().bushings[0].way.x(), expected, 1e-7);
    const double speed = mechanism.Joints()[0].placement.velocity_W.x();
    EXPECT_NEAR(mechanism.Records().bushings[0].force.x(), -30.0 * expected - 0.4 * speed, 1e-5);
}

TEST(Elements, AStiffDamperTakesTheSpeedAndAddsNone) {
    Scenario scenario = TwoBodies();
    scenario.springs = {SpringBetween(On(0, Vector::Zero()), On(1, Vector::Zero()))};
    scenario.springs[0].stiffness = 0.0;
    scenario.springs[0].damping = 1e7;
    Mechanism mechanism(scenario);
    mechanism.Start();
    mechanism.ApplyLoads(std::vector<Load>(2));
    const double before = Total(mechanism);
    Advance(mechanism, 1e-3, 200);
    EXPECT_LE(Total(mechanism), before * (1.0 + 1e-12));
    // What is along the damper is gone.
    const double length = mechanism.Records().springs[0].length;
    EXPECT_NEAR(length, std::hypot(0.3, 0.1), 2e-3);
}

TEST(Elements, ASpringPullsASliderAsItsOwnSpringDoes) {
    FreeMotion own;
    own.start = 0.02;
    own.spring = {100.0, 0.0};
    Scenario scenario;
    scenario.bodies.resize(1);
    scenario.bodies[0].mass = 1.0;
    scenario.joints = {OneCoordinateJoint("slide", JointType::Slider, Vector::UnitX(), own)};
    Mechanism expected(scenario);
    expected.Start();
    Advance(expected, 1e-3, 777);
    own.spring = {};
    scenario.joints = {OneCoordinateJoint("slide", JointType::Slider, Vector::UnitX(), own)};
    SpringElement spring = SpringBetween({{}, {Vector(-1.0, 0.0, 0.0), Matrix::Identity()}}, On(0, Vector::Zero()));
    spring.stiffness = 100.0;
    spring.length = 1.0;
    scenario.springs = {spring};
    Mechanism mechanism(scenario);
    mechanism.Start();
    Advance(mechanism, 1e-3, 777);
    EXPECT_NEAR(mechanism.Joints()[0].coordinates[0].coordinate, expected.Joints()[0].coordinates[0].coordinate, 1e-12);
    EXPECT_NEAR(mechanism.Records().springs[0].potential, expected.Joints()[0].energy.potential, 1e-12);
    EXPECT_NEAR(mechanism.Records().springs[0].force, 100.0 * mechanism.Joints()[0].coordinates[0].coordinate, 1e-10);
    EXPECT_NEAR(mechanism.Joints()[0].energy.Imbalance(), expected.Joints()[0].energy.Imbalance(), 1e-10);
}

TEST(Elements, ADamperOnAPrescribedBodyCarriesTheOtherAlong) {
    // A disc that turns at 10 rad/s takes another one along by a torsional damper.
    Scenario scenario;
    scenario.bodies.resize(2);
    scenario.bodies[1].principalInertia_B = {0.02, 0.02, 0.02};
    scenario.joints = {OneCoordinateJoint("driver", JointType::Hinge, Vector::UnitX(),
                                          PrescribedMotion(Expression::Parse("10*t", Expression::Variables::Time))),
                       OneCoordinateJoint("driven", JointType::Hinge, Vector::UnitX(), FreeMotion())};
    scenario.joints[1].bodies = {1};
    Bushing damper = BushingBetween(On(0, Vector::Zero()), On(1, Vector::Zero()));
    damper.stiffness = damper.angularStiffness = Vector::Zero();
    damper.angularDamping = {0.05, 0.0, 0.0};
    scenario.bushings = {damper};
    Mechanism mechanism(scenario);
    mechanism.Start();
    Advance(mechanism, 1e-3, 200);
    const JointRecord& driven = mechanism.Joints()[1];
    EXPECT_NEAR(driven.coordinates[0].speed, 10.0 * (1.0 - std::exp(-0.05 / 0.02 * 0.2)), 1e-5);
    EXPECT_NEAR(driven.energy.elementWork, driven.energy.kinetic, 1e-12);
    // The driver's work is what the other one has got and what was lost.
    EXPECT_NEAR(-mechanism.Joints()[0].energy.elementWork,
                driven.energy.kinetic + mechanism.Records().bushings[0].dissipated, 1e-12);
}

TEST(Elements, LoadsActAtTheirPointAndAlongTheirAxes) {
    Scenario scenario = TwoBodies();
    scenario.loads = {
        {1, {Place("2"), Place("x"), Place("0")}, {Place("0"), Place("0"), Place("10*y")}, true, {0.0, 0.1, 0.0}},
        {0, {Place("1 + t"), Place("0"), Place("0")}, {}, false, Vector::Zero()}};
    Mechanism mechanism(scenario);
    mechanism.Start();
    mechanism.ApplyLoads(std::vector<Load>(2));
    const Matrix& R_WB = scenario.bodies[1].X_WB0.R_WB;
    const Vector force = R_WB * Vector(2.0, 0.3, 0.0);
    const Vector torque = R_WB * Vector(0.0, 0.0, 1.0) + (R_WB * Vector(0.0, 0.1, 0.0)).cross(force);
    Generalised expected(6);
    expected << force, torque;
    EXPECT_LT((mechanism.Joints()[1].load - expected).norm(), 1e-15);
    EXPECT_EQ(mechanism.Joints()[0].load[0], 1.0);
}

TEST(Elements, AStopOfAFreeBodyIsAFormula) {
    // A ball falls on a stiff spring that only pushes, and comes back as high.
    Scenario scenario = TwoBodies();
    scenario.bodies.pop_back();
    scenario.joints.pop_back();
    std::get<FreePlacement>(scenario.joints[0].placement) = {};
    scenario.bodies[0].X_WB0.p_WB_W = scenario.joints[0].p_WJ_W = {0.0, 0.0, 0.1};
    scenario.gravity_W = {0.0, 0.0, -9.80665};
    scenario.loads = {{0, {Place("0"), Place("0"), Place("1e4*max(-z, 0)")}, {}, false, Vector::Zero()}};
    Mechanism mechanism(scenario);
    mechanism.Start();
    double highest = 0.0;
    Advance(mechanism, 1e-4, 2000);
    for (int i = 0; i < 2000; ++i) {
        Advance(mechanism, 1e-4, 1);
        highest = std::fmax(highest, mechanism.Poses()[0].p_WB_W.z());
    }
    EXPECT_NEAR(highest, 0.1, 2e-4);
    EXPECT_TRUE(mechanism.Joints()[0].books.Close());
}

TEST(Elements, ACylinderTurnsAsToldAndSlidesFreely) {
    Scenario scenario = TwoBodies();
    scenario.bodies.pop_back();
    FreeMotion slide;
    slide.start = 0.01;
    slide.spring = {50.0, 0.0};
    Joint joint = OneCoordinateJoint("shaft", JointType::Cylinder, Vector::UnitZ(), slide);
    joint.coordinates.insert(
        joint.coordinates.begin(),
        {Coordinate::Kind::Turn, PrescribedMotion(Expression::Parse("20*t", Expression::Variables::Time))});
    scenario.joints = {joint};
    scenario.bodies[0].X_WB0.p_WB_W = {0.05, 0.0, 0.0};
    Mechanism mechanism(scenario);
    mechanism.Start();
    Advance(mechanism, 1e-3, 300);
    const JointRecord& record = mechanism.Joints()[0];
    const double way = 0.01 * std::cos(10.0 * 0.3);
    EXPECT_NEAR(record.coordinates[1].coordinate, way, 1e-5 * 0.01);
    EXPECT_LT((mechanism.Poses()[0].p_WB_W -
               Vector(0.05 * std::cos(6.0), 0.05 * std::sin(6.0), record.coordinates[1].coordinate))
                  .norm(),
              1e-14);
    // What drives the turn is not in the books; the way's close.
    EXPECT_NEAR(record.energy.initial, 0.5 * 50.0 * 1e-4, 1e-15);
    EXPECT_TRUE(record.books.Close());
}

TEST(Elements, EndWhereTheyLoseTheirMeaning) {
    Scenario scenario = TwoBodies();
    scenario.bodies.pop_back();
    scenario.joints.pop_back();
    scenario.springs = {SpringBetween({}, On(0, Vector::Zero()))};
    Mechanism spring(scenario);
    try {
        spring.Start();
        FAIL();
    } catch (const RunError& error) {
        EXPECT_THAT(error.what(), HasSubstr("The ends of spring \"spring\" have come together"));
    }
    scenario.springs.clear();
    scenario.bushings = {BushingBetween({}, On(0, Vector::Zero()))};
    std::get<FreePlacement>(scenario.joints[0].placement).turn = TurnBy({0.0, 0.0, 3.12});
    Mechanism bushing(scenario);
    try {
        bushing.Start();
        FAIL();
    } catch (const RunError& error) {
        EXPECT_THAT(error.what(),
                    HasSubstr("Bushing \"mount\" is turned by 178.8 degrees; it takes less than half a turn"));
    }
}

TEST(Elements, ContinueToTheLastBitAfterARestore) {
    Scenario scenario = TwoBodies();
    scenario.springs = {SpringBetween(On(0, {0.05, 0.0, 0.02}), On(1, {-0.03, 0.01, 0.0}))};
    scenario.springs[0].damping = 0.3;
    scenario.bushings = {BushingBetween(On(0, {0.1, 0.0, 0.0}), On(1, {-0.1, 0.0, 0.0}))};
    scenario.bushings[0].angularDamping = {1e-3, 2e-3, 5e-4};
    Mechanism whole(scenario);
    whole.Start();
    Advance(whole, 1e-3, 100);
    Mechanism second(scenario);
    second.Restore(whole.Time(), whole.Records());
    for (Mechanism* mechanism : {&whole, &second}) {
        Advance(*mechanism, 1e-3, 100);
    }
    for (std::size_t i = 0; i < 2; ++i) {
        const PlacementState& a = whole.Joints()[i].placement;
        const PlacementState& b = second.Joints()[i].placement;
        EXPECT_EQ(a.turn.coeffs(), b.turn.coeffs());
        EXPECT_EQ(a.p_WC_W, b.p_WC_W);
        EXPECT_EQ(a.angularMomentum_W, b.angularMomentum_W);
        EXPECT_EQ(a.swept_W, b.swept_W);
        EXPECT_EQ(whole.Joints()[i].energy.elementWork, second.Joints()[i].energy.elementWork);
    }
    EXPECT_EQ(whole.Records().springs[0].dissipated, second.Records().springs[0].dissipated);
    EXPECT_EQ(whole.Records().bushings[0].torque, second.Records().bushings[0].torque);
}

} // namespace
} // namespace kinora::host
