#include "simulator/solver/Polygon.h"

#include "simulator/geometry/NumberTable.h"

#include <Eigen/Geometry>
#include <algorithm>
#include <cmath>
#include <limits>

namespace vantor::solver {
namespace {

/// How far (radians; fraction of the mesh's size) triangles may lie off a common plane: well above the rounding of
/// double coordinates, far below what a load could show.
constexpr double planeTolerance = 1e-8;
/// Charge below this fraction of the magnetisation is rounding.
constexpr double chargeTolerance = 1e-12;

using geometry::NumberTable;
using Index = NumberTable::Number;
constexpr Index none = NumberTable::none;

/// For each vertex the first one at the same position.
std::vector<Index> WeldCorners(const std::vector<Eigen::Vector3d>& vertices) {
    NumberTable table(vertices.size());
    std::vector<Index> welded(vertices.size());
    for (Index i = 0; i < vertices.size(); ++i) {
        Index& first = table.At(geometry::HashOf(geometry::BitsOf(vertices[i])),
                                [&](Index other) { return vertices[other] == vertices[i]; });
        first = std::min(first, i);
        welded[i] = first;
    }
    return welded;
}

struct Facet {
    std::array<Index, 3> corners{};
    Eigen::Vector3d normal;
    double area = 0;
};

/// The mesh's triangles that have an area and a normal for which keep(normal) is true.
template <class Keep>
std::vector<Facet> FacetsOf(const TriangleMesh& mesh, const Keep& keep) {
    const std::vector<Index> welded = WeldCorners(mesh.vertices);
    std::vector<Facet> facets;
    facets.reserve(mesh.triangles.size());
    for (const auto& triangle : mesh.triangles) {
        Facet facet;
        for (std::size_t i = 0; i < 3; ++i) {
            facet.corners[i] = welded[static_cast<std::size_t>(triangle[i])];
        }
        const Eigen::Vector3d& a = mesh.vertices[facet.corners[0]];
        const Eigen::Vector3d doubleArea =
            (mesh.vertices[facet.corners[1]] - a).cross(mesh.vertices[facet.corners[2]] - a);
        facet.area = doubleArea.norm() / 2;
        if (!(facet.area > 0)) {
            continue;
        }
        facet.normal = doubleArea / (2 * facet.area);
        if (keep(facet.normal)) {
            facets.push_back(facet);
        }
    }
    // Large facets first: they know their plane best, so the small ones are measured against them.
    std::stable_sort(facets.begin(), facets.end(), [](const Facet& a, const Facet& b) { return a.area > b.area; });
    return facets;
}

/// The facets' edges by their ends. Edge 3 f + j runs from corner j of facet f to the next one. In a proper mesh every
/// edge has one that runs the other way; any number is allowed.
class FacetEdges {
    auto Runs(Index from, Index to) const {
        return [this, from, to](Index edge) { return From(edge) == from && To(edge) == to; };
    }

public:
    explicit FacetEdges(const std::vector<Facet>& facets)
        : m_facets(facets), m_firstAlike(3 * facets.size()), m_nextAlike(3 * facets.size(), none),
          m_firstOpposite(3 * facets.size()) {
        const auto count = static_cast<Index>(3 * facets.size());
        NumberTable table(count);
        std::vector<Index> lastAlike(count);
        for (Index edge = 0; edge < count; ++edge) {
            Index& first = table.At(geometry::HashOf(From(edge), To(edge)), Runs(From(edge), To(edge)));
            first = std::min(first, edge);
            m_firstAlike[edge] = first;
            if (first != edge) {
                m_nextAlike[lastAlike[first]] = edge;
            }
            lastAlike[first] = edge;
        }
        for (Index edge = 0; edge < count; ++edge) {
            m_firstOpposite[edge] = table.At(geometry::HashOf(To(edge), From(edge)), Runs(To(edge), From(edge)));
        }
    }
    Index From(Index edge) const { return m_facets[edge / 3].corners[edge % 3]; }
    Index To(Index edge) const { return m_facets[edge / 3].corners[(edge + 1) % 3]; }
    /// The first edge with the same ends, perhaps the edge itself; the others follow by Next.
    Index FirstAlike(Index edge) const { return m_firstAlike[edge]; }
    /// The first edge that runs the other way, or none; the others follow by Next.
    Index FirstOpposite(Index edge) const { return m_firstOpposite[edge]; }
    Index Next(Index edge) const { return m_nextAlike[edge]; }

private:
    const std::vector<Facet>& m_facets;
    std::vector<Index> m_firstAlike, m_nextAlike, m_firstOpposite;
};

double SizeOf(const std::vector<Eigen::Vector3d>& vertices) {
    Eigen::Vector3d low = vertices.front(), high = vertices.front();
    for (const Eigen::Vector3d& vertex : vertices) {
        low = low.cwiseMin(vertex);
        high = high.cwiseMax(vertex);
    }
    return (high - low).norm();
}

/// Facets of one group, the largest one first.
class Group {
public:
    Group(const Index* first, const Index* last) : m_first(first), m_last(last) {}
    const Index* begin() const { return m_first; }
    const Index* end() const { return m_last; }
    Index Largest() const { return *m_first; }

private:
    const Index *m_first, *m_last;
};

/// Splits the facets into flat, connected groups.
class FlatGroups {
public:
    FlatGroups(const std::vector<Eigen::Vector3d>& vertices, const std::vector<Facet>& facets, const FacetEdges& edges)
        : m_vertices(vertices), m_facets(facets), m_edges(edges), m_groupOf(facets.size(), none),
          m_distanceTolerance(planeTolerance * SizeOf(vertices)) {
        m_members.reserve(facets.size());
        for (Index i = 0; i < facets.size(); ++i) {
            if (m_groupOf[i] == none) {
                m_starts.push_back(m_members.size());
                GrowFrom(i);
            }
        }
        m_starts.push_back(m_members.size());
    }
    std::size_t Count() const { return m_starts.size() - 1; }
    Group At(std::size_t group) const {
        return {m_members.data() + m_starts[group], m_members.data() + m_starts[group + 1]};
    }
    Index GroupOf(Index facet) const { return m_groupOf[facet]; }

private:
    void GrowFrom(Index seed) {
        const auto group = static_cast<Index>(m_starts.size() - 1);
        std::size_t next = m_members.size();
        Take(seed, group);
        for (; next < m_members.size(); ++next) {
            const Index firstEdge = 3 * m_members[next];
            for (Index edge = firstEdge; edge < firstEdge + 3; ++edge) {
                for (Index other = m_edges.FirstOpposite(edge); other != none; other = m_edges.Next(other)) {
                    if (m_groupOf[other / 3] == none && InPlaneOf(m_facets[seed], m_facets[other / 3])) {
                        Take(other / 3, group);
                    }
                }
            }
        }
    }
    void Take(Index facet, Index group) {
        m_groupOf[facet] = group;
        m_members.push_back(facet);
    }
    bool InPlaneOf(const Facet& seed, const Facet& facet) const {
        if (seed.normal.dot(facet.normal) <= 0 ||
            seed.normal.cross(facet.normal).squaredNorm() > planeTolerance * planeTolerance) {
            return false;
        }
        return std::all_of(facet.corners.begin(), facet.corners.end(), [&](Index corner) {
            const Eigen::Vector3d offset = m_vertices[corner] - m_vertices[seed.corners[0]];
            return std::abs(offset.dot(seed.normal)) <= m_distanceTolerance;
        });
    }

    const std::vector<Eigen::Vector3d>& m_vertices;
    const std::vector<Facet>& m_facets;
    const FacetEdges& m_edges;
    std::vector<Index> m_groupOf;
    double m_distanceTolerance;
    /// Group after group; group g starts at m_starts[g].
    std::vector<Index> m_members;
    std::vector<std::size_t> m_starts;
};

struct DirectedEdge {
    Index from, to;
};

/// Finds the outlines of groups, one after the other.
class OutlineFinder {
public:
    OutlineFinder(const std::vector<Eigen::Vector3d>& vertices, const FacetEdges& edges, const FlatGroups& groups)
        : m_vertices(vertices), m_edges(edges), m_groups(groups), m_ends(vertices.size()) {}

    /// The directed edges that no other facet of the group runs along the other way, in straight lines. Valid until the
    /// next call.
    const std::vector<DirectedEdge>& Outline(std::size_t group) {
        m_outline.clear();
        for (const Index facet : m_groups.At(group)) {
            for (Index edge = 3 * facet; edge < 3 * facet + 3; ++edge) {
                if (IsOnOutline(edge)) {
                    m_outline.push_back({m_edges.From(edge), m_edges.To(edge)});
                }
            }
        }
        JoinStraight();
        return m_outline;
    }

private:
    /// What a corner of an outline has: how many edges leave and arrive, and the last one of each.
    struct Ends {
        Index leaving = 0, arriving = 0, leavingEdge = none, arrivingEdge = none;
    };

    bool IsOnOutline(Index edge) const {
        const Index group = m_groups.GroupOf(edge / 3);
        std::size_t opposite = 0, before = 0;
        for (Index other = m_edges.FirstOpposite(edge); other != none; other = m_edges.Next(other)) {
            opposite += m_groups.GroupOf(other / 3) == group ? 1 : 0;
        }
        if (opposite == 0) {
            return true;
        }
        // Each opposite edge takes away one of those alike.
        for (Index other = m_edges.FirstAlike(edge); other != edge; other = m_edges.Next(other)) {
            before += m_groups.GroupOf(other / 3) == group ? 1 : 0;
        }
        return before >= opposite;
    }

    /// Joins edges that continue each other in a straight line, where the corner between them belongs to no other edge.
    void JoinStraight() {
        for (Index i = 0; i < m_outline.size(); ++i) {
            Ends& start = m_ends[m_outline[i].from];
            ++start.leaving;
            start.leavingEdge = i;
            Ends& end = m_ends[m_outline[i].to];
            ++end.arriving;
            end.arrivingEdge = i;
        }
        m_corners.clear();
        for (const DirectedEdge& edge : m_outline) {
            m_corners.push_back(edge.from);
        }
        for (const Index corner : m_corners) {
            JoinAt(corner, m_ends[corner]);
            m_ends[corner] = {};
        }
        m_outline.erase(std::remove_if(m_outline.begin(), m_outline.end(),
                                       [](const DirectedEdge& edge) { return edge.from == none; }),
                        m_outline.end());
    }
    void JoinAt(Index corner, const Ends& ends) {
        if (ends.leaving != 1 || ends.arriving != 1 || ends.leavingEdge == ends.arrivingEdge) {
            return;
        }
        DirectedEdge& in = m_outline[ends.arrivingEdge];
        DirectedEdge& out = m_outline[ends.leavingEdge];
        const Eigen::Vector3d before = m_vertices[corner] - m_vertices[in.from];
        const Eigen::Vector3d after = m_vertices[out.to] - m_vertices[corner];
        const double tolerance = planeTolerance * planeTolerance * before.squaredNorm() * after.squaredNorm();
        if (before.dot(after) <= 0 || before.cross(after).squaredNorm() > tolerance) {
            return;
        }
        in.to = out.to;
        out.from = none;
        m_ends[in.to].arrivingEdge = ends.arrivingEdge;
    }

    const std::vector<Eigen::Vector3d>& m_vertices;
    const FacetEdges& m_edges;
    const FlatGroups& m_groups;
    /// By corner; empty between the calls.
    std::vector<Ends> m_ends;
    std::vector<DirectedEdge> m_outline;
    std::vector<Index> m_corners;
};

void SetPlane(Polygon& polygon, const std::vector<Eigen::Vector3d>& vertices, const std::vector<Facet>& facets,
              const Group& group) {
    Eigen::Vector3d normal = Eigen::Vector3d::Zero(), moment = Eigen::Vector3d::Zero();
    const Facet& largest = facets[group.Largest()];
    const Eigen::Vector3d& reference = vertices[largest.corners[0]];
    for (const Index index : group) {
        const Facet& facet = facets[index];
        normal += facet.area * facet.normal;
        polygon.area += facet.area;
        for (const Index corner : facet.corners) {
            moment += facet.area / 3 * (vertices[corner] - reference);
        }
    }
    polygon.normal = normal.normalized();
    polygon.centre = reference + moment / polygon.area;
    const Eigen::Vector3d along = vertices[largest.corners[1]] - vertices[largest.corners[0]];
    polygon.xAxis = (along - along.dot(polygon.normal) * polygon.normal).normalized();
    polygon.yAxis = polygon.normal.cross(polygon.xAxis);
}

Eigen::Vector2d InPlane(const Polygon& polygon, const Eigen::Vector3d& point) {
    const Eigen::Vector3d offset = point - polygon.centre;
    return {offset.dot(polygon.xAxis), offset.dot(polygon.yAxis)};
}

Eigen::Vector3d DirectionInSpace(const Polygon& polygon, const Eigen::Vector2d& v) {
    return v.x() * polygon.xAxis + v.y() * polygon.yAxis;
}

/// The flat, connected groups of a mesh's facets, each as one polygon.
std::vector<Polygon> PolygonsOf(const TriangleMesh& mesh, const std::vector<Facet>& facets) {
    if (facets.empty()) {
        return {};
    }
    const FacetEdges edges(facets);
    const FlatGroups groups(mesh.vertices, facets, edges);
    OutlineFinder outlines(mesh.vertices, edges, groups);
    std::vector<Polygon> polygons(groups.Count());
    std::vector<PlaneSegment> segments;
    for (std::size_t i = 0; i < polygons.size(); ++i) {
        Polygon& polygon = polygons[i];
        SetPlane(polygon, mesh.vertices, facets, groups.At(i));
        segments.clear();
        for (const auto& [from, to] : outlines.Outline(i)) {
            segments.push_back({InPlane(polygon, mesh.vertices[from]), InPlane(polygon, mesh.vertices[to])});
        }
        SetOutline(polygon, segments);
    }
    return polygons;
}

} // namespace

void SetOutline(Polygon& polygon, const std::vector<PlaneSegment>& outline) {
    polygon.planeEdges.reserve(outline.size());
    polygon.edges.reserve(outline.size());
    for (const auto& [start, end] : outline) {
        const double length = (end - start).norm();
        if (!(length > 0)) {
            continue;
        }
        const Eigen::Vector2d along = (end - start) / length;
        polygon.radius = std::max(polygon.radius, start.norm());
        polygon.planeEdges.push_back({start.x(), start.y(), along.x(), along.y(), length});
        polygon.edges.push_back({polygon.centre + DirectionInSpace(polygon, start), DirectionInSpace(polygon, along),
                                 DirectionInSpace(polygon, {along.y(), -along.x()}), length});
    }
}

std::vector<Polygon> PolygonsOf(const TriangleMesh& mesh) {
    return PolygonsOf(mesh, FacetsOf(mesh, [](const Eigen::Vector3d&) { return true; }));
}

double DistanceFrom(const Polygon& polygon, const Eigen::Vector3d& point) {
    const Eigen::Vector3d offset = point - polygon.centre;
    const double x = offset.dot(polygon.xAxis), y = offset.dot(polygon.yAxis), height = offset.dot(polygon.normal);
    double nearest = std::numeric_limits<double>::infinity();
    bool isOver = false;
    for (const PlaneEdge& edge : polygon.planeEdges) {
        const double dx = x - edge.x, dy = y - edge.y;
        const double along = std::clamp(dx * edge.tx + dy * edge.ty, 0.0, edge.length);
        const double awayX = dx - along * edge.tx, awayY = dy - along * edge.ty;
        nearest = std::min(nearest, awayX * awayX + awayY * awayY);
        // Edges that a ray along x crosses: an odd number of them is what tells the inside.
        const double endY = edge.y + edge.length * edge.ty;
        if ((edge.y > y) != (endY > y) && edge.x + (y - edge.y) * edge.tx / edge.ty > x) {
            isOver = !isOver;
        }
    }
    return std::sqrt((isOver ? 0 : nearest) + height * height);
}

std::vector<Polygon> ChargedPolygons(const TriangleMesh& mesh, const Eigen::Vector3d& magnetisation) {
    const double leastCharge = chargeTolerance * magnetisation.stableNorm();
    return PolygonsOf(mesh, FacetsOf(mesh, [&](const Eigen::Vector3d& normal) {
                          return std::abs(normal.dot(magnetisation)) > leastCharge;
                      }));
}

} // namespace vantor::solver
