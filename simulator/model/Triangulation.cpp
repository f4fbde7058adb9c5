#include "simulator/model/Triangulation.h"

#include "simulator/model/Mesh.h"

#include <Eigen/Geometry>

namespace vantor::model {
namespace {

using Point = Eigen::Vector2d;

double Turn(const Point& a, const Point& b, const Point& c) {
    const Point u = b - a, v = c - a;
    return u.x() * v.y() - u.y() * v.x();
}

/// The polygon's corners in its own plane, counter-clockwise (normal by Newell's sum).
std::vector<Point> Flattened(const std::vector<int>& corners, const std::vector<Eigen::Vector3d>& vertices) {
    const auto at = [&](std::size_t i) -> const Eigen::Vector3d& {
        return vertices[static_cast<std::size_t>(corners[i % corners.size()])];
    };
    Eigen::Vector3d normal = Eigen::Vector3d::Zero();
    for (std::size_t i = 0; i < corners.size(); ++i) {
        normal += (at(i) - at(0)).cross(at(i + 1) - at(0));
    }
    if (!(normal.norm() > 0.0)) {
        throw MeshError("a degenerate face (no area)", -1);
    }
    normal.normalize();
    const Eigen::Vector3d u = normal.unitOrthogonal();
    const Eigen::Vector3d v = normal.cross(u);
    std::vector<Point> points;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        points.emplace_back(u.dot(at(i) - at(0)), v.dot(at(i) - at(0)));
    }
    return points;
}

bool IsEar(const std::vector<Point>& points, const std::vector<std::size_t>& rest, std::size_t i) {
    const std::size_t count = rest.size();
    const Point& a = points[rest[(i + count - 1) % count]];
    const Point& b = points[rest[i]];
    const Point& c = points[rest[(i + 1) % count]];
    if (!(Turn(a, b, c) > 0.0)) {
        return false;
    }
    for (std::size_t k = 2; k + 1 < count; ++k) {
        const Point& p = points[rest[(i + k) % count]];
        if (p != a && p != b && p != c && Turn(a, b, p) >= 0.0 && Turn(b, c, p) >= 0.0 && Turn(c, a, p) >= 0.0) {
            return false;
        }
    }
    return true;
}

} // namespace

void AppendTriangulated(const std::vector<int>& corners, const std::vector<Eigen::Vector3d>& vertices,
                        std::vector<std::array<int, 3>>& triangles) {
    if (corners.size() == 3) {
        triangles.push_back({corners[0], corners[1], corners[2]});
        return;
    }
    const std::vector<Point> points = Flattened(corners, vertices);
    std::vector<std::size_t> rest(corners.size());
    for (std::size_t i = 0; i < rest.size(); ++i) {
        rest[i] = i;
    }
    while (rest.size() > 2) {
        std::size_t ear = 0;
        while (ear < rest.size() && !IsEar(points, rest, ear)) {
            ++ear;
        }
        if (ear == rest.size()) {
            throw MeshError("a face crosses itself or has corners in one line", -1);
        }
        const std::size_t count = rest.size();
        triangles.push_back(
            {corners[rest[(ear + count - 1) % count]], corners[rest[ear]], corners[rest[(ear + 1) % count]]});
        rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(ear));
    }
}

} // namespace vantor::model
