#pragma once

#include <filesystem>
#include <string>

namespace vantor::model {

/// A path from UTF-8 text, and back. Paths are never built from narrow text in another encoding.
std::filesystem::path PathFromUtf8(const std::string& text);

/// From the root, without "." and "..", with the system's separators. A network path ("\\server\share\file") stays as
/// it is: the standard libraries of some compilers take it for one of the current drive.
std::filesystem::path WholePath(const std::string& text);
std::string Utf8(const std::filesystem::path& path);

/// The whole content of a file, byte for byte.
/// @throws DesktopError (ReadFile) naming the file when it is missing or cannot be read.
std::string ReadWholeFile(const std::filesystem::path& path);

/// Replaces a file as a whole: writes a temporary file beside it and renames it. What stood there stays intact when
/// anything fails.
/// @throws DesktopError (WriteFile) naming the file.
void WriteWholeFile(const std::filesystem::path& path, const std::string& content);

} // namespace vantor::model
