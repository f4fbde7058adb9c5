#pragma once

#include "scenario/Rigid.h"

#include <array>

namespace kinora::report {

/// The angles phi, theta, psi that the library makes of an orientation: M = Rz(phi) Ry(theta) Rx(psi) for the matrix M
/// whose rows are the body's axes. Where its first and fourth element vanish, phi is 0 and theta +pi/2, also where
/// -pi/2 were right.
/// @param axes  the body's axes as columns, in global axes
std::array<double, 3> LoggedAngles(const scenario::Matrix& axes);

/// The body's axes as columns, from the angles phi, theta, psi of the log.
scenario::Matrix AxesFromAngles(double phi, double theta, double psi);

} // namespace kinora::report
