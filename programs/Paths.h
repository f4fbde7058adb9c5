#pragma once

#include <filesystem>

namespace kinora::programs {

// On Windows the standard libraries of some compilers take a network path ("\\server\share\file") for one of the
// current drive. These functions do not. They also leave away the mark of paths that are handed over to the system as
// they are ("\\?\C:\folder", "\\?\UNC\server\share"), of which those libraries know nothing.

/// A path from its root.
std::filesystem::path AbsolutePath(const std::filesystem::path& path);

/// A path from its root, without "." and "..", and with the system's separators only.
std::filesystem::path NormalPath(const std::filesystem::path& path);

/// A path as seen from a folder; one that has a root is itself.
std::filesystem::path Joined(const std::filesystem::path& folder, const std::filesystem::path& path);

} // namespace kinora::programs
