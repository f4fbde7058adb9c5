#pragma once

#include "simulator/model/JsonReader.h"
#include "simulator/model/Materials.h"

#include <nlohmann/json_fwd.hpp>

namespace vantor::model {

/// A project's own materials as part of its file, and back; the reader complains through the JsonReader that it is
/// given.
nlohmann::ordered_json MaterialsToJson(const MaterialTable& materials);
MaterialTable MaterialsFromJson(const JsonReader& json);

/// Reads what "relativePermeability" and "bhCurve" of a material's entry say; with a curve the former may be left out.
/// Complains about a curve that is none, but takes any number as a permeability.
void PermeabilityFromJson(const JsonReader& entry, Material& material);

} // namespace vantor::model
