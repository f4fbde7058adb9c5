#include "simulator/solver/Separation.h"

#include "simulator/solver/PolygonIntegrals.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace vantor::solver {
namespace {

using Eigen::Vector3d;

/// Gaps below this fraction of the magnets' size are rounding of a contact.
constexpr double contactTolerance = 1e-9;

struct Triangle {
    std::array<Vector3d, 3> corners;
    Eigen::AlignedBox3d box;
};

std::vector<Triangle> TrianglesNear(const PreparedMagnet& magnet, const Eigen::AlignedBox3d& region) {
    const TriangleMesh& mesh = magnet.shape->Mesh();
    std::vector<Triangle> result;
    for (const auto& indices : mesh.triangles) {
        Triangle triangle;
        for (std::size_t i = 0; i < 3; ++i) {
            triangle.corners[i] = magnet.pose * mesh.vertices[static_cast<std::size_t>(indices[i])];
            triangle.box.extend(triangle.corners[i]);
        }
        if (triangle.box.intersects(region)) {
            result.push_back(triangle);
        }
    }
    return result;
}

Eigen::AlignedBox3d Grown(Eigen::AlignedBox3d box, double margin) {
    box.min().array() -= margin;
    box.max().array() += margin;
    return box;
}

double SquaredDistanceOfSegments(const Vector3d& a0, const Vector3d& a1, const Vector3d& b0, const Vector3d& b1) {
    // C. Ericson, "Real-Time Collision Detection" (2005), 5.1.9: closest points of two segments.
    const Vector3d a = a1 - a0, b = b1 - b0, offset = a0 - b0;
    const double aa = a.squaredNorm(), bb = b.squaredNorm(), ab = a.dot(b);
    const double ao = a.dot(offset), bo = b.dot(offset);
    const double determinant = aa * bb - ab * ab;
    double s = determinant > 1e-14 * aa * bb ? std::clamp((ab * bo - ao * bb) / determinant, 0.0, 1.0) : 0.0;
    double t = (ab * s + bo) / bb;
    if (t < 0 || t > 1) {
        t = std::clamp(t, 0.0, 1.0);
        s = std::clamp((ab * t - ao) / aa, 0.0, 1.0);
    }
    return (offset + s * a - t * b).squaredNorm();
}

/// Where the foot of a point on the triangle's plane lies inside the triangle, its height over the plane.
std::optional<double> HeightOver(const Triangle& triangle, const Vector3d& point) {
    const auto& [a, b, c] = triangle.corners;
    const Vector3d normal = (b - a).cross(c - a);
    const auto leftOf = [&](const Vector3d& from, const Vector3d& to) {
        return (to - from).cross(point - from).dot(normal) >= 0;
    };
    if (!leftOf(a, b) || !leftOf(b, c) || !leftOf(c, a)) {
        return std::nullopt;
    }
    return (point - a).dot(normal) / normal.norm();
}

bool SegmentMeets(const Triangle& triangle, const Vector3d& from, const Vector3d& to) {
    const auto& [a, b, c] = triangle.corners;
    const Vector3d normal = (b - a).cross(c - a);
    const double start = (from - a).dot(normal), end = (to - a).dot(normal);
    if ((start > 0) == (end > 0) || start == end) {
        return false;
    }
    return HeightOver(triangle, from + start / (start - end) * (to - from)).has_value();
}

/// One half of the test: corners of `a` close to the inside of `b`, edges of `a` through `b`.
bool CornersOrEdgesMeet(const Triangle& a, const Triangle& b, double tolerance) {
    for (std::size_t i = 0; i < 3; ++i) {
        const std::optional<double> height = HeightOver(b, a.corners[i]);
        if ((height && std::abs(*height) <= tolerance) || SegmentMeets(b, a.corners[i], a.corners[(i + 1) % 3])) {
            return true;
        }
    }
    return false;
}

bool Meet(const Triangle& a, const Triangle& b, double tolerance) {
    if (CornersOrEdgesMeet(a, b, tolerance) || CornersOrEdgesMeet(b, a, tolerance)) {
        return true;
    }
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            if (SquaredDistanceOfSegments(a.corners[i], a.corners[(i + 1) % 3], b.corners[j], b.corners[(j + 1) % 3]) <=
                tolerance * tolerance) {
                return true;
            }
        }
    }
    return false;
}

bool SurfacesMeet(const PreparedMagnet& a, const PreparedMagnet& b, double tolerance) {
    const Eigen::AlignedBox3d common = Grown(a.box, tolerance).intersection(Grown(b.box, tolerance));
    const std::vector<Triangle> ofA = TrianglesNear(a, common), ofB = TrianglesNear(b, common);
    for (const Triangle& first : ofA) {
        const Eigen::AlignedBox3d near = Grown(first.box, tolerance);
        for (const Triangle& second : ofB) {
            if (near.intersects(second.box) && Meet(first, second, tolerance)) {
                return true;
            }
        }
    }
    return false;
}

/// Solid angle of a triangle: A. van Oosterom, J. Strackee, IEEE Transactions on Biomedical Engineering 30 (1983) 125.
double SolidAngleOf(const std::array<Vector3d, 3>& corners, const Vector3d& point) {
    const Vector3d a = corners[0] - point, b = corners[1] - point, c = corners[2] - point;
    const double la = a.norm(), lb = b.norm(), lc = c.norm();
    return 2 * std::atan2(a.dot(b.cross(c)), la * lb * lc + a.dot(b) * lc + b.dot(c) * la + c.dot(a) * lb);
}

/// For magnets whose surfaces keep apart: one point decides.
bool Inside(const PreparedMagnet& inner, const PreparedMagnet& outer) {
    if (!outer.box.contains(inner.box)) {
        return false;
    }
    const auto corner = static_cast<std::size_t>(inner.shape->Mesh().triangles.front()[0]);
    double angle = 0;
    for (const Triangle& triangle : TrianglesNear(outer, outer.box)) {
        angle += SolidAngleOf(triangle.corners, inner.pose * inner.shape->Mesh().vertices[corner]);
    }
    constexpr double halfOfAll = 6.283185307179586;
    return std::abs(angle) > halfOfAll;
}

void CheckPair(const PreparedMagnet& a, const PreparedMagnet& b) {
    const double tolerance = contactTolerance * (a.Radius() + b.Radius());
    if (!Grown(a.box, tolerance).intersects(b.box)) {
        return;
    }
    if (SurfacesMeet(a, b, tolerance)) {
        throw SolveError("The surfaces of " + a.label + " and " + b.label +
                         " touch or cut each other; leave a gap between bodies.");
    }
    if (Inside(a, b) || Inside(b, a)) {
        const bool aInB = Inside(a, b);
        throw SolveError((aInB ? a : b).label + " lies inside " + (aInB ? b : a).label + "; move one of them out.");
    }
}

} // namespace

void CheckSeparation(const std::vector<PreparedMagnet>& magnets) {
    for (std::size_t i = 0; i < magnets.size(); ++i) {
        for (std::size_t j = i + 1; j < magnets.size(); ++j) {
            if (magnets[i].body != magnets[j].body) {
                CheckPair(magnets[i], magnets[j]);
            }
        }
    }
}

} // namespace vantor::solver
