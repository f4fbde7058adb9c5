#pragma once

#include "scenario/Node.h"
#include "scenario/Scenario.h"

namespace kinora::scenario {

/// Reports joints that nothing resists where forces move them, and moments of inertia that no rigid body has.
/// @param root      the whole document
/// @param scenario  bodies and joints as they were read from it
void CheckInertia(const Node& root, const Scenario& scenario);

} // namespace kinora::scenario
