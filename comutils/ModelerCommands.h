#pragma once

#include "comutils/Dispatch.h"

#include <string_view>

/// Commands of the 3D modeler's editor that make the geometry. One function per command.
namespace ModelerCommands {

/// "SetModelUnits", without rescaling what is there. The unit's text is passed on unchecked.
bool SetModelUnits(IDispatch* editor, std::string_view units);

/// "Import", with the material names of the file.
bool Import(IDispatch* editor, std::string_view sourceFile);

/// "CreateRegion": the vacuum region around the model, padded by the percentages in the variables for it.
bool CreateRegion(IDispatch* editor);

/// "FitAll".
bool FitAll(IDispatch* editor);

} // namespace ModelerCommands
