#include "tests/simulator/solver/Outlines.h"

#include "tests/simulator/solver/Constants.h"
#include "tests/simulator/solver/Shapes.h"

#include <cmath>

using Eigen::Vector2d;
using Eigen::Vector3d;
using vantor::solver::PlaneSegment;
using vantor::solver::Polygon;

namespace outlines {

Corners Circle(int corners, double radius, const Vector2d& centre) {
    using references::pi;
    Corners result;
    for (int i = 0; i < corners; ++i) {
        const double angle = 2 * pi * i / corners;
        result.push_back(centre + radius * Vector2d(std::cos(angle), std::sin(angle)));
    }
    return result;
}

Corners Reversed(const Corners& corners) {
    return {corners.rbegin(), corners.rend()};
}

Polygon PolygonOf(const std::vector<Corners>& outlines) {
    std::vector<PlaneSegment> edges;
    for (const Corners& corners : outlines) {
        for (std::size_t i = 0; i < corners.size(); ++i) {
            edges.push_back({corners[i], corners[(i + 1) % corners.size()]});
        }
    }
    double area = 0;
    Vector2d first = Vector2d::Zero();
    for (const auto& [a, b] : edges) {
        const double triangle = (a.x() * b.y() - a.y() * b.x()) / 2;
        area += triangle;
        first += triangle / 3 * (a + b);
    }
    const Vector2d centre = first / area;
    for (auto& [a, b] : edges) {
        a -= centre;
        b -= centre;
    }
    const Eigen::Matrix3d turn = shapes::Turn(1.1, {1, 2, -0.5});
    Polygon polygon;
    polygon.xAxis = turn.col(0);
    polygon.yAxis = turn.col(1);
    polygon.normal = turn.col(2);
    polygon.centre = turn * Vector3d(centre.x() + 0.2, centre.y() - 0.1, 0.3);
    polygon.area = area;
    SetOutline(polygon, edges);
    return polygon;
}

} // namespace outlines
