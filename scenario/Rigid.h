#pragma once

#include "interface/IKinoraVeltrixInterface.h"

#include <Eigen/Core>
#include <string>

namespace kinora::scenario {

using Vector = Eigen::Vector3d;
using Matrix = Eigen::Matrix3d;

/// Position and orientation of a rigid body.
struct Pose {
    /// Origin in global axes, metres.
    Vector position = Vector::Zero();
    /// The body's axes as columns, in global axes: turns body components into global ones.
    Matrix axes = Matrix::Identity();
};

/// Force and torque on a body in global axes, the torque about the body's origin; N and N m.
struct Load {
    Vector force = Vector::Zero();
    Vector torque = Vector::Zero();
};

/// Rotation by an angle (radians) about a unit axis.
Matrix Rotation(const Vector& unitAxis, double angle);

/// The pose as the interface takes it: the nine numbers row by row, each row an axis of the body seen from the global
/// frame. (The transpose of `Pose::axes`.)
IKinoraVeltrixInterface::Transform ToTransform(const std::string& name, const Pose& pose);

/// The frame that the desktop makes of a pose's orientation, as columns in global axes.
///
/// The desktop receives three angles: with the rows of the interface's matrix taken as M = Rz(phi) Ry(theta) Rx(psi),
/// its coordinate system has the rows of Rz(theta) Ry(phi) Rx(psi). The two agree for phi = theta, and so for every
/// rotation about X; elsewhere the desktop's frame is not the body's.
Matrix DesktopAxes(const Matrix& axes);

/// Angle of the rotation that takes the body's axes to the desktop's frame, radians, 0 to pi.
double FrameDeviation(const Matrix& axes);

/// The one place where a result of the desktop becomes a load: newtons stay, millinewton-metres become newton metres,
/// and components in the axes of the desktop's frame become global ones.
Load ToLoad(const IKinoraVeltrixInterface::Result& result, const Matrix& axes);

} // namespace kinora::scenario
