#pragma once

#include <Eigen/Geometry>

namespace kinora::scenario {

// How vectors and matrices are named, in every room that includes this header:
//
//   R_WB     turns components along the axes of B into components along the axes of W; its columns are B's axes, seen
//            from W. Its transpose is R_BW.
//   p_WB_W   leads from the origin of W to the origin of B, written in the axes of W.
//   X_WB     the pose of B in W: R_WB and p_WB_W.
//   force_W  any other vector, written in the axes of W.
//
// A product is right when the letters that meet are the same: p_WC_W = p_WB_W + R_WB * p_BC_B. The frames are
//
//   W   the global frame;
//   B   the frame of a body, B0 the same as the geometry is drawn;
//   D   the body's coordinate system in the desktop: W while the body is as drawn, moving with the body from there.
//
// C is a centre of mass, J a joint's point, F the frame of an attachment. Metres, newtons, newton metres, radians
// throughout.

using Vector = Eigen::Vector3d;
using Matrix = Eigen::Matrix3d;
/// Of unit length: the rotation q v q*.
using Quaternion = Eigen::Quaterniond;

constexpr double degreesPerRadian = 57.29577951308232;

/// No place and no way along a slider is farther than this: poses reach the desktop with six decimals of a metre, and
/// what is farther was most likely written in other units, or runs away.
constexpr double farthestMetres = 1000.0;

/// X_WB: position and orientation of a rigid body.
struct Pose {
    Vector p_WB_W = Vector::Zero();
    Matrix R_WB = Matrix::Identity();
};

/// X_WF from X_WB and X_BF.
Pose operator*(const Pose& X_WB, const Pose& X_BF);

/// X_BW from X_WB.
Pose Inverse(const Pose& X_WB);

/// Force and torque on a body, the torque about the body's origin.
struct Load {
    Vector force_W = Vector::Zero();
    Vector torque_W = Vector::Zero();
};

/// Rotation by an angle about a unit axis.
Matrix Rotation(const Vector& unitAxis, double angle);

/// The rotation vector of a turn: axis times angle, at most pi long.
Vector RotationVector(const Quaternion& turn);

/// The turn of a rotation vector.
Quaternion TurnBy(const Vector& rotationVector);

} // namespace kinora::scenario
