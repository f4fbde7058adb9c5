#pragma once

#include "interface/IKinoraVeltrixInterface.h"
#include "scenario/Rigid.h"

#include <string>

namespace kinora::scenario {

/// The pose as the interface takes it. The nine numbers are R_BW row by row: each row is an axis of the body, seen from
/// the global frame.
IKinoraVeltrixInterface::Transform ToTransform(const std::string& name, const Pose& X_WB);

/// The three angles that the library makes of an orientation: for the desktop's variables, and in the log.
struct Angles {
    double phi = 0.0;
    double theta = 0.0;
    double psi = 0.0;
};

/// The angle rule: R_BW = Rz(phi) Ry(theta) Rx(psi). Where the first and the fourth number that the interface takes
/// both vanish, phi is 0 and theta +pi/2, also where -pi/2 were right.
Angles AnglesOf(const Matrix& R_WB);

/// R_WB from the angles.
Matrix FromAngles(const Angles& angles);

/// R_WD: the frame that the desktop makes of the angles of an orientation.
///
/// The desktop's frame takes two of the angles in each other's places: R_DW = Rz(theta) Ry(phi) Rx(psi). The two frames
/// agree for phi = theta, and so for every rotation about X; elsewhere D is not B.
Matrix DesktopAxes(const Matrix& R_WB);

/// Angle of the rotation R_BD between the body's frame and the desktop's, 0 to pi.
double FrameDeviation(const Matrix& R_WB);

/// The one place where a result of the desktop becomes a load: newtons stay, millinewton-metres become newton metres,
/// and components in the axes of the desktop's frame become global ones.
Load ToLoad(const IKinoraVeltrixInterface::Result& result, const Matrix& R_WB);

} // namespace kinora::scenario
