#pragma once

#include <string_view>

namespace kinora::host {

/// The text of host/scenario.schema.json, built into the program.
std::string_view ScenarioSchema();

} // namespace kinora::host
