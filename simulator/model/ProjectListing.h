#pragma once

#include "simulator/model/Desktop.h"

#include <string>

namespace vantor::model {

/// A project as text for people: its designs with variables, objects, frames, materials, setups, loads, output
/// variables with their last values, the recorded history, reports with their traces and field plots.
std::string ListProject(const Project& project);

} // namespace vantor::model
