#include "comutils/Pose.h"

#include "comutils/Names.h"
#include "comutils/Text.h"

#include <algorithm>
#include <cmath>

namespace Pose {
namespace {

constexpr double halfPi = 1.5707963267948966;

std::string AngleText(double radians) {
    return Text::Fixed(radians) + Names::angleUnit;
}

} // namespace

Angles AnglesOf(const double (&rotation)[9]) {
    if (rotation[0] == 0.0 && rotation[3] == 0.0) {
        return {0.0, halfPi, std::atan2(rotation[1], rotation[4])};
    }
    // Matrices made from quaternions have an m6 a rounding above 1 near 90 degrees.
    const double sine = std::clamp(-rotation[6], -1.0, 1.0);
    return {std::atan2(rotation[3], rotation[0]), std::asin(sine), std::atan2(rotation[7], rotation[8])};
}

std::array<Variable, 6> Variables(const IKinoraVeltrixInterface::Transform& transform) {
    const Angles angles = AnglesOf(transform.rotation);
    const auto& position = transform.translation;
    return {Variable{transform.name + Names::phi, AngleText(angles.phi)},
            Variable{transform.name + Names::psi, AngleText(angles.psi)},
            Variable{transform.name + Names::theta, AngleText(angles.theta)},
            Variable{transform.name + Names::x, LengthText(position[0])},
            Variable{transform.name + Names::y, LengthText(position[1])},
            Variable{transform.name + Names::z, LengthText(position[2])}};
}

std::string LengthText(double metres) {
    return Text::Fixed(metres) + Names::lengthUnit;
}

} // namespace Pose
