#pragma once
// What two polygons in one plane have in common, and what each has alone.
#include "simulator/solver/Polygon.h"

#include <optional>
#include <vector>

namespace vantor::solver {

/// Parts of two polygons. Each part is in one piece, perhaps with holes.
struct PolygonOverlay {
    /// In the plane of the first polygon, with its axes.
    std::vector<Polygon> common;
    /// In the plane of each, with its axes.
    std::vector<Polygon> onlyFirst, onlySecond;
};

/// The parts of two polygons whose planes are one but for rounding, their normals alike or opposite. Together the parts
/// cover both polygons without gaps.
/// @param tolerance  metres; what is nearer is one. Far above the rounding of the coordinates.
/// @return nothing when the polygons have no area in common
std::optional<PolygonOverlay> Overlay(const Polygon& first, const Polygon& second, double tolerance);

} // namespace vantor::solver
