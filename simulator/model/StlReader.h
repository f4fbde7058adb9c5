#pragma once

#include "simulator/model/ImportedGeometry.h"

#include <string>

namespace vantor::model {

/// Reads the solids of an STL file, binary or text. A text file may hold several solids; a binary one holds one.
/// The arguments are those of ReadObj.
/// @throws GeometryFileError for a file that is bad.
ImportedGeometry ReadStl(const std::string& source, const std::string& fileName, const std::string& defaultName);

} // namespace vantor::model
