#pragma once
// What every mesh of a material must be: finite, closed, its triangles counter-clockwise seen from outside.
#include "simulator/solver/Magnetostatics.h"

#include <array>
#include <string>

namespace vantor::solver {

/// @param label  for messages: magnet and body by name
/// @throws SolveError  vertices that are not finite, corner numbers out of range
void CheckVertices(const TriangleMesh& mesh, const std::string& label);

/// The three corners of a triangle.
inline std::array<Eigen::Vector3d, 3> CornersOf(const TriangleMesh& mesh, const std::array<int, 3>& triangle) {
    const auto corner = [&](std::size_t i) { return mesh.vertices[static_cast<std::size_t>(triangle[i])]; };
    return {corner(0), corner(1), corner(2)};
}

/// Calls visit(corners) for the triangles that have an area.
template <class Visit>
void ForTriangles(const TriangleMesh& mesh, Visit visit) {
    for (const auto& triangle : mesh.triangles) {
        const std::array<Eigen::Vector3d, 3> corners = CornersOf(mesh, triangle);
        if ((corners[1] - corners[0]).cross(corners[2] - corners[0]).squaredNorm() > 0) {
            visit(corners);
        }
    }
}

/// Of the triangles that have an area.
/// @pre the mesh has passed CheckVertices
Eigen::AlignedBox3d BoxOf(const TriangleMesh& mesh);

/// Sums over the tetrahedra between a mesh's triangles and a point near it.
struct VolumeMoments {
    double volume = 0, area = 0;
    Eigen::Vector3d areaVector = Eigen::Vector3d::Zero();
    Eigen::Vector3d first = Eigen::Vector3d::Zero();
    Eigen::Matrix3d second = Eigen::Matrix3d::Zero();
};

/// @pre the mesh has passed CheckVertices
VolumeMoments MomentsOf(const TriangleMesh& mesh, const Eigen::Vector3d& reference);

/// @throws SolveError  a mesh that is open or inside out
void CheckClosed(const VolumeMoments& moments, const std::string& label);

} // namespace vantor::solver
