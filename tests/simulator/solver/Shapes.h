#pragma once
// Magnets for the tests: blocks and prisms with any number of sides, with or without a bore.
#include "simulator/solver/Magnetostatics.h"

#include <memory>
#include <string>
#include <vector>

namespace shapes {

/// A block: edge lengths along its own axes, turned and then moved. Metres and A/m; the magnetisation is global.
struct Block {
    Eigen::Vector3d centre = Eigen::Vector3d::Zero();
    Eigen::Vector3d size = Eigen::Vector3d::Ones();
    Eigen::Vector3d magnetisation = Eigen::Vector3d::UnitZ();
    Eigen::Matrix3d rotation = Eigen::Matrix3d::Identity();
};

/// An upright prism over a regular polygon about the z axis, with a bore of the same kind when innerRadius > 0.
struct Prism {
    Eigen::Vector3d centre = Eigen::Vector3d::Zero();
    /// Radii of the corners.
    double radius = 1, innerRadius = 0, height = 1;
    int sides = 16;
    Eigen::Vector3d magnetisation = Eigen::Vector3d::UnitZ();
};

/// A block of 10 mm x 10 mm x 10 mm.
Block Cube(const Eigen::Vector3d& centre, const Eigen::Vector3d& magnetisation);

Eigen::Matrix3d Turn(double angle, const Eigen::Vector3d& axis);

vantor::solver::TriangleMesh MeshOf(const Block& block);
vantor::solver::TriangleMesh MeshOf(const Prism& prism);
/// The same surface with every triangle cut into four, `times` times.
vantor::solver::TriangleMesh Finer(const vantor::solver::TriangleMesh& mesh, int times);
/// The same surface with three corners of its own for every triangle, as in files without shared corners.
vantor::solver::TriangleMesh Unshared(const vantor::solver::TriangleMesh& mesh);
/// A ball of unit radius, from an octahedron.
vantor::solver::TriangleMesh Ball(int times);

inline std::shared_ptr<const vantor::solver::TriangleMesh> Shared(vantor::solver::TriangleMesh mesh) {
    return std::make_shared<const vantor::solver::TriangleMesh>(std::move(mesh));
}
/// Gives a magnet a mesh of its own, to be changed before the magnet is used.
vantor::solver::TriangleMesh& OwnMesh(vantor::solver::Magnet& magnet);

/// A body of one magnet.
template <class Shape>
vantor::solver::Body BodyOf(const std::string& name, const Shape& shape) {
    return {name, {{name + "_magnet", Shared(MeshOf(shape)), shape.magnetisation}}};
}

/// One half of an axial coupling: blocks on a circle about z, magnetised along z in turns.
std::vector<Block> CouplingHalf(int blocks, double angle, double height);
vantor::solver::Body BodyOf(const std::string& name, const std::vector<Block>& blocks);

} // namespace shapes
