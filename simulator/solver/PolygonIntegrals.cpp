#include "simulator/solver/PolygonIntegrals.h"

#include <cmath>

namespace vantor::solver {
namespace {

/// The point x in the polygon's own coordinates: (x, y) in its plane, height above it.
struct LocalPoint {
    LocalPoint(const Polygon& polygon, const Eigen::Vector3d& point) {
        const Eigen::Vector3d offset = point - polygon.centre;
        x = offset.dot(polygon.xAxis);
        y = offset.dot(polygon.yAxis);
        height = offset.dot(polygon.normal);
    }
    double x, y, height;
};

/// What one edge looks like from the point: `from` and `to` are its ends' distances along the edge from the foot of the
/// perpendicular, `aside` that of the edge's line in the plane (positive when the point is on the polygon's side).
struct EdgeView {
    EdgeView(const PlaneEdge& edge, const LocalPoint& point)
        : EdgeView(edge, edge.x - point.x, edge.y - point.y, point.height) {}

    /// Integral of 1/R along the edge: ln of (R1 + R2 + length)/(R1 + R2 - length). The small denominator is written as
    /// a sum of positive terms, so that no digits are lost near the edge or its extension. On the edge itself, where
    /// the integral is infinite, 0.
    double LinePotential() const {
        const double ends = from * to, distances = fromDistance * toDistance;
        const double squares = from * from + to * to;
        const double sum =
            ends < 0 ? squaredDistance * (squaredDistance + squares) / (distances - ends) : distances + ends;
        const double perimeter = fromDistance + toDistance + (to - from);
        const double ratio = perimeter * perimeter / (2 * (squaredDistance + sum));
        return std::isfinite(ratio) ? std::log(ratio) : 0;
    }

    /// to * fromDistance - from * toDistance, without the cancellation for ends on one side of the foot.
    double CrossedEnds() const {
        const double first = to * fromDistance, second = from * toDistance;
        return from * to > 0 ? squaredDistance * (to * to - from * from) / (first + second) : first - second;
    }

    double from, to, aside, squaredDistance, fromDistance, toDistance;

private:
    /// @param dx, dy  from the foot of the point's perpendicular to the edge's start, in the plane
    EdgeView(const PlaneEdge& edge, double dx, double dy, double height)
        : from(dx * edge.tx + dy * edge.ty), to(from + edge.length), aside(dx * edge.ty - dy * edge.tx),
          squaredDistance(aside * aside + height * height), fromDistance(std::sqrt(squaredDistance + from * from)),
          toDistance(std::sqrt(squaredDistance + to * to)) {}
};

/// Sum of the edges' angles, each the difference of two arc tangents. Their complex numbers are multiplied and whole
/// turns counted, so that one arc tangent is enough for all edges.
class AngleSum {
public:
    void Add(const EdgeView& view, double absoluteHeight) {
        const double a = view.squaredDistance + absoluteHeight * view.toDistance;
        const double b = view.squaredDistance + absoluteHeight * view.fromDistance;
        const double cosine = a * b + view.aside * view.aside * view.from * view.to;
        const double sine =
            view.aside * (view.squaredDistance * (view.to - view.from) + absoluteHeight * view.CrossedEnds());
        const double size = std::abs(cosine) + std::abs(sine);
        if (!(size > 0)) {
            return;
        }
        const double real = (m_real * cosine - m_imaginary * sine) / size;
        const double imaginary = (m_real * sine + m_imaginary * cosine) / size;
        const bool wasUpper = m_imaginary >= 0, isUpper = imaginary >= 0;
        if (wasUpper == (sine >= 0) && wasUpper != isUpper) {
            m_turns += wasUpper ? 1 : -1;
        }
        m_real = real;
        m_imaginary = imaginary;
        if (std::abs(real) + std::abs(imaginary) < 1e-100) {
            m_real *= 1e100;
            m_imaginary *= 1e100;
        }
    }
    double Total() const {
        constexpr double turn = 6.283185307179586477;
        // A negative zero would turn half a circle into minus half a circle.
        return std::atan2(m_imaginary == 0 ? 0 : m_imaginary, m_real) + turn * m_turns;
    }

private:
    double m_real = 1, m_imaginary = 0;
    int m_turns = 0;
};

double WithSignOf(double value, double height) {
    return height > 0 ? value : height < 0 ? -value : 0;
}

Eigen::Vector3d InSpace(const Polygon& polygon, double x, double y, double z) {
    return x * polygon.xAxis + y * polygon.yAxis + z * polygon.normal;
}

} // namespace

double SolidAngle(const Polygon& polygon, const Eigen::Vector3d& x) {
    const LocalPoint point(polygon, x);
    AngleSum angles;
    for (const PlaneEdge& edge : polygon.planeEdges) {
        angles.Add(EdgeView(edge, point), std::abs(point.height));
    }
    return WithSignOf(angles.Total(), point.height);
}

Eigen::Vector3d ChargeField(const Polygon& polygon, const Eigen::Vector3d& x) {
    const LocalPoint point(polygon, x);
    double fieldX = 0, fieldY = 0;
    AngleSum angles;
    for (const PlaneEdge& edge : polygon.planeEdges) {
        const EdgeView view(edge, point);
        const double line = view.LinePotential();
        fieldX += edge.ty * line;
        fieldY -= edge.tx * line;
        angles.Add(view, std::abs(point.height));
    }
    return InSpace(polygon, fieldX, fieldY, WithSignOf(angles.Total(), point.height));
}

PolygonIntegrals IntegralsAt(const Polygon& polygon, const Eigen::Vector3d& x, const Eigen::Vector3d& w) {
    const LocalPoint point(polygon, x);
    const double height = point.height, absoluteHeight = std::abs(height);
    const double wx = w.dot(polygon.xAxis), wy = w.dot(polygon.yAxis), wz = w.dot(polygon.normal);
    double lineSum = 0; // of aside * line potential
    AngleSum angles;
    double fieldX = 0, fieldY = 0;     // of outward * line potential
    double firstX = 0, firstY = 0;     // of outward * integral of R along the edge, twice
    double tensionX = 0, tensionY = 0; // of (integral of y/R along the edge) (outward . w)
    for (const PlaneEdge& edge : polygon.planeEdges) {
        const EdgeView view(edge, point);
        const double line = view.LinePotential();
        lineSum += view.aside * line;
        angles.Add(view, absoluteHeight);
        fieldX += edge.ty * line;
        fieldY -= edge.tx * line;
        const double distances =
            view.squaredDistance * line + view.to * view.toDistance - view.from * view.fromDistance;
        firstX += edge.ty * distances;
        firstY -= edge.tx * distances;
        const double outwardW = edge.ty * wx - edge.tx * wy;
        const double across = view.aside * line, along = view.toDistance - view.fromDistance;
        tensionX += (across * edge.ty + along * edge.tx) * outwardW;
        tensionY += (along * edge.ty - across * edge.tx) * outwardW;
    }
    const double angle = angles.Total();
    PolygonIntegrals result;
    result.potential = lineSum - absoluteHeight * angle;
    result.first = InSpace(polygon, firstX / 2, firstY / 2, -height * result.potential);
    result.flux = -(fieldX * wx + fieldY * wy + WithSignOf(angle, height) * wz);
    result.tension = InSpace(polygon, result.potential * wx - tensionX + height * fieldX * wz,
                             result.potential * wy - tensionY + height * fieldY * wz,
                             height * (fieldX * wx + fieldY * wy) + absoluteHeight * angle * wz);
    return result;
}

} // namespace vantor::solver
