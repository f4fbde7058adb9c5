#pragma once

#include "interface/IKinoraVeltrixInterface.h"

#include <array>
#include <string>
#include <utility>

/// The six design variables that place a body.
namespace Pose {

/// Radians.
struct Angles {
    double phi;
    double theta;
    double psi;
};

/// The angles of an orientation, the one rule for variables, placement and log.
/// @param rotation  m0 to m8, row by row
/// @return phi = atan2(m3, m0), theta = asin(-m6), psi = atan2(m7, m8), an m6 beyond -1 or 1 counting as -1 or 1; where
///         m0 and m3 are both 0, phi is 0, theta is +pi/2 whatever the sign of m6, and psi = atan2(m1, m4)
Angles AnglesOf(const double (&rotation)[9]);

/// Name and value of a variable, for example "Rotor_X" and "0.010000Meter".
using Variable = std::pair<std::string, std::string>;

/// @return the body's variables in the order of their names: _Phi, _Psi, _Theta, _X, _Y, _Z
std::array<Variable, 6> Variables(const IKinoraVeltrixInterface::Transform& transform);

/// @return a length as the desktop takes it, for example "-0.010000Meter"
std::string LengthText(double metres);

} // namespace Pose
