#pragma once

#include <Eigen/Core>
#include <array>
#include <vector>

namespace vantor::model {

/// Cuts a planar polygon into triangles by ear clipping, and appends these.
/// @param corners indices into `vertices`, at least three.
/// @throws MeshError when the polygon has no area or crosses itself.
void AppendTriangulated(const std::vector<int>& corners, const std::vector<Eigen::Vector3d>& vertices,
                        std::vector<std::array<int, 3>>& triangles);

} // namespace vantor::model
