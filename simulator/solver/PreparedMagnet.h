#pragma once
// A magnet as the solver works with it: charged faces, and its moments for the far field.
#include "simulator/solver/Polygon.h"

#include <Eigen/Geometry>

namespace vantor::solver {

struct ChargedFace {
    Polygon polygon;
    /// A/m: magnetisation along the outward normal.
    double charge = 0;
};

struct PreparedMagnet {
    std::size_t body = 0;
    /// For messages: magnet and body by name.
    std::string label;
    /// Without the triangles that have no area.
    TriangleMesh mesh;
    std::vector<ChargedFace> faces;
    /// A/m.
    Eigen::Vector3d magnetisation = Eigen::Vector3d::Zero();
    /// A m^2: magnetisation times volume.
    Eigen::Vector3d moment = Eigen::Vector3d::Zero();
    /// Centroid of the volume.
    Eigen::Vector3d centre = Eigen::Vector3d::Zero();
    /// Radius of the sphere about the centre that holds the mesh.
    double radius = 0;
    /// A: sum of the faces' outlines times their charges' sizes.
    double outlineCharge = 0;
    /// Six points of equal weight with the volume's centroid and second moments.
    std::array<Eigen::Vector3d, 6> massPoints;
    Eigen::AlignedBox3d box;
};

/// Checks and prepares every magnet that has a mesh and a magnetisation.
/// @param origin  becomes the origin of coordinates: near the bodies, so that no digits are lost far from zero
/// @throws SolveError  values that are not finite, corner numbers out of range, a mesh that is open or inside out
std::vector<PreparedMagnet> PrepareMagnets(const std::vector<Body>& bodies, const Eigen::Vector3d& origin);

/// The middle of all meshes.
/// @throws SolveError  coordinates that are not finite
Eigen::Vector3d MiddleOf(const std::vector<Body>& bodies);

} // namespace vantor::solver
