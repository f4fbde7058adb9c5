#pragma once

#include "interface/IKinoraVeltrixInterface.h"
#include "scenario/Rigid.h"

#include <string>

namespace kinora::scenario {

// The desktop sees a body in the axes D: the global axes while the body is as drawn, moving with the body from there.
// They are the body's own axes B where B is not turned in the drawn pose. R_BD, which is R_WB in the drawn pose
// transposed, stays the same for the whole run.

/// The pose of a body as it is drawn, for `InitMagneticObjects`: the drawn position, not turned.
IKinoraVeltrixInterface::Transform DrawnTransform(const std::string& name, const Pose& X_WB0);

/// The pose of a body for `Analyze`: the nine numbers of which the desktop makes D, any orientation to rounding.
/// @param R_WB0  the body's orientation as it is drawn
IKinoraVeltrixInterface::Transform ToTransform(const std::string& name, const Pose& X_WB, const Matrix& R_WB0);

/// A material with the direction of its coercivity, given in the body's own axes, in the axes D.
IKinoraVeltrixInterface::Material ToDesktopAxes(const IKinoraVeltrixInterface::Material& material_B,
                                                const Matrix& R_WB0);

/// A result of the desktop, in the axes D, in the body's own axes; units stay.
IKinoraVeltrixInterface::Result ToBodyAxes(const IKinoraVeltrixInterface::Result& result_D, const Matrix& R_WB0);

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

/// R_WF: the frame F that the desktop makes of the angles of a matrix that is handed over.
///
/// It takes two of the angles in each other's places: R_FW = Rz(theta) Ry(phi) Rx(psi). The two agree for phi = theta,
/// and so for every rotation about X.
Matrix DesktopAxes(const Matrix& R_WB);

/// Angle of the rotation R_BF between the axes of the matrix and the desktop's frame, 0 to pi.
double FrameDeviation(const Matrix& R_WB);

/// The one place where a result becomes a load: newtons stay, millinewton-metres become newton metres, and components
/// in the body's own axes become global ones.
Load ToLoad(const IKinoraVeltrixInterface::Result& result_B, const Matrix& R_WB);

} // namespace kinora::scenario
