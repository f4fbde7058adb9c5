#pragma once
// Two faces that are neither far apart nor close: the closed form of one's field at points of the other. The field
// is analytic in any ball that does not reach the face it is of, so the points' rule converges as fast as the ratio of
// the target's size to its distance from the source.
#include "simulator/solver/ChargeTree.h"

namespace vantor::solver {

/// Bounds of the error for unit charges (A/m) and without mu0/(4 pi), the torque's about the target's centre. Infinite
/// where the target's circle reaches the source.
/// @param target  the cluster of the target
/// @param centre  of the target in the source's axes
ErrorSizes PointErrors(const Polygon& source, const Cluster& target, const Eigen::Vector3d& centre);

/// Integral of charge times (x - r)/R^3: 4 pi times the field H at x of a face.
Eigen::Vector3d ChargeField(const ChargedFace& face, const Eigen::Vector3d& x);

/// Load on charges from a face, without mu0/(4 pi); the torque about the origin.
/// @param target  charges (A m) as weights
Wrench PointWrench(const ChargedFace& source, const std::vector<WeightedPoint>& target);

/// The same from charges in points.
/// @param source,target  ranges of WeightedPoint
template <class Points>
Wrench PointWrench(const Points& source, const Points& target) {
    Wrench wrench;
    for (const WeightedPoint& point : target) {
        Eigen::Vector3d field = Eigen::Vector3d::Zero();
        for (const WeightedPoint& charge : source) {
            const Eigen::Vector3d offset = point.at - charge.at;
            const double square = offset.squaredNorm();
            field += charge.weight / (square * std::sqrt(square)) * offset;
        }
        wrench += Wrench::At(point.at, point.weight * field);
    }
    return wrench;
}

} // namespace vantor::solver
