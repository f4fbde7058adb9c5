#include "scenario/Rigid.h"

#include "tests/support/Pi.h"

#include <cmath>
#include <gtest/gtest.h>

namespace kinora::scenario {
namespace {

Quaternion AxisAngle(const Vector& axis, double angle) {
    return Quaternion(Eigen::AngleAxisd(angle, axis.normalized()));
}

TEST(RotationVector, GoesThereAndBackAtEveryAngle) {
    const Vector axis = Vector(1.0, -2.0, 0.5).normalized();
    for (const double angle : {1e-100, 1e-12, 1e-8, 1e-3, 1.0, 3.0, pi - 1e-9}) {
        const Vector vector = RotationVector(TurnBy(axis * angle));
        EXPECT_LT((vector - axis * angle).norm(), 1e-15 + 1e-15 * angle) << angle;
        EXPECT_NEAR(vector.norm() / angle, 1.0, 1e-14) << angle;
    }
    EXPECT_EQ(RotationVector(Quaternion::Identity()), Vector::Zero());
    EXPECT_EQ(TurnBy(Vector::Zero()).coeffs(), Quaternion::Identity().coeffs());
}

TEST(RotationVector, TakesTheShorterWay) {
    EXPECT_LT((RotationVector(AxisAngle(Vector::UnitZ(), 1.5 * pi)) + Vector(0.0, 0.0, pi / 2.0)).norm(), 1e-15);
    // A quaternion and its negative are the same turn.
    EXPECT_LT((RotationVector(Quaternion(-std::cos(0.5), 0.0, -std::sin(0.5), 0.0)) - Vector::UnitY()).norm(), 1e-15);
    EXPECT_EQ(RotationVector(Quaternion(-1.0, 0.0, 0.0, 0.0)), Vector::Zero());
    EXPECT_EQ(RotationVector(Quaternion(0.0, 0.0, 0.0, 1.0)), Vector(0.0, 0.0, pi));
}

TEST(TurnBy, TurnsByTheRightHand) {
    EXPECT_LT((TurnBy(Vector(0.0, 0.0, pi / 2.0)) * Vector::UnitX() - Vector::UnitY()).norm(), 1e-15);
    EXPECT_NEAR(TurnBy(Vector(1.0, 2.0, 3.0)).norm(), 1.0, 1e-15);
}

TEST(Pose, ComposesAndInverts) {
    const Pose X_WB = {{1.0, 2.0, 3.0}, Rotation(Vector::UnitZ(), pi / 2.0)};
    const Pose X_BF = {{1.0, 0.0, 0.0}, Rotation(Vector::UnitX(), pi / 2.0)};
    const Pose X_WF = X_WB * X_BF;
    EXPECT_LT((X_WF.p_WB_W - Vector(1.0, 3.0, 3.0)).norm(), 1e-15);
    EXPECT_LT((X_WF.R_WB.col(2) - Vector::UnitX()).norm(), 1e-15);
    const Pose X_BB = Inverse(X_WB) * X_WB;
    EXPECT_LT(X_BB.p_WB_W.norm(), 1e-15);
    EXPECT_LT((X_BB.R_WB - Matrix::Identity()).norm(), 1e-15);
}

} // namespace
} // namespace kinora::scenario
