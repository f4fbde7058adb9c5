#pragma once

#include "simulator/model/JsonReader.h"
#include "simulator/model/Materials.h"

#include <nlohmann/json_fwd.hpp>

namespace vantor::model {

/// A project's own materials as part of its file, and back; the reader complains through the JsonReader that it is
/// given.
nlohmann::ordered_json MaterialsToJson(const MaterialTable& materials);
MaterialTable MaterialsFromJson(const JsonReader& json);

} // namespace vantor::model
