#pragma once

#include "simulator/model/Desktop.h"

#include <string>

namespace vantor::model {

/// A project as text for people: its designs with variables, objects, frames, materials, setups, loads, output
/// variables with their last values, the recorded history, reports with their traces and field plots.
/// @param isFull  all rows of a long history, not only the first and the last few
std::string ListProject(const Project& project, bool isFull = false);

} // namespace vantor::model
