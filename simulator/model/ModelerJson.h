#pragma once

#include "simulator/model/JsonReader.h"
#include "simulator/model/Modeler.h"

#include <nlohmann/json_fwd.hpp>

namespace vantor::model {

/// The geometry of a design as part of a project file, and back; the reader complains through the JsonReader that it is
/// given.
nlohmann::ordered_json ModelerToJson(const Modeler& modeler);
void ModelerFromJson(const JsonReader& json, Modeler& modeler);

} // namespace vantor::model
