#pragma once
// What charges on polygons send through patches: points for one of both, the closed form for the other one.
#include "simulator/solver/Patch.h"
#include "simulator/solver/SolidBody.h"

namespace vantor::solver {

/// A point for a part of a polygon of a patch.
struct ChargePoint {
    Eigen::Vector3d at;
    /// The patch's functions times the part's area, m^2: the charges, A m, of functions of 1 A/m.
    Eigen::Vector3d weights;
};

/// A polygon of a patch as points: few for what is far from it, more for what is near.
struct PatchPolygon {
    std::size_t patch = 0, polygon = 0;
    Eigen::Vector3d centre;
    double radius = 0;
    /// Three of the whole, seven in each of its triangles, and seven in each triangle of its quarters.
    std::array<std::vector<ChargePoint>, 3> points;
};

/// All polygons of patches, in order.
std::vector<PatchPolygon> PolygonsOf(const std::vector<Patch>& patches, unsigned threads);

/// 4 pi times the flux of a patch's functions as charges (columns) through a polygon of another patch, times that
/// patch's functions (rows).
/// @param target  a polygon of `patch`
/// @param toTarget  of the source's axes in those of the target
Eigen::Matrix3d FluxMoments(const Patch& patch, const PatchPolygon& target, const PatchPolygon& source,
                            const Eigen::Isometry3d& toTarget);
/// The same of a known charge.
Eigen::Vector3d FluxMoments(const Patch& patch, const PatchPolygon& target, const KnownPolygon& source,
                            const Eigen::Isometry3d& toTarget);

} // namespace vantor::solver
