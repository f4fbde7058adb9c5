#pragma once

#include "simulator/model/ImportedGeometry.h"

#include <string>

namespace vantor::model {

/// Reads the solids of a Wavefront OBJ text: objects (`o`), or groups (`g`) where there are no objects, with their
/// `usemtl` materials, polygons of any shape, negative indices, comments and any line ends.
/// @param source      the text of the file.
/// @param fileName    name for messages.
/// @param defaultName name of faces that stand in no object and no group.
/// @throws GeometryFileError for a file that is bad.
ImportedGeometry ReadObj(const std::string& source, const std::string& fileName, const std::string& defaultName);

} // namespace vantor::model
