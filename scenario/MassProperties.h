#pragma once

#include "scenario/Scenario.h"

#include <cstddef>
#include <vector>

namespace kinora::scenario {

/// What bodies that are moved as one amount to, in their drawn poses.
struct MassProperties {
    /// Kilograms.
    double mass = 0.0;
    /// To the centre of mass; 0 where there is no mass.
    Vector p_WC_W = Vector::Zero();
    /// About the centre of mass, along the global axes, kg m^2.
    Matrix inertia_W = Matrix::Zero();

    /// About any point.
    Matrix InertiaAbout(const Vector& p_WO_W) const;
};

/// @param members  indices of the bodies
MassProperties Together(const std::vector<Body>& bodies, const std::vector<std::size_t>& members);

} // namespace kinora::scenario
