#pragma once

#include <Eigen/Core>
#include <array>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace vantor::model {

/// A triangle surface. Triangles are counter-clockwise seen from outside; indices begin at 0.
struct Mesh {
    std::vector<Eigen::Vector3d> vertices;
    std::vector<std::array<int, 3>> triangles;
};

/// A surface that does not bound a solid; `Triangle()` is the offending triangle, or -1 for the whole.
class MeshError : public std::runtime_error {
public:
    MeshError(const std::string& reason, int triangle) : std::runtime_error(reason), m_triangle(triangle) {}

    int Triangle() const { return m_triangle; }

private:
    int m_triangle;
};

/// The mesh of these triangles with vertices at exactly equal positions made one, and unused vertices dropped.
/// Triangles keep their order and number. Takes a time in proportion to the number of triangles.
Mesh Welded(const std::vector<Eigen::Vector3d>& vertices, const std::vector<std::array<int, 3>>& triangles);

/// Signed volume by the divergence theorem; positive for outward orientation.
double SignedVolume(const Mesh& mesh);

/// Makes sure that a welded mesh bounds a solid: finite vertices, no degenerate triangle, every edge shared by exactly
/// two triangles that run along it in opposite directions, shells oriented outward and cavities inward.
/// A mesh that is inside out as a whole is turned.
/// @return true when the mesh was turned.
/// @throws MeshError with the reason.
bool MakeSolid(Mesh& mesh);

/// Fingerprint of vertices and triangles (64-bit FNV-1a): equal meshes have equal ones.
std::uint64_t Fingerprint(const Mesh& mesh);

/// Axis-aligned box; empty (lower > upper) until the first point.
struct Box {
    Eigen::Vector3d lower = Eigen::Vector3d::Constant(1e300);
    Eigen::Vector3d upper = Eigen::Vector3d::Constant(-1e300);

    void Add(const Eigen::Vector3d& point);
    /// Its surface belongs to it.
    bool Contains(const Eigen::Vector3d& point) const;
    bool IsEmpty() const { return lower.x() > upper.x(); }
};

/// A closed box as a mesh of twelve triangles.
Mesh BoxMesh(const Box& box);

} // namespace vantor::model
