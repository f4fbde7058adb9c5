#pragma once
// A piece of a surface whose charge per area is a linear function of place: what the charges of iron are solved on.
//
// The equation of the surface, of the flux through it, is asked for on the average over each patch and for its first
// moments. A charge at y sends n.(r - y)/R^3 through the point r of a patch; its integral is the solid angle, and
// those with a linear factor follow from the field of a uniform charge on the patch (PolygonIntegrals.h). So what
// charges in points send through a patch is exact; PatchFlux.h says in which points they stand.
#include "simulator/solver/Polygon.h"

#include <vector>

namespace vantor::solver {

/// Number of the functions that a patch has: 1 and two linear ones.
constexpr int patchFunctions = 3;

/// One polygon, or neighbouring ones of a bent surface. The functions are 1, (r - centre).u and (r - centre).v; each
/// has the mean square 1 over the patch, and they are orthogonal.
struct Patch {
    std::vector<Polygon> polygons;
    /// Centroid of the area.
    Eigen::Vector3d centre;
    double area = 0;
    /// Along the principal axes of the area; 1/m.
    Eigen::Vector3d u, v;

    Eigen::Vector3d FunctionsAt(const Eigen::Vector3d& point) const {
        const Eigen::Vector3d offset = point - centre;
        return {1, offset.dot(u), offset.dot(v)};
    }
};

/// @param polygons  at least one, each with an area
Patch PatchOf(std::vector<Polygon> polygons);

/// A point that stands for a part of a polygon.
struct PatchPoint {
    Eigen::Vector3d at;
    /// m^2.
    double weight = 0;
};

/// Three points with the area and all moments up to the second order of a polygon, inside of it if it is convex.
std::array<PatchPoint, 3> PointsOf(const Polygon& polygon);

/// What a unit charge sends through a polygon of a patch along its normal, times each of the patch's functions; a
/// charge sends 4 pi in all directions together, and nothing through a polygon in whose plane it is.
Eigen::Vector3d FluxMoments(const Patch& patch, const Polygon& polygon, const Eigen::Vector3d& charge);

} // namespace vantor::solver
