#include "simulator/solver/SolidContact.h"

#include "simulator/solver/IntervalSweep.h"
#include "simulator/solver/PolygonOverlay.h"

#include <algorithm>
#include <cmath>

namespace vantor::solver {
namespace {

using Eigen::Vector3d;
using Face = FacedSolid::Face;

/// How deep, in tolerances, solids must lie in one another to be taken for overlapping.
constexpr double deepTolerances = 4;

/// Calls visit(face of the first solid, face of the second) for those in one plane with normals opposite (sense -1) or
/// alike (sense 1) and boxes that meet.
template <class Visit>
void ForFacesInOnePlane(const SolidPair& pair, double sense, const Visit& visit) {
    const double tolerance = ContactTolerance(pair.first, pair.second);
    for (Face& first : pair.first.Faces()) {
        if (first.box.exteriorDistance(pair.second.Box()) > tolerance) {
            continue;
        }
        for (const std::size_t i : pair.second.FacesAlong(sense * first.whole.normal)) {
            Face& second = pair.second.Faces()[i];
            if (first.box.exteriorDistance(second.box) <= tolerance &&
                LieInOnePlane(first.whole, second.whole, tolerance)) {
                visit(first, second);
            }
        }
    }
}

/// Takes what a polygon of the first solid has in common with the second solid's face away from both.
/// @return what is left of the polygon; nothing when it has nothing in common with the face
std::optional<std::vector<Polygon>> TakeCommon(const SolidPair& pair, Face& first, const Polygon& polygon,
                                               Face& second) {
    for (auto other = second.air.begin(); other != second.air.end(); ++other) {
        PolygonOverlay overlay = Overlay(polygon, *other, ContactTolerance(pair.first, pair.second));
        if (overlay.common.empty()) {
            continue;
        }
        for (Polygon& common : overlay.common) {
            second.contacts.push_back({common, pair.firstIndex});
            first.contacts.push_back({std::move(common), pair.secondIndex});
        }
        second.air.erase(other);
        second.air.insert(second.air.end(), overlay.onlySecond.begin(), overlay.onlySecond.end());
        return std::move(overlay.onlyFirst);
    }
    return std::nullopt;
}

void Join(const SolidPair& pair, Face& first, Face& second) {
    std::vector<Polygon> pending = std::move(first.air);
    first.air.clear();
    while (!pending.empty()) {
        Polygon polygon = std::move(pending.back());
        pending.pop_back();
        if (const auto rest = TakeCommon(pair, first, polygon, second)) {
            pending.insert(pending.end(), rest->begin(), rest->end());
        } else {
            first.air.push_back(std::move(polygon));
        }
    }
}

/// A point inside of a polygon, far from its outline as such points go.
Vector3d InnerPoint(const Polygon& polygon) {
    std::vector<double> heights;
    for (const PlaneEdge& edge : polygon.planeEdges) {
        heights.push_back(edge.y);
    }
    std::sort(heights.begin(), heights.end());
    double y = 0, widest = 0;
    for (std::size_t i = 1; i < heights.size(); ++i) {
        if (heights[i] - heights[i - 1] > widest) {
            widest = heights[i] - heights[i - 1];
            y = heights[i - 1] + widest / 2;
        }
    }
    std::vector<double> crossings;
    for (const PlaneEdge& edge : polygon.planeEdges) {
        const double start = edge.y - y, end = start + edge.length * edge.ty;
        if ((start < 0) != (end < 0)) {
            crossings.push_back(edge.x - start / edge.ty * edge.tx);
        }
    }
    std::sort(crossings.begin(), crossings.end());
    double x = 0;
    widest = 0;
    for (std::size_t i = 1; i < crossings.size(); i += 2) {
        if (crossings[i] - crossings[i - 1] > widest) {
            widest = crossings[i] - crossings[i - 1];
            x = crossings[i - 1] + widest / 2;
        }
    }
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
        return FacesCoincide() || FacesCut() || IsInside(m_pair.first, m_pair.second, m_pair.secondIndex) ||
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

    /// Both solids lie on the same side of a part of their surfaces.
    bool FacesCoincide() const {
        bool coincide = false;
        ForFacesInOnePlane(m_pair, 1, [&](const Face& first, const Face& second) {
            if (!coincide) {
                const std::vector<Polygon> common = Overlay(first.whole, second.whole, m_deep / deepTolerances).common;
                coincide = std::any_of(common.begin(), common.end(),
                                       [&](const Polygon& polygon) { return !IsNarrow(polygon, m_deep); });
            }
        });
        return coincide;
    }

    /// Faces of both cut each other.
    bool FacesCut() const {
        std::vector<const Face*> faces;
        std::vector<std::pair<double, double>> extents;
        Eigen::Index axis = 0;
        m_common.sizes().maxCoeff(&axis);
        const auto add = [&](const std::vector<Face>& all) {
            for (const Face& face : all) {
                if (face.box.intersects(m_common)) {
                    faces.push_back(&face);
                    extents.push_back({face.box.min()[axis], face.box.max()[axis]});
                }
            }
        };
        add(m_pair.first.Faces());
        const std::size_t ofFirst = faces.size();
        add(m_pair.second.Faces());
        bool cut = false;
        ForOverlappingIntervals(extents, [&](std::size_t i, std::size_t j) {
            cut = cut || (i < ofFirst && j >= ofFirst && faces[i]->box.intersects(faces[j]->box) &&
                          CutEachOther(faces[i]->whole, faces[j]->whole, m_deep));
        });
        return cut;
    }

    /// A place of one solid, just behind one of its faces, lies inside the other.
    bool IsInside(const FacedSolid& solid, const FacedSolid& other, std::size_t otherIndex) const {
        const auto isInside = [&](const Face& face, const Polygon& part) {
            if (IsNarrow(part, m_deep)) {
                return false;
            }
            const Vector3d point = InnerPoint(part) - m_deep * face.whole.normal;
            return Holds(other, point) && Holds(solid, point);
        };
        return std::any_of(solid.Faces().begin(), solid.Faces().end(), [&](const Face& face) {
            return face.box.intersects(other.Box()) &&
                   (std::any_of(face.air.begin(), face.air.end(),
                                [&](const Polygon& part) { return isInside(face, part); }) ||
                    std::any_of(face.contacts.begin(), face.contacts.end(), [&](const FacedSolid::Contact& contact) {
                        return contact.other != otherIndex && isInside(face, contact.polygon);
                    }));
        });
    }

    const SolidPair& m_pair;
    double m_deep;
    Eigen::AlignedBox3d m_common;
};

} // namespace

void FindContact(const SolidPair& pair) {
    ForFacesInOnePlane(pair, -1, [&](Face& first, Face& second) { Join(pair, first, second); });
}

bool Overlap(const SolidPair& pair) {
    return OverlapFinder(pair).Found();
}

} // namespace vantor::solver
