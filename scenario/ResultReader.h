#pragma once

#include "scenario/Node.h"
#include "scenario/Scenario.h"

namespace kinora::scenario {

/// Reads "results". Whether their columns are there is for who writes them to say.
/// @param node  the value of "results"
/// @return in the order of their names
std::vector<WantedResult> ReadResults(const Node& node, const Stepping& stepping);

} // namespace kinora::scenario
