#pragma once
// Polygons of many edges in parts of few: what a far point or a small neighbour sees of a ring's end face should not cost
// as much as its whole outline.
#include "simulator/solver/Polygon.h"

namespace vantor::solver {

/// Cuts a polygon by straight lines, again and again, until every part has at most `mostEdges` edges. The parts keep the
/// polygon's axes and cover it without gaps; a part may be of several outlines. What no line leaves with clearly fewer
/// edges stays as it is: triangles, and corners by the dozen in one place. Parts without area are left out.
/// @param mostEdges  10 or more is within reach of all but the oddest polygons
std::vector<Polygon> CutToEdges(const Polygon& polygon, std::size_t mostEdges);

} // namespace vantor::solver
