#pragma once

#include "scenario/Node.h"
#include "scenario/Scenario.h"
#include "scenario/UniqueNames.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace kinora::scenario {

std::vector<Body> ReadBodies(const Node& node, UniqueNames& names);

/// The index of the body that a text names; nothing, and reported, where there is none.
std::optional<std::size_t> FindBody(const Node& node, const std::vector<Body>& bodies);

} // namespace kinora::scenario
