#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace kinora::scenario {

/// The candidate that differs least from a name; empty when none is close enough to be what was meant.
std::string NearestName(std::string_view name, const std::vector<std::string>& candidates);

/// " Did you mean \"...\"?" with the nearest candidate, or nothing.
std::string Suggestion(std::string_view name, const std::vector<std::string>& candidates);

/// "a", "b" or "c", in quotes.
std::string Alternatives(const std::vector<std::string>& texts);

/// A whole file.
/// @throws InputError  it cannot be read
std::string ReadFile(const std::filesystem::path& file);

/// Writes a file next to the wanted one and renames it, so that the wanted one is never half-written. Waits a second at
/// most for others who hold it.
/// @throws RunError  it cannot be written; the wanted one is as it was, and nothing lies beside it
void WriteWholeFile(const std::filesystem::path& file, const std::string& content);

/// Paths from and to UTF-8, whatever the system's narrow encoding.
std::filesystem::path PathFromUtf8(const std::string& text);
std::string Utf8FromPath(const std::filesystem::path& path);

} // namespace kinora::scenario
