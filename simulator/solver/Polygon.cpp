#include "simulator/solver/Polygon.h"

#include <Eigen/Eigenvalues>
#include <Eigen/Geometry>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <numeric>

namespace vantor::solver {
namespace {

/// How far (radians; fraction of the mesh's size) triangles may lie off a common plane: well above the rounding of
/// double coordinates, far below what a load could show.
constexpr double planeTolerance = 1e-8;
/// Charge below this fraction of the magnetisation is rounding.
constexpr double chargeTolerance = 1e-12;

using Corner = std::size_t;
using DirectedEdge = std::pair<Corner, Corner>;

struct Facet {
    std::array<Corner, 3> corners{};
    Eigen::Vector3d normal;
    double area = 0;
};

bool LexicographicallyLess(const Eigen::Vector3d& a, const Eigen::Vector3d& b) {
    return std::lexicographical_compare(a.data(), a.data() + 3, b.data(), b.data() + 3);
}

/// For each vertex the first one at the same position.
std::vector<Corner> WeldCorners(const std::vector<Eigen::Vector3d>& vertices) {
    std::vector<Corner> order(vertices.size());
    std::iota(order.begin(), order.end(), Corner{0});
    std::sort(order.begin(), order.end(), [&](Corner a, Corner b) {
        if (vertices[a] == vertices[b]) {
            return a < b;
        }
        return LexicographicallyLess(vertices[a], vertices[b]);
    });
    std::vector<Corner> welded(vertices.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        const bool same = i > 0 && vertices[order[i]] == vertices[order[i - 1]];
        welded[order[i]] = same ? welded[order[i - 1]] : order[i];
    }
    return welded;
}

std::vector<Facet> ChargedFacets(const TriangleMesh& mesh, const Eigen::Vector3d& magnetisation) {
    const std::vector<Corner> welded = WeldCorners(mesh.vertices);
    std::vector<Facet> facets;
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
        if (std::abs(facet.normal.dot(magnetisation)) > chargeTolerance * magnetisation.stableNorm()) {
            facets.push_back(facet);
        }
    }
    // Large facets first: they know their plane best, so the small ones are measured against them.
    std::stable_sort(facets.begin(), facets.end(), [](const Facet& a, const Facet& b) { return a.area > b.area; });
    return facets;
}

double SizeOf(const std::vector<Eigen::Vector3d>& vertices) {
    Eigen::Vector3d low = vertices.front(), high = vertices.front();
    for (const Eigen::Vector3d& vertex : vertices) {
        low = low.cwiseMin(vertex);
        high = high.cwiseMax(vertex);
    }
    return (high - low).norm();
}

/// Splits the facets into flat, connected groups.
class FlatGroups {
public:
    FlatGroups(const std::vector<Eigen::Vector3d>& vertices, const std::vector<Facet>& facets)
        : m_vertices(vertices), m_facets(facets), m_taken(facets.size(), false),
          m_distanceTolerance(planeTolerance * SizeOf(vertices)) {
        for (std::size_t i = 0; i < facets.size(); ++i) {
            for (std::size_t j = 0; j < 3; ++j) {
                m_facetAt.emplace(DirectedEdge{facets[i].corners[j], facets[i].corners[(j + 1) % 3]}, i);
            }
        }
        for (std::size_t i = 0; i < facets.size(); ++i) {
            if (!m_taken[i]) {
                m_groups.push_back(GrowFrom(i));
            }
        }
    }
    const std::vector<std::vector<std::size_t>>& Groups() const { return m_groups; }

private:
    std::vector<std::size_t> GrowFrom(std::size_t seed) {
        std::vector<std::size_t> group{seed};
        m_taken[seed] = true;
        for (std::size_t next = 0; next < group.size(); ++next) {
            const auto corners = m_facets[group[next]].corners;
            for (std::size_t j = 0; j < 3; ++j) {
                const auto [first, last] = m_facetAt.equal_range({corners[(j + 1) % 3], corners[j]});
                for (auto neighbour = first; neighbour != last; ++neighbour) {
                    if (!m_taken[neighbour->second] && InPlaneOf(m_facets[seed], m_facets[neighbour->second])) {
                        m_taken[neighbour->second] = true;
                        group.push_back(neighbour->second);
                    }
                }
            }
        }
        return group;
    }
    bool InPlaneOf(const Facet& seed, const Facet& facet) const {
        if (seed.normal.dot(facet.normal) <= 0 || seed.normal.cross(facet.normal).norm() > planeTolerance) {
            return false;
        }
        return std::all_of(facet.corners.begin(), facet.corners.end(), [&](Corner corner) {
            const Eigen::Vector3d offset = m_vertices[corner] - m_vertices[seed.corners[0]];
            return std::abs(offset.dot(seed.normal)) <= m_distanceTolerance;
        });
    }

    const std::vector<Eigen::Vector3d>& m_vertices;
    const std::vector<Facet>& m_facets;
    std::vector<bool> m_taken;
    double m_distanceTolerance;
    std::multimap<DirectedEdge, std::size_t> m_facetAt;
    std::vector<std::vector<std::size_t>> m_groups;
};

/// The directed edges that no other facet of the group runs along the other way.
std::vector<DirectedEdge> Outline(const std::vector<Facet>& facets, const std::vector<std::size_t>& group) {
    std::map<DirectedEdge, int> count;
    for (const std::size_t index : group) {
        for (std::size_t j = 0; j < 3; ++j) {
            const Corner from = facets[index].corners[j], to = facets[index].corners[(j + 1) % 3];
            const auto opposite = count.find({to, from});
            if (opposite != count.end() && opposite->second > 0) {
                --opposite->second;
            } else {
                ++count[{from, to}];
            }
        }
    }
    std::vector<DirectedEdge> outline;
    for (const auto& [edge, times] : count) {
        outline.insert(outline.end(), static_cast<std::size_t>(times), edge);
    }
    return outline;
}

/// Joins edges that continue each other in a straight line, where the corner between them belongs to no other edge.
std::vector<DirectedEdge> JoinStraight(const std::vector<Eigen::Vector3d>& vertices,
                                       std::vector<DirectedEdge> outline) {
    std::map<Corner, std::vector<std::size_t>> leaving, arriving;
    for (std::size_t i = 0; i < outline.size(); ++i) {
        leaving[outline[i].first].push_back(i);
        arriving[outline[i].second].push_back(i);
    }
    std::vector<bool> gone(outline.size(), false);
    for (auto& [corner, out] : leaving) {
        auto& in = arriving[corner];
        if (out.size() != 1 || in.size() != 1 || in[0] == out[0]) {
            continue;
        }
        const Eigen::Vector3d before = vertices[corner] - vertices[outline[in[0]].first];
        const Eigen::Vector3d after = vertices[outline[out[0]].second] - vertices[corner];
        const double lengths = before.norm() * after.norm();
        if (before.dot(after) <= 0 || before.cross(after).norm() > planeTolerance * lengths) {
            continue;
        }
        outline[in[0]].second = outline[out[0]].second;
        gone[out[0]] = true;
        auto& atEnd = arriving[outline[in[0]].second];
        std::replace(atEnd.begin(), atEnd.end(), out[0], in[0]);
    }
    std::vector<DirectedEdge> joined;
    for (std::size_t i = 0; i < outline.size(); ++i) {
        if (!gone[i]) {
            joined.push_back(outline[i]);
        }
    }
    return joined;
}

void SetPlane(Polygon& polygon, const std::vector<Eigen::Vector3d>& vertices, const std::vector<Facet>& facets,
              const std::vector<std::size_t>& group) {
    Eigen::Vector3d normal = Eigen::Vector3d::Zero(), moment = Eigen::Vector3d::Zero();
    const Eigen::Vector3d& reference = vertices[facets[group[0]].corners[0]];
    for (const std::size_t index : group) {
        const Facet& facet = facets[index];
        normal += facet.area * facet.normal;
        polygon.area += facet.area;
        for (const Corner corner : facet.corners) {
            moment += facet.area / 3 * (vertices[corner] - reference);
        }
    }
    polygon.normal = normal.normalized();
    polygon.centre = reference + moment / polygon.area;
    const Facet& largest = facets[group[0]];
    const Eigen::Vector3d along = vertices[largest.corners[1]] - vertices[largest.corners[0]];
    polygon.xAxis = (along - along.dot(polygon.normal) * polygon.normal).normalized();
    polygon.yAxis = polygon.normal.cross(polygon.xAxis);
}

Eigen::Vector2d InPlane(const Polygon& polygon, const Eigen::Vector3d& point) {
    const Eigen::Vector3d offset = point - polygon.centre;
    return {offset.dot(polygon.xAxis), offset.dot(polygon.yAxis)};
}

Eigen::Vector3d InSpace(const Polygon& polygon, const Eigen::Vector2d& v) {
    return v.x() * polygon.xAxis + v.y() * polygon.yAxis;
}

std::vector<PlaneSegment> InPlane(const Polygon& polygon, const std::vector<Eigen::Vector3d>& vertices,
                                  const std::vector<DirectedEdge>& outline) {
    std::vector<PlaneSegment> result;
    result.reserve(outline.size());
    for (const auto& [from, to] : outline) {
        result.push_back({InPlane(polygon, vertices[from]), InPlane(polygon, vertices[to])});
    }
    return result;
}

Eigen::Matrix2d SecondMoments(const Polygon& polygon, const std::vector<Eigen::Vector3d>& vertices,
                              const std::vector<Facet>& facets, const std::vector<std::size_t>& group) {
    Eigen::Matrix2d moments = Eigen::Matrix2d::Zero();
    for (const std::size_t index : group) {
        Eigen::Vector2d sum = Eigen::Vector2d::Zero();
        Eigen::Matrix2d squares = Eigen::Matrix2d::Zero();
        for (const Corner corner : facets[index].corners) {
            const Eigen::Vector2d v = InPlane(polygon, vertices[corner]);
            sum += v;
            squares += v * v.transpose();
        }
        moments += facets[index].area / 12 * (squares + sum * sum.transpose());
    }
    return moments;
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
        polygon.edges.push_back({polygon.centre + InSpace(polygon, start), InSpace(polygon, along),
                                 InSpace(polygon, {along.y(), -along.x()}), length});
    }
}

void SetMassPoints(Polygon& polygon, const Eigen::Matrix2d& moments) {
    const Eigen::SelfAdjointEigenSolver<Eigen::Matrix2d> principal(moments / polygon.area);
    for (int i = 0; i < 2; ++i) {
        const double reach = std::sqrt(2 * std::max(0.0, principal.eigenvalues()[i]));
        const Eigen::Vector3d offset = InSpace(polygon, reach * principal.eigenvectors().col(i));
        const std::size_t index = 2 * static_cast<std::size_t>(i);
        polygon.massPoints[index] = polygon.centre + offset;
        polygon.massPoints[index + 1] = polygon.centre - offset;
    }
}

std::vector<Polygon> ChargedPolygons(const TriangleMesh& mesh, const Eigen::Vector3d& magnetisation) {
    const std::vector<Facet> facets = ChargedFacets(mesh, magnetisation);
    if (facets.empty()) {
        return {};
    }
    std::vector<Polygon> polygons;
    const FlatGroups groups(mesh.vertices, facets);
    for (const std::vector<std::size_t>& group : groups.Groups()) {
        Polygon polygon;
        SetPlane(polygon, mesh.vertices, facets, group);
        SetOutline(polygon, InPlane(polygon, mesh.vertices, JoinStraight(mesh.vertices, Outline(facets, group))));
        SetMassPoints(polygon, SecondMoments(polygon, mesh.vertices, facets, group));
        polygons.push_back(std::move(polygon));
    }
    return polygons;
}

} // namespace vantor::solver
