#include "simulator/solver/SolidOverlap.h"

#include "simulator/solver/IntervalSweep.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vantor::solver {
namespace {

using Eigen::Vector3d;
using Face = FacedSolid::Face;

/// How deep, in tolerances, solids must lie in one another to be taken for overlapping.
constexpr double deepTolerances = 2;

/// Where a line at that height of a polygon's plane coordinates runs through the outline, ascending.
std::vector<double> CrossingsAt(const Polygon& polygon, double y) {
    std::vector<double> crossings;
    for (const PlaneEdge& edge : polygon.planeEdges) {
        const double start = edge.y - y, end = start + edge.length * edge.ty;
        if ((start < 0) != (end < 0)) {
            crossings.push_back(edge.x - start / edge.ty * edge.tx);
        }
    }
    std::sort(crossings.begin(), crossings.end());
    return crossings;
}

/// The middle of the widest gap between ascending values; of every `step`-th gap.
double MiddleOfWidestGap(const std::vector<double>& values, std::size_t step) {
    double middle = 0, widest = 0;
    for (std::size_t i = 1; i < values.size(); i += step) {
        const double gap = values[i] - values[i - 1];
        if (gap > widest) {
            widest = gap;
            middle = values[i - 1] + gap / 2;
        }
    }
    return middle;
}

/// A point inside of a polygon, far from its outline as such points go.
Vector3d InnerPoint(const Polygon& polygon) {
    std::vector<double> heights;
    for (const PlaneEdge& edge : polygon.planeEdges) {
        heights.push_back(edge.y);
    }
    std::sort(heights.begin(), heights.end());
    const double y = MiddleOfWidestGap(heights, 1);
    const double x = MiddleOfWidestGap(CrossingsAt(polygon, y), 2);
    return polygon.centre + x * polygon.xAxis + y * polygon.yAxis;
}

double DistanceFromOutline(const Polygon& polygon, const Vector3d& point) {
    double least = std::numeric_limits<double>::infinity();
    for (const Edge& edge : polygon.edges) {
        const double along = std::clamp((point - edge.start).dot(edge.direction), 0.0, edge.length);
        least = std::min(least, (point - edge.At(along)).norm());
    }
    return least;
}

/// Whether a polygon is nowhere wider than that.
bool IsNarrow(const Polygon& polygon, double width) {
    double outline = 0;
    for (const Edge& edge : polygon.edges) {
        outline += edge.length;
    }
    return 2 * polygon.area <= width * outline;
}

/// The line that two planes have in common, and where it runs through a polygon of each.
class CommonLine {
public:
    /// @pre the planes are not parallel
    CommonLine(const Polygon& a, const Polygon& b) : m_a(a), m_b(b), m_along(a.normal.cross(b.normal).normalized()) {}

    /// Whether it runs through the inside of both polygons at one place, farther than `margin` from both outlines.
    bool RunsThroughBoth(double margin) {
        const std::vector<double> a = CrossingsOf(m_a, m_b), b = CrossingsOf(m_b, m_a);
        for (std::size_t i = 1; i < a.size(); i += 2) {
            for (std::size_t j = 1; j < b.size(); j += 2) {
                const double first = std::max(a[i - 1], b[j - 1]), last = std::min(a[i], b[j]);
                if (last - first > 2 * margin && IsDeep(first, last, margin)) {
                    return true;
                }
            }
        }
        return false;
    }

private:
    /// Where the outline of a polygon crosses the other one's plane, ascending along the line.
    std::vector<double> CrossingsOf(const Polygon& polygon, const Polygon& other) {
        std::vector<double> crossings;
        for (const Edge& edge : polygon.edges) {
            const double start = (edge.start - other.centre).dot(other.normal);
            const double end = start + edge.length * edge.direction.dot(other.normal);
            if ((start < 0) != (end < 0)) {
                m_point = edge.At(start / (start - end) * edge.length);
                crossings.push_back((m_point - m_a.centre).dot(m_along));
            }
        }
        std::sort(crossings.begin(), crossings.end());
        return crossings;
    }
    /// Whether one of some points between both places keeps away from the outlines.
    bool IsDeep(double first, double last, double margin) const {
        for (const double share : {0.5, 0.25, 0.75}) {
            const double at = first + share * (last - first);
            const Vector3d point = m_point + (at - (m_point - m_a.centre).dot(m_along)) * m_along;
            if (DistanceFromOutline(m_a, point) > margin && DistanceFromOutline(m_b, point) > margin) {
                return true;
            }
        }
        return false;
    }

    const Polygon &m_a, &m_b;
    Vector3d m_along;
    /// A point of the line.
    Vector3d m_point = Vector3d::Zero();
};

/// Whether a polygon reaches farther than `margin` to both sides of another one's plane.
bool Straddles(const Polygon& polygon, const Polygon& other, double margin) {
    double lowest = 0, highest = 0;
    for (const Edge& edge : polygon.edges) {
        const double height = (edge.start - other.centre).dot(other.normal);
        lowest = std::min(lowest, height);
        highest = std::max(highest, height);
    }
    return lowest < -margin && highest > margin;
}

bool CutEachOther(const Polygon& a, const Polygon& b, double margin) {
    const Polygon &simpler = a.edges.size() < b.edges.size() ? a : b, &other = a.edges.size() < b.edges.size() ? b : a;
    return Straddles(simpler, other, margin) && Straddles(other, simpler, margin) &&
           CommonLine(a, b).RunsThroughBoth(margin);
}

/// Finds out which of many points a closed surface holds: those that a ray leaves it from.
class RayCaster {
public:
    explicit RayCaster(const std::vector<Face>& faces) : m_faces(faces) {}

    /// The points inside. Where the ray hits an edge the answer may be wrong.
    std::vector<Vector3d> PointsInside(const std::vector<Vector3d>& points) const {
        std::vector<Interval> faceExtents, pointExtents;
        for (const Face& face : m_faces) {
            const double middle = face.whole.centre.dot(m_across), radius = face.whole.radius;
            faceExtents.push_back({middle - radius, middle + radius});
        }
        for (const Vector3d& point : points) {
            pointExtents.push_back({point.dot(m_across), point.dot(m_across)});
        }
        std::vector<bool> isInside(points.size(), false);
        ForOverlapping(pointExtents, faceExtents, [&](std::size_t point, std::size_t face) {
            if (Hits(points[point], m_faces[face].whole)) {
                isInside[point] = !isInside[point];
            }
        });
        std::vector<Vector3d> inside;
        for (std::size_t i = 0; i < points.size(); ++i) {
            if (isInside[i]) {
                inside.push_back(points[i]);
            }
        }
        return inside;
    }

private:
    bool Hits(const Vector3d& point, const Polygon& polygon) const {
        const Vector3d offset = point - polygon.centre;
        const double distance = -offset.dot(polygon.normal) / m_ray.dot(polygon.normal);
        if (!(distance > 0)) {
            return false;
        }
        const Vector3d hit = offset + distance * m_ray;
        if (hit.squaredNorm() > polygon.radius * polygon.radius) {
            return false;
        }
        const double x = hit.dot(polygon.xAxis);
        const std::vector<double> crossings = CrossingsAt(polygon, hit.dot(polygon.yAxis));
        return (std::upper_bound(crossings.begin(), crossings.end(), x) - crossings.begin()) % 2 == 1;
    }

    const std::vector<Face>& m_faces;
    /// Directions that few edges and faces run along.
    Vector3d m_ray = Vector3d(0.3141592653589793, 0.2718281828459045, 0.5772156649015329).normalized();
    Vector3d m_across = m_ray.unitOrthogonal();
};

class OverlapFinder {
public:
    explicit OverlapFinder(const SolidPair& pair)
        : m_pair(pair), m_deep(deepTolerances * ContactTolerance(pair.first, pair.second)),
          m_common(pair.first.Box().intersection(pair.second.Box())) {}

    bool Found() const {
        if (m_common.isEmpty() || m_common.sizes().minCoeff() <= m_deep) {
            return false;
        }
        if (!SurfacesMeet()) {
            return Holds(m_pair.first, PointOf(m_pair.second)) || Holds(m_pair.second, PointOf(m_pair.first));
        }
        return FacesCut() || IsInside(m_pair.first, m_pair.second, m_pair.secondIndex) ||
               IsInside(m_pair.second, m_pair.first, m_pair.firstIndex);
    }

private:
    bool SurfacesMeet() const {
        return Meet(m_pair.first.Surface(), m_pair.first.Pose(), m_pair.second.Surface(), m_pair.second.Pose(), m_deep);
    }
    static Vector3d PointOf(const FacedSolid& solid) { return solid.Pose() * solid.Surface().Point(); }
    static bool Holds(const FacedSolid& solid, const Vector3d& point) {
        return solid.Box().contains(point) && Contains(solid.Surface(), solid.Pose(), point);
    }

    std::vector<const Face*> FacesInCommonBox(const FacedSolid& solid) const {
        std::vector<const Face*> faces;
        for (const Face& face : solid.Faces()) {
            if (face.box.intersects(m_common)) {
                faces.push_back(&face);
            }
        }
        return faces;
    }
    static std::vector<Interval> Extents(const std::vector<const Face*>& faces, Eigen::Index axis) {
        std::vector<Interval> extents(faces.size());
        std::transform(faces.begin(), faces.end(), extents.begin(),
                       [axis](const Face* face) { return Interval(face->box.min()[axis], face->box.max()[axis]); });
        return extents;
    }

    /// Faces of both cut each other.
    bool FacesCut() const {
        Eigen::Index axis = 0;
        m_common.sizes().maxCoeff(&axis);
        const std::vector<const Face*> first = FacesInCommonBox(m_pair.first);
        const std::vector<const Face*> second = FacesInCommonBox(m_pair.second);
        bool cut = false;
        ForOverlapping(Extents(first, axis), Extents(second, axis), [&](std::size_t i, std::size_t j) {
            cut = cut ||
                  (first[i]->box.intersects(second[j]->box) && CutEachOther(first[i]->whole, second[j]->whole, m_deep));
        });
        return cut;
    }

    /// A place of one solid, just behind one of its faces, lies inside the other.
    bool IsInside(const FacedSolid& solid, const FacedSolid& other, std::size_t otherIndex) const {
        std::vector<Vector3d> points;
        const auto add = [&](const Face& face, const Polygon& part) {
            const Vector3d point = InnerPoint(part) - m_deep * face.whole.normal;
            if (m_common.contains(point) && !IsNarrow(part, m_deep)) {
                points.push_back(point);
            }
        };
        for (const Face& face : solid.Faces()) {
            for (const Polygon& part : face.air) {
                add(face, part);
            }
            for (const auto& [part, touched] : face.contacts) {
                if (touched != otherIndex) {
                    add(face, part);
                }
            }
        }
        const std::vector<Vector3d> suspects = RayCaster(other.Faces()).PointsInside(points);
        return std::any_of(suspects.begin(), suspects.end(),
                           [&](const Vector3d& point) { return Holds(other, point) && Holds(solid, point); });
    }

    const SolidPair& m_pair;
    double m_deep;
    Eigen::AlignedBox3d m_common;
};

} // namespace

bool Overlap(const SolidPair& pair) {
    return OverlapFinder(pair).Found();
}

} // namespace vantor::solver
