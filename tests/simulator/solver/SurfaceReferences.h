#pragma once
// What is true of surfaces, by looking at all their triangles.
#include "simulator/solver/Magnetostatics.h"

#include <array>
#include <vector>

namespace references {

using Triangle = std::array<Eigen::Vector3d, 3>;

std::vector<Triangle> TrianglesOf(const vantor::solver::TriangleMesh& mesh, const Eigen::Isometry3d& pose);

/// The least distance of any two triangles, to about 1e-5 of their size; 0 where they cut each other.
double Distance(const std::vector<Triangle>& a, const std::vector<Triangle>& b);

/// Of a closed surface: 4 pi inside, 0 outside.
double SolidAngle(const std::vector<Triangle>& surface, const Eigen::Vector3d& point);

} // namespace references
