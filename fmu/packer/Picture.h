#pragma once

#include "scenario/Scenario.h"

#include <string>

namespace kinora::fmu {

/// A picture of a scenario's geometry as drawn, each body in a colour of its own, as a PNG of 256 by 256 points on
/// nothing.
/// @return the file's bytes; empty when the geometry is in a format that only the desktop reads
std::string PictureOf(const scenario::Scenario& scenario);

} // namespace kinora::fmu
