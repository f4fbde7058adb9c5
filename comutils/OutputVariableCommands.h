#pragma once

#include "comutils/Dispatch.h"
#include "interface/IKinoraVeltrixInterface.h"

#include <string>
#include <string_view>

/// Commands of the module of output variables: a body's force in newtons, its torque in millinewton-metres.
namespace OutputVariableCommands {

/// "CreateOutputVariable" for the six output variables of a body.
/// @return false at the first failed call (also for a variable that exists); earlier ones stay
bool CreateOutputVariables(IDispatch* design, const std::string& body, const std::string& setup);

/// "GetOutputVariableValue".
/// @param value  receives the result's eight bytes as a double, whatever the result's type; untouched on failure
bool GetOutputVariableValue(IDispatch* module, std::string_view name, std::string_view solution, double& value);

/// Reads the six output variables of a body.
/// @param result  at the first failed read the earlier ones are set
bool ReadLoads(IDispatch* design, const std::string& body, const std::string& setup,
               IKinoraVeltrixInterface::Result& result);

} // namespace OutputVariableCommands
