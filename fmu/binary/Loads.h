#pragma once

#include "fmu/binary/Inputs.h"

namespace kinora::fmu {

/// Puts what the field does to a port's bodies into its outputs.
/// @param poses, loads  of all bodies, in the scenario's order
void SetLoads(const Port& port, Axes axes, const Movement& movement, const std::vector<scenario::Pose>& poses,
              const std::vector<scenario::Load>& loads, Inputs& values);

} // namespace kinora::fmu
