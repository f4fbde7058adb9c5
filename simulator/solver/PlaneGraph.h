#pragma once
// Two polygons in one plane as one graph: their edges, cut wherever they meet, so that which part of one lies inside
// the other is a question of whole edges.
#include "simulator/solver/Polygon.h"

#include <array>
#include <cstdint>

namespace vantor::solver {

class PlaneGraph {
public:
    using Index = std::uint32_t;
    static constexpr Index none = UINT32_MAX;

    /// Edges of the graph meet at its corners only.
    struct GraphEdge {
        Index from = 0, to = 0;
        /// How often each polygon's outline runs along it, less how often it runs the other way.
        std::array<int, 2> runs{};
        /// An edge of each polygon that it is a part of, or none.
        std::array<Index, 2> sources{none, none};
        /// Whether each polygon lies on its left and on its right.
        std::array<bool, 2> left{}, right{};
    };

    /// Corners that are nearer to each other or to an edge than about the tolerance become one with it: that of the
    /// first polygon stays where it is. Both outlines stay closed, whatever is moved.
    /// @param tolerance  metres; far above the rounding of the coordinates, far below the polygons' features
    PlaneGraph(const std::vector<PlaneSegment>& first, const std::vector<PlaneSegment>& second, double tolerance);

    const std::vector<Eigen::Vector2d>& Corners() const { return m_corners; }
    const std::vector<GraphEdge>& Edges() const { return m_edges; }

private:
    std::vector<Eigen::Vector2d> m_corners;
    std::vector<GraphEdge> m_edges;
};

} // namespace vantor::solver
