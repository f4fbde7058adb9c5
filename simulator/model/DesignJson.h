#pragma once

#include "simulator/model/Design.h"
#include "simulator/model/JsonReader.h"

#include <memory>
#include <nlohmann/json_fwd.hpp>

namespace vantor::model {

/// A design as part of a project file, and back; the reader complains through the JsonReader that it is given.
nlohmann::ordered_json DesignToJson(const Design& design);
std::shared_ptr<Design> DesignFromJson(const JsonReader& json);

} // namespace vantor::model
