#include "simulator/solver/PolygonOverlay.h"

#include "simulator/solver/PlaneGraph.h"
#include "simulator/solver/PolygonParts.h"

#include <Eigen/Geometry>
#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace vantor::solver {
namespace {

using Eigen::Vector2d;
using Index = PlaneGraph::Index;
using Outline = std::vector<PlaneSegment>;

/// An edge of a region, which lies to its left.
struct RegionEdge {
    Index from, to;
    std::array<Index, 2> sources;
};

/// A closed outline, in order.
struct Loop {
    std::vector<RegionEdge> edges;
    /// Negative when it runs around a hole.
    double area = 0;
};

/// Makes whole again what was cut between two edges of a loop.
class Mender {
public:
    explicit Mender(const std::vector<RegionEdge>& loop) {
        for (const RegionEdge& edge : loop) {
            if (m_mended.empty() || !Extend(m_mended.back(), edge)) {
                m_mended.push_back(edge);
            }
        }
        if (m_mended.size() > 3 && Extend(m_mended.back(), m_mended.front())) {
            m_mended.front() = m_mended.back();
            m_mended.pop_back();
        }
    }
    const std::vector<RegionEdge>& Mended() const { return m_mended; }

private:
    static bool Extend(RegionEdge& edge, const RegionEdge& next) {
        std::array<Index, 2> sources{};
        for (std::size_t k = 0; k < 2; ++k) {
            sources[k] = edge.sources[k] == next.sources[k] ? edge.sources[k] : PlaneGraph::none;
        }
        if (sources[0] == PlaneGraph::none && sources[1] == PlaneGraph::none) {
            return false;
        }
        edge = {edge.from, next.to, sources};
        return true;
    }

    std::vector<RegionEdge> m_mended;
};

/// Puts the edges of a region in order: one outline for each piece that hangs together.
class OutlineTracer {
public:
    OutlineTracer(const std::vector<Vector2d>& corners, std::vector<RegionEdge> edges)
        : m_corners(corners), m_edges(std::move(edges)), m_taken(m_edges.size(), false) {
        std::sort(m_edges.begin(), m_edges.end(),
                  [](const RegionEdge& a, const RegionEdge& b) { return a.from < b.from; });
        for (std::size_t first = 0; first < m_edges.size(); ++first) {
            if (!m_taken[first]) {
                Trace(first);
            }
        }
        const auto holes =
            std::stable_partition(m_loops.begin(), m_loops.end(), [](const Loop& loop) { return loop.area > 0; });
        m_outerCount = static_cast<std::size_t>(holes - m_loops.begin());
    }

    std::vector<Outline> Outlines() const {
        std::vector<Outline> outlines(m_outerCount);
        for (std::size_t i = 0; i < m_loops.size(); ++i) {
            if (const std::optional<std::size_t> around =
                    i < m_outerCount ? std::make_optional(i) : LoopAround(m_loops[i])) {
                Append(outlines[*around], m_loops[i]);
            }
        }
        return outlines;
    }

private:
    Vector2d Along(const RegionEdge& edge) const { return m_corners[edge.to] - m_corners[edge.from]; }

    void Trace(std::size_t first) {
        Loop loop;
        for (std::size_t i = first; i < m_edges.size() && !m_taken[i]; i = Next(m_edges[i])) {
            m_taken[i] = true;
            loop.edges.push_back(m_edges[i]);
        }
        loop.edges = Mender(loop.edges).Mended();
        const Vector2d& reference = m_corners[loop.edges.front().from];
        for (const RegionEdge& edge : loop.edges) {
            loop.area += Cross(m_corners[edge.from] - reference, m_corners[edge.to] - reference) / 2;
        }
        m_loops.push_back(std::move(loop));
    }

    /// The edge that goes on where one ends: of several the one that leaves the region between both in one piece.
    std::size_t Next(const RegionEdge& edge) const {
        auto next = std::lower_bound(m_edges.begin(), m_edges.end(), edge.to,
                                     [](const RegionEdge& e, Index corner) { return e.from < corner; });
        const Vector2d back = -Along(edge);
        std::size_t best = m_edges.size();
        double least = 0;
        for (; next != m_edges.end() && next->from == edge.to; ++next) {
            const double angle = std::atan2(Cross(Along(*next), back), Along(*next).dot(back));
            const double turn = angle > 0 ? angle : angle + 6.283185307179586;
            if (best == m_edges.size() || turn < least) {
                best = static_cast<std::size_t>(next - m_edges.begin());
                least = turn;
            }
        }
        return best;
    }

    void Append(Outline& outline, const Loop& loop) const {
        for (const RegionEdge& edge : loop.edges) {
            outline.push_back({m_corners[edge.from], m_corners[edge.to]});
        }
    }

    /// The smallest outer loop around a hole.
    std::optional<std::size_t> LoopAround(const Loop& hole) const {
        if (m_outerCount == 1) {
            return 0;
        }
        const RegionEdge& edge = hole.edges.front();
        const Vector2d middle = (m_corners[edge.from] + m_corners[edge.to]) / 2;
        std::optional<std::size_t> best;
        for (std::size_t i = 0; i < m_outerCount; ++i) {
            if ((!best || m_loops[i].area < m_loops[*best].area) && IsAround(m_loops[i], middle)) {
                best = i;
            }
        }
        return best;
    }
    bool IsAround(const Loop& loop, const Vector2d& point) const {
        bool isAround = false;
        for (const RegionEdge& edge : loop.edges) {
            const Vector2d from = m_corners[edge.from] - point, to = m_corners[edge.to] - point;
            if ((from.y() > 0) != (to.y() > 0)) {
                isAround = isAround != ((Cross(from, to) > 0) == (to.y() > 0));
            }
        }
        return isAround;
    }

    const std::vector<Vector2d>& m_corners;
    std::vector<RegionEdge> m_edges;
    std::vector<bool> m_taken;
    /// Outer ones first.
    std::vector<Loop> m_loops;
    std::size_t m_outerCount = 0;
};

/// The outlines of the region whose points are inside(in the first polygon, in the second one).
template <class Inside>
std::vector<Outline> RegionOf(const PlaneGraph& graph, const Inside& inside) {
    std::vector<RegionEdge> edges;
    for (const PlaneGraph::GraphEdge& edge : graph.Edges()) {
        const bool left = inside(edge.left[0], edge.left[1]), right = inside(edge.right[0], edge.right[1]);
        if (left && !right) {
            edges.push_back({edge.from, edge.to, edge.sources});
        } else if (right && !left) {
            edges.push_back({edge.to, edge.from, edge.sources});
        }
    }
    return OutlineTracer(graph.Corners(), std::move(edges)).Outlines();
}

/// From the plane coordinates of one polygon to those of another in the same plane, the outline's sense kept.
Outline Between(const Polygon& from, const Polygon& to, Outline outline) {
    const auto converted = [&](const Vector2d& point) {
        const Eigen::Vector3d offset = from.centre - to.centre + point.x() * from.xAxis + point.y() * from.yAxis;
        return Vector2d(offset.dot(to.xAxis), offset.dot(to.yAxis));
    };
    const bool isOpposite = from.normal.dot(to.normal) < 0;
    for (auto& [start, end] : outline) {
        start = converted(start);
        end = converted(end);
        if (isOpposite) {
            std::swap(start, end);
        }
    }
    return outline;
}

Eigen::AlignedBox2d BoundsOf(const Outline& outline) {
    Eigen::AlignedBox2d box;
    for (const PlaneSegment& edge : outline) {
        box.extend(edge.start);
    }
    return box;
}

std::vector<Polygon> PartsOf(const Polygon& polygon, const std::vector<Outline>& outlines) {
    std::vector<Polygon> parts;
    for (const Outline& outline : outlines) {
        if (std::optional<Polygon> part = PartOf(polygon, outline)) {
            parts.push_back(*std::move(part));
        }
    }
    return parts;
}

} // namespace

std::optional<PolygonOverlay> Overlay(const Polygon& first, const Polygon& second, double tolerance) {
    if ((first.centre - second.centre).norm() > first.radius + second.radius + tolerance) {
        return std::nullopt;
    }
    const Outline firstOutline = OutlineOf(first), secondOutline = Between(second, first, OutlineOf(second));
    if (BoundsOf(firstOutline).exteriorDistance(BoundsOf(secondOutline)) > tolerance) {
        return std::nullopt;
    }
    const PlaneGraph graph(firstOutline, secondOutline, tolerance);
    PolygonOverlay overlay;
    overlay.common = PartsOf(first, RegionOf(graph, [](bool a, bool b) { return a && b; }));
    if (overlay.common.empty()) {
        return std::nullopt;
    }
    overlay.onlyFirst = PartsOf(first, RegionOf(graph, [](bool a, bool b) { return a && !b; }));
    std::vector<Outline> onlySecond = RegionOf(graph, [](bool a, bool b) { return b && !a; });
    for (Outline& outline : onlySecond) {
        outline = Between(first, second, std::move(outline));
    }
    overlay.onlySecond = PartsOf(second, onlySecond);
    return overlay;
}

} // namespace vantor::solver
