#include "comutils/Pose.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

constexpr double halfPi = 1.5707963267948966;

std::vector<Pose::Variable> Variables(const IKinoraVeltrixInterface::Transform& transform) {
    const auto variables = Pose::Variables(transform);
    return {variables.begin(), variables.end()};
}

} // namespace

TEST(Pose, IdentityHasANegativeZeroTheta) {
    const double identity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    const Pose::Angles angles = Pose::AnglesOf(identity);
    EXPECT_EQ(angles.phi, 0.0);
    EXPECT_EQ(angles.theta, 0.0);
    EXPECT_TRUE(std::signbit(angles.theta));
    EXPECT_EQ(angles.psi, 0.0);
}

TEST(Pose, AnglesComeFromTheFirstColumnAndTheLastRow) {
    // c = 0.8, s = 0.6 about each axis in turn
    const double aboutX[9] = {1, 0, 0, 0, 0.8, -0.6, 0, 0.6, 0.8};
    EXPECT_DOUBLE_EQ(Pose::AnglesOf(aboutX).psi, std::atan2(0.6, 0.8));
    const double aboutY[9] = {0.8, 0, 0.6, 0, 1, 0, -0.6, 0, 0.8};
    EXPECT_DOUBLE_EQ(Pose::AnglesOf(aboutY).theta, std::asin(0.6));
    const double aboutZ[9] = {0.8, -0.6, 0, 0.6, 0.8, 0, 0, 0, 1};
    EXPECT_DOUBLE_EQ(Pose::AnglesOf(aboutZ).phi, std::atan2(0.6, 0.8));
}

TEST(Pose, SineThatRoundingPutsBeyondOneIsARightAngle) {
    const double above = std::nextafter(1.0, 2.0);
    for (const double m6 : {-above, above, -1.5, 1.5}) {
        const double rotation[9] = {1e-9, 0.6, 0.8, 1e-9, 0.8, -0.6, m6, 0, 1e-9};
        EXPECT_EQ(Pose::AnglesOf(rotation).theta, m6 < 0.0 ? halfPi : -halfPi);
    }
    IKinoraVeltrixInterface::Transform transform{"R", {}, {1e-9, 0, 1, 0, 1, 0, -above, 0, 1e-9}};
    EXPECT_EQ(Variables(transform)[2], Pose::Variable("R_Theta", "1.570796Rad"));
}

TEST(Pose, DegenerateThetaIsAlwaysPlusHalfPi) {
    for (const double m6 : {-1.0, 1.0}) {
        const double rotation[9] = {0, 0.6, 0.8, -0.0, 0.8, -0.6, m6, 0, 0};
        const Pose::Angles angles = Pose::AnglesOf(rotation);
        EXPECT_EQ(angles.phi, 0.0);
        EXPECT_EQ(angles.theta, halfPi);
        EXPECT_DOUBLE_EQ(angles.psi, std::atan2(0.6, 0.8));
    }
}

TEST(Pose, VariablesStandInTheOrderOfTheirNames) {
    IKinoraVeltrixInterface::Transform transform;
    transform.name = "Rotor";
    transform.translation[0] = 0.01;
    transform.translation[1] = -2.0;
    const std::vector<Pose::Variable> expected = {{"Rotor_Phi", "0.000000Rad"},    {"Rotor_Psi", "0.000000Rad"},
                                                  {"Rotor_Theta", "-0.000000Rad"}, {"Rotor_X", "0.010000Meter"},
                                                  {"Rotor_Y", "-2.000000Meter"},   {"Rotor_Z", "0.000000Meter"}};
    EXPECT_EQ(Variables(transform), expected);
}
