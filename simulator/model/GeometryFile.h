#pragma once

#include "simulator/model/ImportedGeometry.h"

#include <filesystem>

namespace vantor::model {

/// Reads a geometry file by its extension (.obj or .stl, in any letter case).
/// @throws GeometryFileError for a file that is missing, unreadable, of another kind or bad.
ImportedGeometry ReadGeometryFile(const std::filesystem::path& path);

} // namespace vantor::model
