#pragma once

#include "scenario/Scenario.h"

#include <string>

namespace kinora::report {

enum class MaterialKind { Magnet, Iron, Other };

/// What an object with a material is, as far as the scenario tells: what materials are made of only the desktop knows.
/// A magnet is what has a direction, there or in another object of the same material, or is named as magnets are. Other
/// is what is named as something that the field does not see. All else is iron.
MaterialKind KindOf(const scenario::Scenario& scenario, const std::string& object);

} // namespace kinora::report
