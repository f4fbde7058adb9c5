#include "tests/simulator/solver/SurfaceReferences.h"

#include <algorithm>
#include <cmath>
#include <limits>

using Eigen::Isometry3d;
using Eigen::Vector3d;
using vantor::solver::TriangleMesh;

namespace references {
namespace {

/// Distance of a point from a triangle: by its plane where it is above it, else by the nearest edge.
double Distance(const Triangle& triangle, const Vector3d& point) {
    const Vector3d normal = (triangle[1] - triangle[0]).cross(triangle[2] - triangle[0]).normalized();
    double least = std::numeric_limits<double>::infinity();
    bool above = true;
    for (std::size_t i = 0; i < 3; ++i) {
        const Vector3d along = triangle[(i + 1) % 3] - triangle[i], offset = point - triangle[i];
        const double t = std::clamp(along.dot(offset) / along.squaredNorm(), 0.0, 1.0);
        least = std::min(least, (offset - t * along).norm());
        above = above && along.cross(offset).dot(normal) >= 0;
    }
    return above ? std::abs(normal.dot(point - triangle[0])) : least;
}

/// Least distance of a triangle from the edges of another one, 0 where one of them passes through it.
double DistanceFromEdges(const Triangle& a, const Triangle& b) {
    double least = std::numeric_limits<double>::infinity();
    const Vector3d normal = (a[1] - a[0]).cross(a[2] - a[0]);
    for (std::size_t i = 0; i < 3; ++i) {
        const Vector3d &from = b[i], &to = b[(i + 1) % 3];
        const double start = normal.dot(from - a[0]), end = normal.dot(to - a[0]);
        if (start * end < 0 && Distance(a, from + start / (start - end) * (to - from)) < 1e-12) {
            return 0;
        }
        // The distance is a convex function along the edge.
        double low = 0, high = 1;
        for (int step = 0; step < 30; ++step) {
            const double first = low + (high - low) / 3, second = high - (high - low) / 3;
            const bool falls = Distance(a, from + first * (to - from)) > Distance(a, from + second * (to - from));
            (falls ? low : high) = falls ? first : second;
        }
        least = std::min(least, Distance(a, from + low * (to - from)));
    }
    return least;
}

/// No more than the distance of two triangles.
double DistanceOfBoxes(const Triangle& a, const Triangle& b) {
    Eigen::AlignedBox3d boxA, boxB;
    for (std::size_t i = 0; i < 3; ++i) {
        boxA.extend(a[i]);
        boxB.extend(b[i]);
    }
    return boxA.exteriorDistance(boxB);
}

} // namespace

std::vector<Triangle> TrianglesOf(const TriangleMesh& mesh, const Isometry3d& pose) {
    std::vector<Triangle> triangles;
    for (const auto& triangle : mesh.triangles) {
        const auto corner = [&](std::size_t i) -> Vector3d {
            return pose * mesh.vertices[static_cast<std::size_t>(triangle[i])];
        };
        triangles.push_back({corner(0), corner(1), corner(2)});
    }
    return triangles;
}

double Distance(const std::vector<Triangle>& a, const std::vector<Triangle>& b) {
    double least = std::numeric_limits<double>::infinity();
    for (const Triangle& first : a) {
        for (const Triangle& second : b) {
            least = std::min(least, Distance(first, second[0]));
        }
    }
    for (const Triangle& first : a) {
        for (const Triangle& second : b) {
            if (DistanceOfBoxes(first, second) > least) {
                continue;
            }
            least = std::min({least, DistanceFromEdges(first, second), DistanceFromEdges(second, first)});
        }
    }
    return least;
}

double SolidAngle(const std::vector<Triangle>& surface, const Vector3d& point) {
    double angle = 0;
    for (const auto& [first, second, third] : surface) {
        const Vector3d a = first - point, b = second - point, c = third - point;
        angle += 2 * std::atan2(a.dot(b.cross(c)), a.norm() * b.norm() * c.norm() + a.dot(b) * c.norm() +
                                                       b.dot(c) * a.norm() + c.dot(a) * b.norm());
    }
    return angle;
}

} // namespace references
