#include "scenario/Rigid.h"

#include <cmath>

namespace kinora::scenario {

Pose operator*(const Pose& X_WB, const Pose& X_BF) {
    return {X_WB.p_WB_W + X_WB.R_WB * X_BF.p_WB_W, X_WB.R_WB * X_BF.R_WB};
}

Pose Inverse(const Pose& X_WB) {
    const Matrix R_BW = X_WB.R_WB.transpose();
    return {-(R_BW * X_WB.p_WB_W), R_BW};
}

Matrix Rotation(const Vector& unitAxis, double angle) {
    return Eigen::AngleAxisd(angle, unitAxis).toRotationMatrix();
}

Vector RotationVector(const Quaternion& turn) {
    const double sine = turn.vec().norm();
    // A quaternion and its negative are the same turn; the one with the cosine of 0 or more turns by pi at most.
    const double sign = turn.w() < 0.0 ? -1.0 : 1.0;
    const double perSine = sine == 0.0 ? 2.0 : 2.0 * std::atan2(sine, sign * turn.w()) / sine;
    return sign * perSine * turn.vec();
}

Quaternion TurnBy(const Vector& rotationVector) {
    const double angle = rotationVector.norm();
    const Vector sine = (angle == 0.0 ? 0.5 : std::sin(angle / 2.0) / angle) * rotationVector;
    return {std::cos(angle / 2.0), sine.x(), sine.y(), sine.z()};
}

} // namespace kinora::scenario
