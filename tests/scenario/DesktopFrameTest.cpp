#include "scenario/DesktopFrame.h"

#include "tests/support/Pi.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace kinora::scenario {
namespace {

/// The axes that the desktop makes of a transform: R_WF.
Matrix FrameOf(const IKinoraVeltrixInterface::Transform& transform) {
    const Eigen::Map<const Matrix> R_WM(transform.rotation); // the rows become columns
    return DesktopAxes(R_WM);
}

/// Orientations without any right angle.
const Matrix drawn = Rotation(Vector(1, 2, -2) / 3.0, 0.8);
const Matrix turnedAxes = Rotation(Vector(2, -6, 3) / 7.0, 2.3) * drawn;

TEST(Transform, OfATurnAboutXHoldsTheBodysAxesAsRows) {
    const auto transform =
        ToTransform("rotor", {{1.0, 2.0, 3.0}, Rotation(Vector::UnitX(), pi / 2)}, Matrix::Identity());
    EXPECT_EQ(transform.name, "rotor");
    EXPECT_EQ(transform.translation[2], 3.0);
    const double expected[9] = {1, 0, 0, 0, 0, 1, 0, -1, 0};
    for (int i = 0; i < 9; ++i) {
        EXPECT_NEAR(transform.rotation[i], expected[i], 1e-15) << i;
    }
}

TEST(Transform, GivesTheDesktopTheBodysAxes) {
    for (const Vector& axis : {Vector(Vector::UnitY()), Vector(Vector::UnitZ()), Vector(2.0 / 7, -6.0 / 7, 3.0 / 7)}) {
        for (double angle = -3.1; angle < 3.15; angle += 0.1) {
            const Matrix R_WB = Rotation(axis, angle);
            EXPECT_LT((FrameOf(ToTransform("rotor", {Vector::Zero(), R_WB}, Matrix::Identity())) - R_WB).norm(), 1e-14)
                << axis.transpose() << ' ' << angle;
        }
    }
}

TEST(Transform, TurnsFromTheDrawnPoseOn) {
    const Pose drawnPose{{1.0, 2.0, 3.0}, drawn};
    const auto asDrawn = DrawnTransform("rotor", drawnPose);
    EXPECT_EQ(asDrawn.name, "rotor");
    EXPECT_EQ(asDrawn.translation[1], 2.0);
    const Matrix identity = Eigen::Map<const Matrix>(asDrawn.rotation);
    EXPECT_EQ(identity, Matrix::Identity());
    EXPECT_LT((FrameOf(ToTransform("rotor", drawnPose, drawn)) - Matrix::Identity()).norm(), 1e-15);
    const Matrix R_WD = Rotation(Vector(2, -6, 3) / 7.0, 2.3); // from drawn to turned
    EXPECT_LT((FrameOf(ToTransform("rotor", {Vector::Zero(), turnedAxes}, drawn)) - R_WD).norm(), 1e-14);
}

TEST(BodyAxes, BecomeTheDesktopsAndBack) {
    // Drawn a quarter turn about z: the body's x axis points along global y, its y axis along -x.
    const Matrix quarter = Rotation(Vector::UnitZ(), pi / 2);
    const auto material = ToDesktopAxes({"magnet_1T", {1.0, 2.0, 3.0}}, quarter);
    EXPECT_EQ(material.name, "magnet_1T");
    EXPECT_LT((Eigen::Map<const Vector>(material.coercivityDirection) - Vector(-2, 1, 3)).norm(), 1e-15);
    const auto result = ToBodyAxes({{1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}}, quarter);
    EXPECT_LT((Eigen::Map<const Vector>(result.force) - Vector(2, -1, 3)).norm(), 1e-15);
    EXPECT_LT((Eigen::Map<const Vector>(result.torque) - Vector(5, -4, 6)).norm(), 1e-15);
}

TEST(BodyAxes, OfABodyDrawnUnturnedKeepEveryBit) {
    const auto material = ToDesktopAxes({"magnet_1T", {-0.0, 0.1, 1e300}}, Matrix::Identity());
    EXPECT_TRUE(std::signbit(material.coercivityDirection[0]));
    EXPECT_EQ(material.coercivityDirection[1], 0.1);
    const double infinity = std::numeric_limits<double>::infinity();
    const auto result = ToBodyAxes({{-0.0, 0.1, infinity}, {0.3, -0.0, 1e-310}}, Matrix::Identity());
    EXPECT_TRUE(std::signbit(result.force[0]));
    EXPECT_EQ(result.force[1], 0.1);
    EXPECT_EQ(result.force[2], infinity);
    EXPECT_EQ(result.torque[0], 0.3);
    EXPECT_TRUE(std::signbit(result.torque[1]));
    EXPECT_EQ(result.torque[2], 1e-310);
}

TEST(BodyAxes, AndTheTransformMeetInTheSameGlobalVector) {
    // A direction of the body, seen by the desktop, comes out where the body has carried it.
    const Vector direction_B(0.2, -0.7, 0.4);
    const auto material = ToDesktopAxes({"", {0.2, -0.7, 0.4}}, drawn);
    const Matrix R_WD = FrameOf(ToTransform("rotor", {Vector::Zero(), turnedAxes}, drawn));
    const Vector direction_W = R_WD * Eigen::Map<const Vector>(material.coercivityDirection);
    EXPECT_LT((direction_W - turnedAxes * direction_B).norm(), 1e-14);
    // A load of the desktop is the same global vector by the body's own axes.
    IKinoraVeltrixInterface::Result result_D{{1.0, -2.0, 0.5}, {300.0, 20.0, -1.0}};
    const Load load = ToLoad(ToBodyAxes(result_D, drawn), turnedAxes);
    EXPECT_LT((load.force_W - R_WD * Vector(1.0, -2.0, 0.5)).norm(), 1e-14);
    EXPECT_LT((load.torque_W - R_WD * Vector(0.3, 0.02, -0.001)).norm(), 1e-14);
}

TEST(Angles, TakeAnOrientationApartAsTheLibraryDoes) {
    const Matrix R_WB = FromAngles({0.3, -0.4, 2.5});
    const auto [phi, theta, psi] = AnglesOf(R_WB);
    EXPECT_NEAR(phi, 0.3, 1e-15);
    EXPECT_NEAR(theta, -0.4, 1e-15);
    EXPECT_NEAR(psi, 2.5, 1e-15);
    // The third row of R_BW is the body's z axis; its first element is -sin(theta).
    EXPECT_NEAR(R_WB(0, 2), std::sin(0.4), 1e-15);
}

TEST(Angles, GiveTheirOneAngleToPosesThatLookAlongZ) {
    // The body's x axis is -z: the first column of R_BW is (0, 0, 1), where -pi/2 were right.
    Matrix R_BW;
    R_BW << 0, 0, -1, 0, 1, 0, 1, 0, 0;
    const auto [phi, theta, psi] = AnglesOf(R_BW.transpose());
    EXPECT_EQ(phi, 0.0);
    EXPECT_DOUBLE_EQ(theta, pi / 2);
    EXPECT_EQ(psi, 0.0);
}

TEST(DesktopAxes, AreTheBodysForTurnsAboutX) {
    for (double angle = -3.1; angle < 3.15; angle += 0.1) {
        const Matrix R_WB = Rotation(Vector::UnitX(), angle);
        EXPECT_LT((DesktopAxes(R_WB) - R_WB).norm(), 1e-14) << angle;
        EXPECT_LT(FrameDeviation(R_WB), 1e-7) << angle;
    }
}

TEST(DesktopAxes, FollowTheFrameFormulas) {
    // The desktop's axes written out: X = (cP cT, sS sP cT - cS sT, cS sP cT + sS sT),
    // Y = (cP sT, sS sP sT + cS cT, cS sP sT - sS cT), for the three angles of a matrix built from them.
    const double P = 0.3, T = -0.7, S = 1.1;
    const Matrix R_BW = Rotation(Vector::UnitZ(), P) * Rotation(Vector::UnitY(), T) * Rotation(Vector::UnitX(), S);
    const Matrix R_WD = DesktopAxes(R_BW.transpose());
    const double cP = std::cos(P), sP = std::sin(P), cT = std::cos(T), sT = std::sin(T), cS = std::cos(S),
                 sS = std::sin(S);
    EXPECT_LT((R_WD.col(0) - Vector(cP * cT, sS * sP * cT - cS * sT, cS * sP * cT + sS * sT)).norm(), 1e-14);
    EXPECT_LT((R_WD.col(1) - Vector(cP * sT, sS * sP * sT + cS * cT, cS * sP * sT - sS * cT)).norm(), 1e-14);
}

TEST(DesktopAxes, TurnAboutZInsteadOfY) {
    const Matrix R_WB = Rotation(Vector::UnitY(), 0.4);
    const Matrix R_WD = DesktopAxes(R_WB);
    EXPECT_LT((R_WD - Rotation(Vector::UnitZ(), 0.4)).norm(), 1e-14);
    // Angle between turns of 0.4 about y and about z: cos(a/2) = cos(0.2)^2.
    EXPECT_NEAR(FrameDeviation(R_WB), 2.0 * std::acos(std::cos(0.2) * std::cos(0.2)), 1e-12);
}

TEST(DesktopAxes, TakePlusHalfPiInTheDegenerateCase) {
    // First column exactly zero above the last element: theta is +pi/2 whatever the sign of that element.
    Matrix R_BW;
    R_BW << 0, 0, -1, 0, 1, 0, 1, 0, 0;
    const Matrix R_WD = DesktopAxes(R_BW.transpose());
    EXPECT_LT((R_WD - Rotation(Vector::UnitZ(), pi / 2).transpose()).norm(), 1e-14);
}

TEST(ToLoad, ConvertsMillinewtonMetresAndTurnsIntoGlobalAxes) {
    IKinoraVeltrixInterface::Result result;
    result.force[1] = 2.0;
    result.torque[2] = 500.0;
    const Load load = ToLoad(result, Rotation(Vector::UnitX(), pi / 2));
    // The body's y axis points along global z, its z axis along -y.
    EXPECT_LT((load.force_W - Vector(0, 0, 2)).norm(), 1e-14);
    EXPECT_LT((load.torque_W - Vector(0, -0.5, 0)).norm(), 1e-14);
    // Turned about y, the body's y axis stays and its z axis points along x.
    const Load other = ToLoad(result, Rotation(Vector::UnitY(), pi / 2));
    EXPECT_LT((other.force_W - Vector(0, 2, 0)).norm(), 1e-14);
    EXPECT_LT((other.torque_W - Vector(0.5, 0, 0)).norm(), 1e-14);
}

} // namespace
} // namespace kinora::scenario
