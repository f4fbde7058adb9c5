#pragma once

#include "scenario/JsonLocations.h"
#include "scenario/Overrides.h"

#include <nlohmann/json_fwd.hpp>

namespace kinora::scenario {

/// The value as JSON.
nlohmann::json ValueOf(const Override& change);

/// Puts values into a document, one after the other. That they suit is for the schema to say.
/// @param locations  of the document; names from now on where the values come from
/// @throws InputError  one line for each path that leads nowhere
void Apply(const Overrides& overrides, const std::string& fileName, nlohmann::json& document, JsonLocations& locations);

} // namespace kinora::scenario
