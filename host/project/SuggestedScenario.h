#pragma once

#include "host/project/GeometrySurvey.h"

namespace kinora::host {

/// A complete scenario to start from, with comments: one solve of a geometry as it is drawn, one body for each object.
/// @param geometry  the file as the scenario is to name it
/// @throws InputError  no scenario can have it: a name is no UTF-8, or coordinates are larger than any length
std::string SuggestedScenario(const std::filesystem::path& geometry, const std::vector<SurveyedObject>& objects);

/// What a desktop will refuse of the objects, a line for each.
std::vector<std::string> GeometryWarnings(const std::filesystem::path& geometry,
                                          const std::vector<SurveyedObject>& objects);

} // namespace kinora::host
