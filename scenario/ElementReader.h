#pragma once

#include "scenario/Node.h"
#include "scenario/Scenario.h"
#include "scenario/UniqueNames.h"

namespace kinora::scenario {

/// Reads springs, bushings and loads.
/// @param root      the whole document
/// @param scenario  bodies and joints as they were read from it
void ReadElements(const Node& root, UniqueNames& names, Scenario& scenario);

} // namespace kinora::scenario
