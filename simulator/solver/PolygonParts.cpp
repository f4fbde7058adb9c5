#include "simulator/solver/PolygonParts.h"

#include "simulator/solver/Loads.h"

#include <Eigen/Eigenvalues>
#include <Eigen/Geometry>
#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace vantor::solver {
namespace {

using Eigen::Matrix2d;
using Eigen::Vector2d;
using Outline = std::vector<PlaneSegment>;

/// Lines keep this far (fractions of the polygon's radius) from all corners, far above the rounding of coordinates: on
/// which side a corner lies is beyond doubt.
constexpr double clearance = 1e-11;
/// A part whose area is below this fraction of what it is the difference of is a slit without width.
constexpr double slitTolerance = 1e-13;

Vector2d MiddleOf(const Outline& outline) {
    Eigen::AlignedBox2d box;
    for (const PlaneSegment& edge : outline) {
        box.extend(edge.start);
    }
    return box.center();
}

/// Sums over the triangles between the edges and a point in the middle.
struct AreaMoments {
    explicit AreaMoments(const Outline& outline) {
        const Vector2d middle = MiddleOf(outline);
        Vector2d first = Vector2d::Zero();
        double magnitude = 0;
        for (const PlaneSegment& edge : outline) {
            const Vector2d a = edge.start - middle, b = edge.end - middle, sum = a + b;
            const double doubled = Cross(a, b);
            area += doubled / 2;
            magnitude += std::abs(doubled) / 2;
            first += doubled / 6 * sum;
            second += doubled / 24 * (a * a.transpose() + b * b.transpose() + sum * sum.transpose());
        }
        isSlit = !(area > slitTolerance * magnitude);
        const Vector2d offset = isSlit ? Vector2d(Vector2d::Zero()) : Vector2d(first / area);
        centroid = middle + offset;
        second -= area * offset * offset.transpose();
    }
    double area = 0;
    bool isSlit = false;
    Vector2d centroid;
    /// Second moments about the centroid, m^4.
    Matrix2d second = Matrix2d::Zero();
};

/// A straight line: `across` is its unit normal, and `at` its distance from the origin along it.
struct Line {
    Vector2d across;
    double at = 0;
    /// Edges of the larger of both parts.
    std::size_t edges = 0;

    double Height(const Vector2d& point) const { return point.dot(across) - at; }
};

/// The line with this normal that shares the edges out best; of lines about as good, the one in the widest gap between
/// corners, lest the parts have edges of next to no length.
std::optional<Line> LineAcross(const Vector2d& across, const Outline& outline, double narrowest) {
    std::vector<double> corners, lowEnds, highEnds;
    for (const PlaneSegment& edge : outline) {
        const double start = edge.start.dot(across), end = edge.end.dot(across);
        corners.push_back(start);
        lowEnds.push_back(std::min(start, end));
        highEnds.push_back(std::max(start, end));
    }
    for (std::vector<double>* heights : {&corners, &lowEnds, &highEnds}) {
        std::sort(heights->begin(), heights->end());
    }
    std::vector<std::pair<double, Line>> byGap;
    std::size_t fewest = outline.size(), below = 0, belowOrCrossing = 0;
    for (std::size_t i = 1; i < corners.size(); ++i) {
        const double gap = corners[i] - corners[i - 1], at = corners[i - 1] + gap / 2;
        if (gap <= narrowest) {
            continue;
        }
        while (below < outline.size() && highEnds[below] < at) {
            ++below;
        }
        while (belowOrCrossing < outline.size() && lowEnds[belowOrCrossing] < at) {
            ++belowOrCrossing;
        }
        const std::size_t crossing = belowOrCrossing - below;
        const std::size_t edges = std::max(below, outline.size() - belowOrCrossing) + crossing + crossing / 2;
        fewest = std::min(fewest, edges);
        byGap.push_back({gap, {across, at, edges}});
    }
    const auto widest = std::max_element(byGap.begin(), byGap.end(), [&](const auto& a, const auto& b) {
        const std::size_t most = fewest + outline.size() / 16;
        return std::make_pair(a.second.edges <= most, a.first) < std::make_pair(b.second.edges <= most, b.first);
    });
    return widest == byGap.end() ? std::nullopt : std::make_optional(widest->second);
}

/// Unit vector along which the symmetric matrix is largest.
Vector2d LargestAxis(const Matrix2d& matrix) {
    return Eigen::SelfAdjointEigenSolver<Matrix2d>(matrix).eigenvectors().col(1);
}

/// Where to look for lines: across the longer extent, across the shorter one, along the direction that most of the
/// outline has, where few edges are cut, and all round.
std::vector<Vector2d> Normals(const Outline& outline) {
    const Vector2d longest = LargestAxis(AreaMoments(outline).second);
    Matrix2d directions = Matrix2d::Zero();
    for (const PlaneSegment& edge : outline) {
        const Vector2d along = edge.end - edge.start;
        const double length = along.norm();
        if (length > 0) {
            directions += along * along.transpose() / length;
        }
    }
    std::vector<Vector2d> normals{longest, longest.unitOrthogonal(), LargestAxis(directions).unitOrthogonal()};
    constexpr int turns = 16;
    for (int i = 0; i < turns; ++i) {
        const double angle = pi * (i + 0.5) / turns;
        normals.push_back(std::cos(angle) * longest + std::sin(angle) * longest.unitOrthogonal());
    }
    return normals;
}

/// The line that leaves the larger part fewest edges, or the first that is good enough.
std::optional<Line> BestLine(const Outline& outline, double narrowest) {
    std::optional<Line> best;
    for (const Vector2d& normal : Normals(outline)) {
        const std::optional<Line> line = LineAcross(normal, outline, narrowest);
        if (line && (!best || line->edges < best->edges)) {
            best = line;
        }
        if (best && best->edges <= outline.size() * 9 / 16 + 2) {
            break;
        }
    }
    // Less progress than this could go on for ever.
    if (best && best->edges + std::max<std::size_t>(1, outline.size() / 8) > outline.size()) {
        return std::nullopt;
    }
    return best;
}

/// Where the outline crosses a line. Beyond it, as seen along the line, there is one layer more or less of the polygon.
struct Crossing {
    double along;
    int layers;
    Vector2d point;
};

/// The outlines below and above the line; along the line their edges are opposite.
std::pair<Outline, Outline> Split(const Outline& outline, const Line& line) {
    std::pair<Outline, Outline> parts;
    std::vector<Crossing> crossings;
    const Vector2d alongLine(-line.across.y(), line.across.x());
    for (const PlaneSegment& edge : outline) {
        const double start = line.Height(edge.start), end = line.Height(edge.end);
        Outline& first = start < 0 ? parts.first : parts.second;
        if ((start < 0) == (end < 0)) {
            first.push_back(edge);
            continue;
        }
        const Vector2d point = edge.start + start / (start - end) * (edge.end - edge.start);
        crossings.push_back({point.dot(alongLine), start < 0 ? 1 : -1, point});
        first.push_back({edge.start, point});
        (start < 0 ? parts.second : parts.first).push_back({point, edge.end});
    }
    std::sort(crossings.begin(), crossings.end(),
              [](const Crossing& a, const Crossing& b) { return a.along < b.along; });
    int layers = 0;
    for (std::size_t i = 0; i + 1 < crossings.size(); ++i) {
        layers += crossings[i].layers;
        const PlaneSegment up{crossings[i].point, crossings[i + 1].point}, down{up.end, up.start};
        const auto times = static_cast<std::size_t>(std::abs(layers));
        parts.first.insert(parts.first.end(), times, layers > 0 ? up : down);
        parts.second.insert(parts.second.end(), times, layers > 0 ? down : up);
    }
    return parts;
}

/// The heights of all corners, sorted.
std::vector<double> HeightsAlong(const Vector2d& across, const Outline& outline) {
    std::vector<double> heights;
    heights.reserve(outline.size());
    for (const PlaneSegment& edge : outline) {
        heights.push_back(edge.start.dot(across));
    }
    std::sort(heights.begin(), heights.end());
    return heights;
}

/// The line at a height, or as near to it as no corner lies on the line.
std::optional<Line> LineNear(const Vector2d& across, double wanted, const std::vector<double>& corners,
                             double narrowest) {
    std::optional<Line> nearest;
    for (std::size_t i = 1; i < corners.size(); ++i) {
        const double margin = (corners[i] - corners[i - 1]) / 4;
        if (4 * margin <= narrowest) {
            continue;
        }
        const double at = std::clamp(wanted, corners[i - 1] + margin, corners[i] - margin);
        if (!nearest || std::abs(at - wanted) < std::abs(nearest->at - wanted)) {
            nearest = Line{across, at, 0};
        }
    }
    return nearest;
}

/// Across the longer extent, in its middle or near to it.
std::optional<Line> MiddleLine(const Outline& outline, double narrowest) {
    const Vector2d across = LargestAxis(AreaMoments(outline).second);
    const std::vector<double> corners = HeightsAlong(across, outline);
    return LineNear(across, (corners.front() + corners.back()) / 2, corners, narrowest);
}

/// Appends the part of a polygon inside of an outline, unless it has no area.
void AddPart(const Polygon& polygon, Outline outline, std::vector<Polygon>& parts) {
    if (std::optional<Polygon> part = PartOf(polygon, std::move(outline))) {
        parts.push_back(*std::move(part));
    }
}

/// Both parts; the polygon alone without a line, or where a part would have no area.
std::vector<Polygon> CutBy(const Polygon& polygon, const Outline& outline, const std::optional<Line>& line) {
    std::vector<Polygon> parts;
    if (line) {
        const auto [below, above] = Split(outline, *line);
        AddPart(polygon, below, parts);
        AddPart(polygon, above, parts);
    }
    return parts.size() == 2 ? parts : std::vector<Polygon>{polygon};
}

class Cutter {
public:
    Cutter(const Polygon& polygon, std::size_t mostEdges) : m_polygon(polygon), m_mostEdges(mostEdges) {
        Cut(OutlineOf(polygon));
    }
    std::vector<Polygon> TakeParts() { return std::move(m_parts); }

private:
    void Cut(const Outline& outline) {
        const std::optional<Line> line =
            outline.size() > m_mostEdges ? BestLine(outline, 2 * clearance * m_polygon.radius) : std::nullopt;
        if (!line) {
            AddPart(m_polygon, outline, m_parts);
            return;
        }
        const auto [below, above] = Split(outline, *line);
        Cut(below);
        Cut(above);
    }

    const Polygon& m_polygon;
    std::size_t m_mostEdges;
    std::vector<Polygon> m_parts;
};

/// The closed outlines of a polygon, each in order.
std::vector<Outline> LoopsOf(const Polygon& polygon) {
    Outline edges = OutlineOf(polygon);
    std::sort(edges.begin(), edges.end(),
              [](const PlaneSegment& a, const PlaneSegment& b) { return a.start.x() < b.start.x(); });
    const double tolerance = 1e-9 * polygon.radius;
    std::vector<bool> taken(edges.size(), false);
    const auto next = [&](const Vector2d& end) {
        auto edge = std::lower_bound(edges.begin(), edges.end(), end.x() - tolerance,
                                     [](const PlaneSegment& e, double x) { return e.start.x() < x; });
        for (; edge != edges.end() && edge->start.x() <= end.x() + tolerance; ++edge) {
            const auto index = static_cast<std::size_t>(edge - edges.begin());
            if (!taken[index] && std::abs(edge->start.y() - end.y()) <= tolerance) {
                return index;
            }
        }
        return edges.size();
    };
    std::vector<Outline> loops;
    for (std::size_t first = 0; first < edges.size(); ++first) {
        Outline loop;
        for (std::size_t i = first; i < edges.size() && !taken[i]; i = next(edges[i].end)) {
            taken[i] = true;
            loop.push_back(edges[i]);
        }
        if (!loop.empty()) {
            loops.push_back(std::move(loop));
        }
    }
    return loops;
}

/// Takes an outline's edges together in groups.
class Simplifier {
public:
    explicit Simplifier(const Polygon& polygon) : m_polygon(polygon) {
        for (const Outline& loop : LoopsOf(polygon)) {
            std::size_t i = 0;
            while (i < loop.size()) {
                i += i + groupSize <= loop.size() && Replace(&loop[i]) ? groupSize : Keep(loop[i]);
            }
        }
    }
    std::optional<SimplerPolygon> Take() {
        if (m_simple.size() > m_polygon.planeEdges.size() * 3 / 4) {
            return std::nullopt;
        }
        std::vector<Polygon> simple;
        AddPart(m_polygon, m_simple, simple);
        if (simple.empty()) {
            return std::nullopt;
        }
        return SimplerPolygon{std::move(simple[0]), std::move(m_rest)};
    }

private:
    static constexpr std::size_t groupSize = 4;
    /// Radians that a group may bend: a chord then keeps close to its edges, wherever holes may be.
    static constexpr double mostBend = 0.55;

    std::size_t Keep(const PlaneSegment& edge) {
        m_simple.push_back(edge);
        return 1;
    }

    /// Sum of the angles between the edges, positive to the left; nothing where they bend to both sides.
    static std::optional<double> BendOf(const PlaneSegment* group) {
        double bend = 0;
        for (std::size_t i = 1; i < groupSize; ++i) {
            const Vector2d before = group[i - 1].end - group[i - 1].start, after = group[i].end - group[i].start;
            const double angle = std::atan2(Cross(before, after), before.dot(after));
            if (std::abs(angle) < 1e-7 || angle * bend < 0) {
                return std::nullopt;
            }
            bend += angle;
        }
        return bend;
    }

    bool Replace(const PlaneSegment* group) {
        const std::optional<double> bend = BendOf(group);
        if (!bend || std::abs(*bend) > mostBend) {
            return false;
        }
        const PlaneSegment& first = group[0];
        const PlaneSegment& last = group[groupSize - 1];
        Outline between;
        Outline instead;
        if (*bend > 0) {
            between.assign(group, group + groupSize);
            between.push_back({last.end, first.start});
            instead = {{first.start, last.end}};
        } else {
            const Vector2d along = first.end - first.start, lastAlong = last.end - last.start;
            const Vector2d meeting =
                first.end + Cross(last.start - first.end, lastAlong) / Cross(along, lastAlong) * along;
            between.assign(group + 1, group + groupSize - 1);
            between.push_back({last.start, meeting});
            between.push_back({meeting, first.end});
            instead = {{first.start, meeting}, {meeting, last.end}};
        }
        const std::size_t before = m_rest.size();
        AddPart(m_polygon, between, m_rest);
        if (m_rest.size() == before) {
            return false;
        }
        m_simple.insert(m_simple.end(), instead.begin(), instead.end());
        return true;
    }

    const Polygon& m_polygon;
    Outline m_simple;
    std::vector<Polygon> m_rest;
};

} // namespace

Outline OutlineOf(const Polygon& polygon) {
    Outline outline;
    for (const PlaneEdge& edge : polygon.planeEdges) {
        const Vector2d start(edge.x, edge.y);
        outline.push_back({start, start + edge.length * Vector2d(edge.tx, edge.ty)});
    }
    return outline;
}

std::optional<Polygon> PartOf(const Polygon& polygon, Outline outline) {
    const AreaMoments moments(outline);
    if (moments.isSlit) {
        return std::nullopt;
    }
    Polygon part;
    part.centre = polygon.centre + moments.centroid.x() * polygon.xAxis + moments.centroid.y() * polygon.yAxis;
    part.xAxis = polygon.xAxis;
    part.yAxis = polygon.yAxis;
    part.normal = polygon.normal;
    part.area = moments.area;
    for (PlaneSegment& edge : outline) {
        edge.start -= moments.centroid;
        edge.end -= moments.centroid;
    }
    SetOutline(part, outline);
    return part;
}

std::vector<Polygon> CutToEdges(const Polygon& polygon, std::size_t mostEdges) {
    if (polygon.planeEdges.size() <= mostEdges) {
        return {polygon};
    }
    return Cutter(polygon, mostEdges).TakeParts();
}

bool IsSlender(const Polygon& polygon) {
    // Of a rectangle ten times as long as wide.
    constexpr double slenderArea = 0.4;
    return polygon.area < slenderArea * polygon.radius * polygon.radius;
}

std::vector<Polygon> CutInMiddle(const Polygon& polygon) {
    const Outline outline = OutlineOf(polygon);
    return CutBy(polygon, outline, MiddleLine(outline, 2 * clearance * polygon.radius));
}

std::vector<Polygon> CutAcross(const Polygon& polygon, const Vector2d& across, double at) {
    const Outline outline = OutlineOf(polygon);
    return CutBy(polygon, outline, LineNear(across, at, HeightsAlong(across, outline), 2 * clearance * polygon.radius));
}

std::optional<SimplerPolygon> Simplified(const Polygon& polygon) {
    return Simplifier(polygon).Take();
}

} // namespace vantor::solver
