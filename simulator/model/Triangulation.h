#pragma once

#include <Eigen/Core>
#include <array>
#include <vector>

namespace vantor::model {

/// Cuts a planar polygon into triangles by ear clipping.
/// @param corners indices into `vertices`, at least three.
/// @throws MeshError when the polygon has no area or crosses itself.
std::vector<std::array<int, 3>> Triangulated(const std::vector<int>& corners,
                                             const std::vector<Eigen::Vector3d>& vertices);

} // namespace vantor::model
