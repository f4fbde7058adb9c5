#include "host/mechanism/JointFlow.h"

#include "scenario/Errors.h"

#include <cmath>
#include <gtest/gtest.h>

namespace kinora::host {

using namespace scenario;

namespace {

TEST(SpeedFlow, IsUniformAccelerationWithoutLosses) {
    const SpeedFlow flow = FlowSpeed(1.0, 6.0, 2.0, 0.0, 0.0, 0.5);
    EXPECT_DOUBLE_EQ(flow.speed, 2.5);
    EXPECT_EQ(flow.dissipated, 0.0);
}

TEST(SpeedFlow, ReachesTheLimitSpeedOfADamper) {
    // v = F/c + (v0 - F/c) exp(-c t/m); dissipated = c * integral of v^2.
    const double m = 2.0, c = 3.0, F = 6.0, v0 = 5.0, t = 0.7;
    const double decay = std::exp(-c * t / m);
    const double end = F / c + (v0 - F / c) * decay;
    const double a = F / c, b = v0 - F / c, rate = c / m;
    const double lost = c * (a * a * t + 2 * a * b * (1 - decay) / rate + b * b * (1 - decay * decay) / (2 * rate));
    const SpeedFlow flow = FlowSpeed(v0, F, m, c, 0.0, t);
    EXPECT_NEAR(flow.speed, end, 1e-14);
    EXPECT_NEAR(flow.dissipated, lost, 1e-12 * lost);
}

TEST(SpeedFlow, IsContinuousInVanishingDamping) {
    const double reference = FlowSpeed(1.0, 4.0, 2.0, 0.0, 0.0, 0.1).speed;
    for (const double damping : {1e-3, 1e-6, 1e-9, 1e-12}) {
        EXPECT_NEAR(FlowSpeed(1.0, 4.0, 2.0, damping, 0.0, 0.1).speed, reference, damping);
    }
}

TEST(SpeedFlow, StaysAtRestWithinDryFriction) {
    EXPECT_EQ(FlowSpeed(0.0, 0.99, 1.0, 0.0, 1.0, 10.0).speed, 0.0);
    EXPECT_EQ(FlowSpeed(0.0, -1.0, 1.0, 0.0, 1.0, 10.0).speed, 0.0);
    EXPECT_DOUBLE_EQ(FlowSpeed(0.0, 1.5, 1.0, 0.0, 1.0, 2.0).speed, 1.0);
}

TEST(SpeedFlow, StopsInDryFrictionAndLosesAllEnergy) {
    const SpeedFlow flow = FlowSpeed(-2.0, 0.0, 3.0, 0.0, 1.0, 100.0);
    EXPECT_EQ(flow.speed, 0.0);
    EXPECT_DOUBLE_EQ(flow.dissipated, 6.0);
}

TEST(SpeedFlow, TurnsRoundAgainstDryFriction) {
    // Brakes with -(3+1) from 4 to 0 in 1 s, then goes back with -(3-1) for 2 s.
    const SpeedFlow flow = FlowSpeed(4.0, -3.0, 1.0, 0.0, 1.0, 3.0);
    EXPECT_DOUBLE_EQ(flow.speed, -4.0);
    // Friction times path: 2 m forth, 4 m back.
    EXPECT_NEAR(flow.dissipated, 6.0, 1e-12);
}

TEST(SpeedFlow, TurnsRoundWithDampingAndFriction) {
    const double m = 1.0, c = 0.5, F = -3.0, Ff = 1.0;
    const double toRest = m / c * std::log1p(4.0 * c / 4.0);
    const double expected = (F + Ff) / c * (1.0 - std::exp(-c * (3.0 - toRest) / m));
    EXPECT_NEAR(FlowSpeed(4.0, F, m, c, Ff, 3.0).speed, expected, 1e-13);
}

TEST(CoordinateFlow, MovesAtConstantSpeed) {
    const Drift drift = FlowCoordinate({1.0, -2.0}, 1.0, Stops(), 0.0, 0.25);
    EXPECT_DOUBLE_EQ(drift.state.coordinate, 0.5);
    EXPECT_DOUBLE_EQ(drift.state.speed, -2.0);
    EXPECT_EQ(drift.dissipated, 0.0);
}

TEST(CoordinateFlow, ReboundsFromAStop) {
    // Reaches 0 after 0.5 s at 2 m/s, returns at 1 m/s for 0.5 s.
    const Drift drift = FlowCoordinate({1.0, -2.0}, 3.0, {0.0, 5.0, 0.5}, 0.0, 1.0);
    EXPECT_DOUBLE_EQ(drift.state.coordinate, 0.5);
    EXPECT_DOUBLE_EQ(drift.state.speed, 1.0);
    EXPECT_DOUBLE_EQ(drift.dissipated, 0.5 * 3.0 * (4.0 - 1.0));
}

TEST(CoordinateFlow, StaysAtAStopWithoutRestitution) {
    const Drift drift = FlowCoordinate({4.0, 2.0}, 1.0, {0.0, 5.0, 0.0}, 0.0, 1.0);
    EXPECT_EQ(drift.state.coordinate, 5.0);
    EXPECT_EQ(drift.state.speed, 0.0);
    EXPECT_DOUBLE_EQ(drift.dissipated, 2.0);
}

TEST(CoordinateFlow, ComesToRestWhenTheReboundIsSlowerThanOneStepsForce) {
    EXPECT_EQ(FlowCoordinate({0.0, -1e-3}, 1.0, {0.0, 5.0, 0.9}, 1e-3, 1.0).state.speed, 0.0);
}

TEST(CoordinateFlow, BouncesBetweenTwoStops) {
    const Drift drift = FlowCoordinate({0.0, 1.0}, 1.0, {0.0, 1.0, 1.0}, 0.0, 3.25);
    EXPECT_DOUBLE_EQ(drift.state.coordinate, 0.75);
    EXPECT_DOUBLE_EQ(drift.state.speed, -1.0);
}

TEST(CoordinateFlow, RefusesToCountHitsForever) {
    EXPECT_THROW(FlowCoordinate({0.0, 1e6}, 1.0, {0.0, 1e-3, 1.0}, 0.0, 1.0), RunError);
}

TEST(CoordinateFlow, RestsAtAStopOnlyUnderAForceIntoIt) {
    const Stops stops{0.0, 1.0, 0.0};
    EXPECT_TRUE(RestsAtStop({0.0, 0.0}, -1.0, stops));
    EXPECT_FALSE(RestsAtStop({0.0, 0.0}, 1.0, stops));
    EXPECT_TRUE(RestsAtStop({1.0, 0.0}, 1.0, stops));
    EXPECT_FALSE(RestsAtStop({1.0, -0.1}, 1.0, stops));
    EXPECT_FALSE(RestsAtStop({0.5, 0.0}, 1.0, stops));
}

} // namespace
} // namespace kinora::host
