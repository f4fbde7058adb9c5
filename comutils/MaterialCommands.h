#pragma once

#include "comutils/Dispatch.h"

#include <string>
#include <string_view>
#include <vector>

/// Commands that concern the materials of a project and of the modeler's objects.
namespace MaterialCommands {

/// "AssignMaterial" of the editor.
bool AssignMaterial(IDispatch* editor, std::string_view object, const std::string& material);

/// "CloneMaterial" of the definition manager. @return true only when the desktop answers true
bool CloneMaterial(IDispatch* definitionManager, std::string_view source, std::string_view newName);

/// "AddMaterial" of a project: gives it a definition of its own of a library material.
bool AddMaterial(IDispatch* project, std::string_view material);

/// @return the property "Material" of the editor's object, as the desktop gives it: a text in quotes; nothing
/// (VT_EMPTY)
///         when the object is missing or has none
CValue MaterialOf(IDispatch* editor, std::string_view object);

/// @return the names, in the order given, of the objects whose material is a text other than vacuum
std::vector<std::string> NonVacuumObjects(IDispatch* editor, const std::vector<std::string>& objects);

/// Has every top-level object of the editor that can be solved inside be so.
/// @return false at the first missing object or failed write
bool SetSolveInside(IDispatch* editor);

} // namespace MaterialCommands
