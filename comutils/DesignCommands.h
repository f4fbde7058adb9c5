#pragma once

#include "comutils/Dispatch.h"

#include <string_view>

/// Commands of a design, but for its variables, setups and results. One function per command.
namespace DesignCommands {

/// "SetDesignSettings": allows an object to override the material of another one that it lies in.
bool SetDesignSettings(IDispatch* design);

/// "GetDesignType".
/// @param type  receives the result, of whatever type
/// @return false when the call fails
bool GetDesignType(IDispatch* design, CValue& type);

/// "SetActiveEditor". @return the editor; null unless the result is an object
CObject SetActiveEditor(IDispatch* design, std::string_view editor);

/// "GetModule". @return null unless the result is an object
CObject GetModule(IDispatch* design, std::string_view module);

} // namespace DesignCommands
