#pragma once

#include "comutils/Dispatch.h"

#include <string>
#include <vector>

/// Commands of the module of force and torque calculations.
namespace LoadCommands {

/// "AssignForce": the body's force, in the axes of its frame.
bool AssignForce(IDispatch* module, const std::string& body, const std::vector<std::string>& objects);

/// "AssignTorque" for each axis of the body's frame.
/// @return false at the first failed call; earlier torques stay
bool AssignTorque(IDispatch* module, const std::string& body, const std::vector<std::string>& objects);

} // namespace LoadCommands
