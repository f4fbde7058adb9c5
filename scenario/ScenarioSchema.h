#pragma once

#include <string_view>

namespace kinora::scenario {

/// The text of host/scenario.schema.json, built into the program.
std::string_view ScenarioSchema();

} // namespace kinora::scenario
