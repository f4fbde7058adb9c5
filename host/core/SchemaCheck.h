#pragma once

#include "host/core/JsonPlaces.h"

#include <nlohmann/json_fwd.hpp>

namespace kinora::host {

/// Checks a document against the published schema (host/scenario.schema.json, built into the program).
/// @throws InputError  one line per finding, each with file, line and JSON pointer
void CheckAgainstSchema(const nlohmann::json& document, const JsonPlaces& places, const std::string& fileName);

} // namespace kinora::host
