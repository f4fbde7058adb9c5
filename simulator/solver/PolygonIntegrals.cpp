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
    EdgeView(const PlaneEdge& edge, const LocalPoint& point) {
        const double dx = edge.x - point.x, dy = edge.y - point.y;
        from = dx * edge.tx + dy * edge.ty;
        to = from + edge.length;
        aside = dx * edge.ty - dy * edge.tx;
        squaredDistance = aside * aside + point.height * point.height;
        fromDistance = std::sqrt(squaredDistance + from * from);
        toDistance = std::sqrt(squaredDistance + to * to);
    }

    /// Integral of 1/R along the edge, in the form that loses no digits where the point lies. On the edge itself, where
    /// it is infinite, 0.
    double LinePotential() const {
        double ratio;
        if (from >= 0)
            ratio = (toDistance + to) / (fromDistance + from);
        else if (to <= 0)
            ratio = (fromDistance - from) / (toDistance - to);
        else
            ratio = (toDistance + to) * (fromDistance - from) / squaredDistance;
        return std::isfinite(ratio) ? std::log(ratio) : 0;
    }

    /// The edge's share of the solid angle's magnitude: the difference of the two arc tangents, in one call.
    double Angle(double absoluteHeight) const {
        const double a = squaredDistance + absoluteHeight * toDistance;
        const double b = squaredDistance + absoluteHeight * fromDistance;
        return std::atan2(aside * (to * b - from * a), a * b + aside * aside * from * to);
    }

    double from, to, aside, squaredDistance, fromDistance, toDistance;
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
    double angle = 0;
    for (const PlaneEdge& edge : polygon.planeEdges)
        angle += EdgeView(edge, point).Angle(std::abs(point.height));
    return WithSignOf(angle, point.height);
}

Eigen::Vector3d ChargeField(const Polygon& polygon, const Eigen::Vector3d& x) {
    const LocalPoint point(polygon, x);
    double fieldX = 0, fieldY = 0, angle = 0;
    for (const PlaneEdge& edge : polygon.planeEdges) {
        const EdgeView view(edge, point);
        const double line = view.LinePotential();
        fieldX += edge.ty * line;
        fieldY -= edge.tx * line;
        angle += view.Angle(std::abs(point.height));
    }
    return InSpace(polygon, fieldX, fieldY, WithSignOf(angle, point.height));
}

PolygonIntegrals IntegralsAt(const Polygon& polygon, const Eigen::Vector3d& x, const Eigen::Vector3d& w) {
    const LocalPoint point(polygon, x);
    const double height = point.height, absoluteHeight = std::abs(height);
    const double wx = w.dot(polygon.xAxis), wy = w.dot(polygon.yAxis), wz = w.dot(polygon.normal);
    double lineSum = 0, angle = 0;     // of aside * line potential; of the angles
    double fieldX = 0, fieldY = 0;     // of outward * line potential
    double firstX = 0, firstY = 0;     // of outward * integral of R along the edge, twice
    double tensionX = 0, tensionY = 0; // of (integral of y/R along the edge) (outward . w)
    for (const PlaneEdge& edge : polygon.planeEdges) {
        const EdgeView view(edge, point);
        const double line = view.LinePotential();
        lineSum += view.aside * line;
        angle += view.Angle(absoluteHeight);
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
