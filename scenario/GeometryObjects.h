#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace kinora::scenario {

/// The objects that a desktop makes of a geometry file, by the names in it. Reads names and nothing else, which is
/// quick.
///
/// Wavefront OBJ: objects (`o`) with faces, or groups (`g`) where there are no objects. STL: the solids of a text file.
/// What has no name is called after the file.
///
/// @return each name once, in the order of the file; nothing when the format is another or the file makes no sense
std::optional<std::vector<std::string>> GeometryObjects(const std::filesystem::path& file);

} // namespace kinora::scenario
