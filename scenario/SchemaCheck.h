#pragma once

#include "scenario/JsonLocations.h"

#include <nlohmann/json_fwd.hpp>

namespace kinora::scenario {

/// Checks a document against the published schema (host/scenario.schema.json, built into the program).
/// @throws InputError  one line per finding, each with file, line and JSON pointer
void CheckAgainstSchema(const nlohmann::json& document, const JsonLocations& locations, const std::string& fileName);

} // namespace kinora::scenario
