#pragma once

#include "comutils/Dispatch.h"

#include <string>
#include <string_view>

/// Commands of a project. One function per command.
namespace ProjectCommands {

/// "SaveAs". @param overwrite  false lets the desktop refuse a path that exists
bool SaveAs(IDispatch* project, std::string_view path, bool overwrite);

/// "Save".
bool Save(IDispatch* project);

/// "Close".
bool Close(IDispatch* project);

/// "GetPath", the folder of the project's file, with a separator at its end.
/// @return false when the call fails or gives no text
bool GetPath(IDispatch* project, std::string& folder);

/// "InsertDesign", a magnetostatic one.
bool InsertDesign(IDispatch* project, std::string_view designName);

/// "SetActiveDesign". @return the design; null unless the result is an object
CObject SetActiveDesign(IDispatch* project, std::string_view designName);

/// "GetDesign". @return null unless the result is an object
CObject GetDesign(IDispatch* project, std::string_view designName);

/// "GetDefinitionManager". @return null unless the result is an object
CObject GetDefinitionManager(IDispatch* project);

} // namespace ProjectCommands
