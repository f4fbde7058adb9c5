#pragma once
// Pairs of magnets out of the meshes of tests/meshes, in places that are hard on a solver, and what load the second one
// has. The reference values are numbers, since they take minutes.
#include "tests/simulator/solver/References.h"

#include <filesystem>
#include <string>
#include <vector>

namespace meshes {

using SharedMesh = std::shared_ptr<const vantor::solver::TriangleMesh>;

/// A mesh file in millimetres, read by the simulator's reader.
/// @throws vantor::model::GeometryFileError
SharedMesh ReadFile(const std::filesystem::path& path);

/// tests/meshes/NAME-2k.stl; read once.
SharedMesh Small(const std::string& name);

/// The mesh with another size and with its triangles in another order, the same one every time.
SharedMesh Scaled(const SharedMesh& mesh, double factor);
SharedMesh Shuffled(const SharedMesh& mesh);

/// Turned by an angle about an axis through the own origin, which then lies at `to`. Millimetres and degrees.
Eigen::Isometry3d Place(const Eigen::Vector3d& to, double degrees = 0,
                        const Eigen::Vector3d& axis = Eigen::Vector3d::UnitZ());

/// A body of one magnet. The flux density is the magnetisation times mu0, T, in the mesh's axes.
vantor::solver::Body Body(const std::string& name, const SharedMesh& mesh, const Eigen::Vector3d& remanence,
                          const Eigen::Isometry3d& pose = Eigen::Isometry3d::Identity());

struct Case {
    std::string name;
    /// Source and target.
    std::vector<vantor::solver::Body> bodies;
    /// On the target. `vantor-meshes reference` prints these values anew: by charges, triangle by triangle, which
    /// surface currents confirm to 5e-7 of the force, and of force times 10 mm for the torque.
    references::Load load;
};
std::vector<Case> Cases();

} // namespace meshes
