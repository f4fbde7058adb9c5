#pragma once

#include "simulator/model/Desktop.h"
#include "simulator/model/JsonReader.h"

#include <memory>
#include <nlohmann/json_fwd.hpp>

namespace vantor::model {

// The parts of a project file. Each ToJson has its FromJson; readers complain through the JsonReader they are given.

nlohmann::ordered_json MaterialsToJson(const MaterialTable& materials);
MaterialTable MaterialsFromJson(const JsonReader& json);

nlohmann::ordered_json DesignToJson(const Design& design);
std::shared_ptr<Design> DesignFromJson(const JsonReader& json);

nlohmann::ordered_json ModelerToJson(const Modeler& modeler);
void ModelerFromJson(const JsonReader& json, Modeler& modeler);

nlohmann::ordered_json ResultsToJson(const Design& design);
void ResultsFromJson(const JsonReader& json, Design& design);

} // namespace vantor::model
