#pragma once

#include "scenario/Node.h"
#include "scenario/Rigid.h"

#include <cstddef>

namespace kinora::scenario {

/// Reads {"axis", "angle"}, or {"axes"}: rows are the axes of B seen from W.
/// @return R_WB; what is wrong is reported, and NaN where no rotation can be made of it
Matrix ReadRotation(const Node& node);

/// Reads w, x, y and z from a list, from an index on.
/// @return of unit length; what is wrong is reported
Quaternion ReadQuaternion(const Node& node, std::size_t first = 0);

} // namespace kinora::scenario
