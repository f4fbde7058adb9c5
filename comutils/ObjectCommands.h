#pragma once

#include "comutils/Dispatch.h"

#include <string>
#include <string_view>
#include <vector>

/// Commands that objects of many kinds know: projects, designs, editors, modeler objects, materials, lists of children.
/// One function per command.
namespace ObjectCommands {

/// "GetName" of a project or a design. @return false when the call fails or gives no text
bool GetName(IDispatch* object, std::string& name);

/// "GetChildNames".
/// @param names  receives the list as the desktop gives it, to be read when it is needed
/// @return false when the call fails
bool GetChildNames(IDispatch* object, CValue& names);

/// "GetChildNames", read. Without children and after a failed call alike, nothing.
std::vector<std::string> ChildNames(IDispatch* object);

/// "GetChildObject". @return null unless the result is an object
CObject GetChildObject(IDispatch* object, std::string_view name);

/// "GetPropNames".
std::vector<std::string> GetPropNames(IDispatch* object);

/// "GetPropValue". @return the value as the desktop gives it; nothing (VT_EMPTY) on failure
CValue GetPropValue(IDispatch* object, std::string_view property);

/// "SetPropValue".
bool SetPropValue(IDispatch* object, std::string_view property, CValue value);

} // namespace ObjectCommands
