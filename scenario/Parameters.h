#pragma once

#include "scenario/Expression.h"
#include "scenario/Node.h"
#include "scenario/Scenario.h"

namespace kinora::scenario {

/// Reads and evaluates "parameters". One may use others, wherever they stand.
/// @param node  the value of "parameters"
/// @return in the order of their names; incomplete when anything has been reported
std::vector<Parameter> ReadParameters(const Node& node);

/// What formulas name.
NamedValues ValuesOf(const std::vector<Parameter>& parameters);

} // namespace kinora::scenario
