#include "simulator/solver/FaceDivision.h"

#include "simulator/solver/Groups.h"
#include "simulator/solver/PolygonParts.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

namespace vantor::solver {
namespace {

using Eigen::Vector3d;

/// Faces that bend less than this (cosine) at their edge are of one smooth surface.
constexpr double smoothBend = 0.85;
/// The normals of a patch keep this close (cosine) to their mean.
constexpr double patchBend = 0.9;
/// Width over distance from a sharp edge.
constexpr double growth = 1.3;
/// Where a part along a sharp edge is cut off, of the width.
constexpr double layerCut = 0.25;
/// A polygon that is this part of a piece or less goes to one side of a cut as a whole.
constexpr double smallPart = 0.4;
/// Corners this close (of the body's size) are one.
constexpr double cornerTolerance = 1e-8;

/// An edge of a face.
struct FaceEdge {
    std::size_t face = 0;
    Vector3d start, end;
};

std::vector<FaceEdge> EdgesOf(const std::vector<SolidFace>& faces) {
    std::vector<FaceEdge> edges;
    for (std::size_t i = 0; i < faces.size(); ++i) {
        for (const Edge& edge : faces[i].polygon.edges) {
            edges.push_back({i, edge.start, edge.At(edge.length)});
        }
    }
    return edges;
}

/// The faces' edges, and for each the only other face that has it, if there is one.
class EdgePartners {
public:
    explicit EdgePartners(const std::vector<FaceEdge>& edges) : m_edges(edges), m_order(edges.size()) {
        Eigen::AlignedBox3d box;
        for (const FaceEdge& edge : edges) {
            box.extend(edge.start);
        }
        m_tolerance = box.isEmpty() ? 0 : cornerTolerance * box.diagonal().norm();
        std::iota(m_order.begin(), m_order.end(), std::size_t{0});
        std::sort(m_order.begin(), m_order.end(),
                  [&](std::size_t a, std::size_t b) { return MiddleOf(a) < MiddleOf(b); });
    }

    /// The face; nothing where there is none or several.
    std::optional<std::size_t> PartnerOf(std::size_t edge) const {
        const double middle = MiddleOf(edge);
        auto at = std::lower_bound(m_order.begin(), m_order.end(), middle - m_tolerance,
                                   [&](std::size_t other, double x) { return MiddleOf(other) < x; });
        std::optional<std::size_t> partner;
        for (; at != m_order.end() && MiddleOf(*at) <= middle + m_tolerance; ++at) {
            if (*at == edge || !AreSame(m_edges[*at], m_edges[edge])) {
                continue;
            }
            if (partner) {
                return std::nullopt;
            }
            partner = m_edges[*at].face;
        }
        return partner;
    }

private:
    double MiddleOf(std::size_t edge) const { return m_edges[edge].start.x() + m_edges[edge].end.x(); }
    bool AreSame(const FaceEdge& a, const FaceEdge& b) const {
        return ((a.start - b.end).norm() <= m_tolerance && (a.end - b.start).norm() <= m_tolerance) ||
               ((a.start - b.start).norm() <= m_tolerance && (a.end - b.end).norm() <= m_tolerance);
    }

    const std::vector<FaceEdge>& m_edges;
    std::vector<std::size_t> m_order;
    double m_tolerance = 0;
};

bool ContinueEachOther(const SolidFace& a, const SolidFace& b) {
    return a.inside == b.inside && a.outside == b.outside && a.polygon.normal.dot(b.polygon.normal) > smoothBend;
}

/// A part of a surface, and where it is to be cut, if it is.
using Piece = std::vector<Polygon>;
struct Plane {
    Vector3d normal;
    double at = 0;
};

struct Range {
    double low = std::numeric_limits<double>::infinity(), high = -low;

    void Add(double value) {
        low = std::min(low, value);
        high = std::max(high, value);
    }
    double Width() const { return high - low; }
};

Range RangeOf(const Polygon& polygon, const Vector3d& along) {
    Range range;
    for (const Edge& edge : polygon.edges) {
        range.Add(edge.start.dot(along));
    }
    return range;
}

Range RangeOf(const Piece& piece, const Vector3d& along) {
    Range range;
    for (const Polygon& polygon : piece) {
        const Range part = RangeOf(polygon, along);
        range.Add(part.low);
        range.Add(part.high);
    }
    return range;
}

class Divider {
public:
    Divider(const Surface& surface, const Fineness& fineness, const std::function<double(const Vector3d&)>& distance,
            std::size_t most)
        : m_surface(surface), m_fineness(fineness), m_distance(distance), m_most(most) {
        Divide(surface.polygons);
    }
    std::vector<Patch> TakePatches() { return std::move(m_patches); }

private:
    void Divide(Piece piece) {
        if (m_patches.size() > m_most) {
            return;
        }
        Patch patch = PatchOf(std::move(piece));
        const std::optional<Plane> cut = CutOf(patch);
        auto [below, above] = cut ? Separated(patch.polygons, *cut) : std::pair<Piece, Piece>();
        if (below.empty() || above.empty()) {
            m_patches.push_back(std::move(patch));
            return;
        }
        Divide(std::move(below));
        Divide(std::move(above));
    }

    std::optional<Plane> CutOf(const Patch& patch) const {
        if (std::optional<Plane> cut = CutAlongEdge(patch)) {
            return cut;
        }
        const Vector3d along = patch.u.normalized();
        const Range range = RangeOf(patch.polygons, along);
        const double allowed =
            std::min(m_fineness.width, std::max(m_fineness.least, m_fineness.nearness * m_distance(patch.centre)));
        if (range.Width() > allowed || IsTooBent(patch)) {
            return Plane{along, (range.low + range.high) / 2};
        }
        return std::nullopt;
    }

    /// Along the sharp edge for which the patch is too wide most of all.
    std::optional<Plane> CutAlongEdge(const Patch& patch) const {
        double most = 1;
        std::optional<Plane> cut;
        for (const Surface::Segment& edge : m_surface.sharpEdges) {
            const Vector3d along = edge.end - edge.start;
            const Vector3d foot = edge.NearestTo(patch.centre), offset = patch.centre - foot;
            const double distance = offset.norm();
            const Vector3d across = offset.cross(along).cross(along).normalized();
            if (!across.allFinite() || across.isZero(0.5)) {
                continue;
            }
            const Range range = RangeOf(patch.polygons, across);
            const double excess = range.Width() / std::max(m_fineness.layer, growth * distance);
            if (excess > most) {
                most = excess;
                const double height = foot.dot(across);
                const bool touchesBelow = height <= range.low + smallest * range.Width();
                const bool touchesAbove = height >= range.high - smallest * range.Width();
                const double other = touchesBelow ? range.high : range.low;
                const bool isMiddle = touchesBelow == touchesAbove || HasEdgeAt(other, across, range, foot);
                const double part = isMiddle ? 0.5 : touchesBelow ? layerCut : 1 - layerCut;
                cut = Plane{across, range.low + part * range.Width()};
            }
        }
        return cut;
    }

    /// Whether there is a sharp edge at the other end of a patch, too.
    bool HasEdgeAt(double height, const Vector3d& across, const Range& range, const Vector3d& foot) const {
        const Vector3d point = foot + (height - foot.dot(across)) * across;
        return std::any_of(m_surface.sharpEdges.begin(), m_surface.sharpEdges.end(), [&](const auto& edge) {
            return (edge.NearestTo(point) - point).norm() <= layerCut * range.Width() / 2;
        });
    }

    static bool IsTooBent(const Patch& patch) {
        Vector3d mean = Vector3d::Zero();
        for (const Polygon& polygon : patch.polygons) {
            mean += polygon.area * polygon.normal;
        }
        mean.normalize();
        return std::any_of(patch.polygons.begin(), patch.polygons.end(),
                           [&](const Polygon& polygon) { return polygon.normal.dot(mean) < patchBend; });
    }

    static std::pair<Piece, Piece> Separated(const Piece& piece, const Plane& cut) {
        std::pair<Piece, Piece> parts;
        const double width = RangeOf(piece, cut.normal).Width();
        for (const Polygon& polygon : piece) {
            const Range range = RangeOf(polygon, cut.normal);
            const bool isCut = range.low < cut.at - smallest * width && range.high > cut.at + smallest * width &&
                               range.Width() > smallPart * width;
            if (!isCut) {
                (polygon.centre.dot(cut.normal) < cut.at ? parts.first : parts.second).push_back(polygon);
                continue;
            }
            const Eigen::Vector2d across(cut.normal.dot(polygon.xAxis), cut.normal.dot(polygon.yAxis));
            const double height = (cut.at - polygon.centre.dot(cut.normal)) / across.norm();
            for (Polygon& part : CutAcross(polygon, across.normalized(), height)) {
                (part.centre.dot(cut.normal) < cut.at ? parts.first : parts.second).push_back(std::move(part));
            }
        }
        return parts;
    }

    /// Of a width: less is nothing.
    static constexpr double smallest = 1e-6;

    const Surface& m_surface;
    const Fineness& m_fineness;
    const std::function<double(const Vector3d&)>& m_distance;
    std::size_t m_most;
    std::vector<Patch> m_patches;
};

} // namespace

std::vector<Surface> SurfacesOf(const std::vector<SolidFace>& faces) {
    const std::vector<FaceEdge> edges = EdgesOf(faces);
    const EdgePartners partners(edges);
    Groups groups(faces.size());
    std::vector<bool> isSharp(edges.size());
    for (std::size_t i = 0; i < edges.size(); ++i) {
        const std::optional<std::size_t> partner = partners.PartnerOf(i);
        isSharp[i] = !partner || !ContinueEachOther(faces[edges[i].face], faces[*partner]);
        if (!isSharp[i]) {
            groups.Join(edges[i].face, *partner);
        }
    }
    std::vector<Surface> surfaces;
    std::vector<std::size_t> surfaceOf(faces.size());
    for (std::size_t i = 0; i < faces.size(); ++i) {
        if (groups.Find(i) == i) {
            surfaceOf[i] = surfaces.size();
            surfaces.push_back({faces[i].inside, faces[i].outside, {}, {}});
        }
        surfaceOf[i] = surfaceOf[groups.Find(i)];
        surfaces[surfaceOf[i]].polygons.push_back(faces[i].polygon);
    }
    for (std::size_t i = 0; i < edges.size(); ++i) {
        if (isSharp[i]) {
            surfaces[surfaceOf[edges[i].face]].sharpEdges.push_back({edges[i].start, edges[i].end});
        }
    }
    return surfaces;
}

std::vector<Patch> Divided(const Surface& surface, const Fineness& fineness,
                           const std::function<double(const Vector3d&)>& distance, std::size_t most) {
    return Divider(surface, fineness, distance, most).TakePatches();
}

} // namespace vantor::solver
