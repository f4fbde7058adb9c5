#pragma once

#include "scenario/Node.h"
#include "scenario/ScenarioReader.h"

namespace kinora::scenario {

/// Compares the names of units, objects and materials with each other and with the geometry file, as far as that can be
/// read. Objects that a body cannot have are reported; what can be run but looks like a slip becomes a warning of the
/// scenario.
/// @param root      the document
/// @param scenario  read as far as files, desktop, materials and bodies
void CheckGeometry(const Node& root, Purpose purpose, Scenario& scenario);

} // namespace kinora::scenario
