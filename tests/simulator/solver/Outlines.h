#pragma once
// Flat polygons for the tests, by the corners of their outlines.
#include "simulator/solver/Polygon.h"

#include <vector>

namespace outlines {

using Corners = std::vector<Eigen::Vector2d>;

Corners Circle(int corners, double radius, const Eigen::Vector2d& centre);
/// The other way round, as a hole runs.
Corners Reversed(const Corners& corners);

/// A polygon somewhere in space, all of them in one plane; outlines of holes run clockwise.
vantor::solver::Polygon PolygonOf(const std::vector<Corners>& outlines);

} // namespace outlines
