#pragma once

#include "simulator/model/Design.h"
#include "simulator/model/JsonReader.h"

#include <nlohmann/json_fwd.hpp>

namespace vantor::model {

/// What a design's solves and reports left behind as part of a project file, and back; the reader complains through the
/// JsonReader that it is given.
nlohmann::ordered_json ResultsToJson(const Design& design);
void ResultsFromJson(const JsonReader& json, Design& design);

} // namespace vantor::model
