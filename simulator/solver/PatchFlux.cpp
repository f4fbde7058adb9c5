#include "simulator/solver/PatchFlux.h"

#include "simulator/solver/ChargeTree.h"
#include "simulator/solver/Parallel.h"
#include "simulator/solver/PolygonIntegrals.h"
#include "simulator/solver/PolygonParts.h"

namespace vantor::solver {
namespace {

using Eigen::Isometry3d;
using Eigen::Matrix3d;
using Eigen::Vector3d;

/// From this distance on, in radii, three points are as good as a polygon.
constexpr double farPolygon = 6;
/// The distance, in radii, from which on a polygon is three points, and from which on it is seven for each of its
/// triangles: nearer its quarters are.
constexpr double forFewPoints = 3, forManyPoints = 1.5;

/// The polygon in quarters.
std::vector<Polygon> Quarters(const Polygon& polygon) {
    std::vector<Polygon> quarters;
    for (const Polygon& half : CutInMiddle(polygon)) {
        for (Polygon& quarter : CutInMiddle(half)) {
            quarters.push_back(std::move(quarter));
        }
    }
    return quarters;
}

/// @param result  has its patch and polygon, and gets the rest
void SetPoints(const std::vector<Patch>& patches, PatchPolygon& result) {
    const Patch& patch = patches[result.patch];
    const Polygon& polygon = patch.polygons[result.polygon];
    result.centre = polygon.centre;
    result.radius = polygon.radius;
    const auto add = [&](const auto& points, std::vector<ChargePoint>& to) {
        for (const auto& point : points) {
            to.push_back({point.at, point.weight * patch.FunctionsAt(point.at)});
        }
    };
    std::vector<WeightedPoint> points;
    add(PointsOf(polygon), result.points[0]);
    SetPoints(polygon, points);
    add(points, result.points[1]);
    for (const Polygon& quarter : Quarters(polygon)) {
        SetPoints(quarter, points);
        add(points, result.points[2]);
    }
}

/// The points of a polygon that are good enough at a distance.
const std::vector<ChargePoint>& PointsAt(const PatchPolygon& polygon, double distance) {
    return polygon.points[distance >= forFewPoints * polygon.radius    ? 0
                          : distance >= forManyPoints * polygon.radius ? 1
                                                                       : 2];
}

/// Of a charge that is far from the polygon.
Vector3d FarFluxMoments(const Polygon& polygon, const std::vector<ChargePoint>& points, const Vector3d& charge) {
    Vector3d moments = Vector3d::Zero();
    for (const ChargePoint& point : points) {
        const double square = (point.at - charge).squaredNorm();
        moments += point.weights / (square * std::sqrt(square));
    }
    return (polygon.centre - charge).dot(polygon.normal) * moments;
}

} // namespace

std::vector<PatchPolygon> PolygonsOf(const std::vector<Patch>& patches, unsigned threads) {
    std::vector<PatchPolygon> all;
    for (std::size_t i = 0; i < patches.size(); ++i) {
        for (std::size_t k = 0; k < patches[i].polygons.size(); ++k) {
            all.emplace_back();
            all.back().patch = i;
            all.back().polygon = k;
        }
    }
    ForRanges(all.size(), threads, [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            SetPoints(patches, all[i]);
        }
    });
    return all;
}

Matrix3d FluxMoments(const Patch& patch, const PatchPolygon& target, const PatchPolygon& source,
                     const Isometry3d& toTarget) {
    const Polygon& polygon = patch.polygons[target.polygon];
    const Vector3d centre = toTarget * source.centre;
    const double between = (centre - target.centre).norm();
    const bool isNear = between - target.radius < forFewPoints * source.radius;
    const bool isFar = between - source.radius > farPolygon * target.radius;
    Matrix3d moments = Matrix3d::Zero();
    for (const ChargePoint& point : isNear ? PointsAt(source, DistanceFrom(polygon, centre)) : source.points[0]) {
        const Vector3d at = toTarget * point.at;
        moments += (isFar ? FarFluxMoments(polygon, target.points[0], at) : FluxMoments(patch, polygon, at)) *
                   point.weights.transpose();
    }
    return moments;
}

Vector3d FluxMoments(const Patch& patch, const PatchPolygon& target, const KnownPolygon& source,
                     const Isometry3d& toTarget) {
    const Polygon& polygon = patch.polygons[target.polygon];
    const Isometry3d toSource = toTarget.inverse();
    const Vector3d centre = toSource * target.centre;
    Vector3d moments = Vector3d::Zero();
    if ((centre - source.polygon.centre).norm() - target.radius > farPolygon * source.polygon.radius) {
        for (const PatchPoint& point : source.points) {
            moments += point.weight * FarFluxMoments(polygon, target.points[0], toTarget * point.at);
        }
        return source.charge * moments;
    }
    const Vector3d normal = toSource.linear() * polygon.normal;
    for (const ChargePoint& point : PointsAt(target, DistanceFrom(source.polygon, centre))) {
        moments += ChargeField(source.polygon, toSource * point.at).dot(normal) * point.weights;
    }
    return source.charge * moments;
}

} // namespace vantor::solver
