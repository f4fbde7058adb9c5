#pragma once
// Polygons of many edges in parts of few: what a far point or a small neighbour sees of a ring's end face should not
// cost as much as its whole outline.
#include "simulator/solver/Polygon.h"

#include <optional>
#include <vector>

namespace vantor::solver {

/// The edges of a polygon in its own plane coordinates.
std::vector<PlaneSegment> OutlineOf(const Polygon& polygon);

/// The part of a polygon inside of an outline, which is in the polygon's plane coordinates. It keeps the polygon's
/// axes.
/// @return nothing where the outline has no area
std::optional<Polygon> PartOf(const Polygon& polygon, std::vector<PlaneSegment> outline);

/// Cuts a polygon by straight lines, again and again, until every part has at most `mostEdges` edges. The parts keep
/// the polygon's axes and cover it without gaps; a part may be of several outlines. What no line leaves with clearly
/// fewer edges stays as it is: triangles, and corners by the dozen in one place. Parts without area are left out.
/// @param mostEdges  10 or more is within reach of all but the oddest polygons
std::vector<Polygon> CutToEdges(const Polygon& polygon, std::size_t mostEdges);

/// Whether a polygon is so much longer than it is wide that clusters of it do not reach far less than its length.
bool IsSlender(const Polygon& polygon);

/// Cuts a polygon in the middle of its longer extent. A part may be of several outlines.
/// @return two parts; the polygon alone where no line leaves an area on both sides
std::vector<Polygon> CutInMiddle(const Polygon& polygon);

/// Cuts a polygon along a straight line, or one beside it that no corner lies on.
/// @param across  unit normal of the line, in the polygon's plane coordinates
/// @param at      distance of the line from the polygon's centre along it
/// @return two parts, of several outlines perhaps; the polygon alone where a part would have no area
std::vector<Polygon> CutAcross(const Polygon& polygon, const Eigen::Vector2d& across, double at);

/// A polygon as a simpler one inside of it and what lies between the two outlines.
struct SimplerPolygon {
    Polygon simple;
    /// Of six edges at most; together with the simple one they cover the polygon without gaps.
    std::vector<Polygon> rest;
};

/// Of every four edges that bend all one way makes one or two: a chord where the outline bends to the inside, and the
/// first and the last of them up to where they meet where it bends to the outside. The simpler polygon reaches
/// nowhere beyond the polygon, and a round outline's rest has little of the area.
/// @return nothing where that would save less than a quarter of the edges
std::optional<SimplerPolygon> Simplified(const Polygon& polygon);

} // namespace vantor::solver
