#include "simulator/solver/Patch.h"

#include "simulator/solver/PolygonIntegrals.h"

#include <Eigen/Eigenvalues>
#include <Eigen/Geometry>
#include <algorithm>
#include <cmath>

namespace vantor::solver {
namespace {

using Eigen::Matrix2d;
using Eigen::Matrix3d;
using Eigen::Vector2d;
using Eigen::Vector3d;

/// Second moments of the area about its centroid, over the area, in plane coordinates.
Matrix2d MeanSquares(const Polygon& polygon) {
    Matrix2d second = Matrix2d::Zero();
    for (const PlaneEdge& edge : polygon.planeEdges) {
        const Vector2d a(edge.x, edge.y), b = a + edge.length * Vector2d(edge.tx, edge.ty), sum = a + b;
        second += Cross(a, b) / 24 * (a * a.transpose() + b * b.transpose() + sum * sum.transpose());
    }
    return second / polygon.area;
}

/// A charge that is this part of its distance away from a plane is in it but for rounding.
constexpr double inThePlane = 1e-9;
/// What is thinner than this part of its size has no linear function across.
constexpr double thinnest = 1e-10;

} // namespace

Patch PatchOf(std::vector<Polygon> polygons) {
    Patch patch;
    patch.centre.setZero();
    for (const Polygon& polygon : polygons) {
        patch.area += polygon.area;
        patch.centre += polygon.area * polygon.centre;
    }
    patch.centre /= patch.area;
    Matrix3d second = Matrix3d::Zero();
    for (const Polygon& polygon : polygons) {
        Eigen::Matrix<double, 3, 2> axes;
        axes << polygon.xAxis, polygon.yAxis;
        const Vector3d offset = polygon.centre - patch.centre;
        second +=
            polygon.area / patch.area * (axes * MeanSquares(polygon) * axes.transpose() + offset * offset.transpose());
    }
    const Eigen::SelfAdjointEigenSolver<Matrix3d> principal(second);
    const double least = thinnest * thinnest * principal.eigenvalues()[2];
    const auto axis = [&](int i) -> Vector3d {
        return principal.eigenvectors().col(i) / std::sqrt(std::max(principal.eigenvalues()[i], least));
    };
    patch.u = axis(2);
    patch.v = axis(1);
    patch.polygons = std::move(polygons);
    return patch;
}

std::array<PatchPoint, 3> PointsOf(const Polygon& polygon) {
    const Eigen::SelfAdjointEigenSolver<Matrix2d> principal(MeanSquares(polygon));
    const double longest = std::sqrt(principal.eigenvalues()[1]);
    const double shortest = std::max(std::sqrt(std::max(principal.eigenvalues()[0], 0.0)), thinnest * longest);
    const Vector2d along = longest * principal.eigenvectors().col(1),
                   across = shortest * principal.eigenvectors().col(0);
    // Towards the corner that is farthest, measured in these lengths: in a triangle the points keep off the edges.
    double farthest = 0, angle = 0;
    for (const PlaneEdge& edge : polygon.planeEdges) {
        const Vector2d corner(edge.x, edge.y);
        const Vector2d measured(corner.dot(along) / (longest * longest), corner.dot(across) / (shortest * shortest));
        // A clear difference, so that rounding does not decide between equal corners.
        if (measured.norm() > 1.000001 * farthest) {
            farthest = measured.norm();
            angle = std::atan2(measured.y(), measured.x());
        }
    }
    constexpr double thirdOfTurn = 2.0943951023931953;
    std::array<PatchPoint, 3> points;
    for (std::size_t k = 0; k < points.size(); ++k) {
        const double direction = angle + thirdOfTurn * static_cast<double>(k);
        const Vector2d offset = std::sqrt(2.0) * (std::cos(direction) * along + std::sin(direction) * across);
        points[k].at = polygon.centre + offset.x() * polygon.xAxis + offset.y() * polygon.yAxis;
        points[k].weight = polygon.area / 3;
    }
    return points;
}

Vector3d FluxMoments(const Patch& patch, const Polygon& polygon, const Vector3d& charge) {
    const Vector3d offset = charge - polygon.centre;
    const double height = offset.dot(polygon.normal);
    if (std::abs(height) <= inThePlane * (polygon.radius + offset.norm())) {
        return Vector3d::Zero();
    }
    // Integral of (charge - r)/R^3.
    const Vector3d field = ChargeField(polygon, charge);
    return -field.dot(polygon.normal) * patch.FunctionsAt(charge) +
           height * Vector3d(0, field.dot(patch.u), field.dot(patch.v));
}

} // namespace vantor::solver
