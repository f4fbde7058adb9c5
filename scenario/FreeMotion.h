#pragma once

#include "scenario/Expression.h"

#include <limits>

namespace kinora::scenario {

/// A spring between a joint's coordinate and its rest value.
struct Spring {
    double stiffness = 0.0;
    double rest = 0.0;
};

/// Limits of a joint's coordinate. The speed after a hit is minus `restitution` times the speed before.
struct Stops {
    double min = -std::numeric_limits<double>::infinity();
    double max = std::numeric_limits<double>::infinity();
    double restitution = 0.0;
};

/// What moves a free joint besides the field and gravity. Units: metres, newtons and kilograms for a slider, radians,
/// newton metres and kg m^2 for a hinge.
struct FreeMotion {
    double start = 0.0;
    double speed = 0.0;
    double addedInertia = 0.0;
    Spring spring;
    double damping = 0.0;
    double friction = 0.0;
    Stops stops;
    /// Of time and coordinate.
    Expression load;
};

} // namespace kinora::scenario
