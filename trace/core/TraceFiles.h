#pragma once

#include <filesystem>
#include <vector>

namespace kinora::trace {

/// The files of one trace, in order: the given one, and when that is the first part the ones that follow it
/// (NAME.jsonl, NAME.5.jsonl, NAME.6.jsonl: a long trace loses its middle).
std::vector<std::filesystem::path> PartsOf(const std::filesystem::path& file);

/// The trace in a folder that was written last, by its first part; empty when there is none.
std::filesystem::path NewestTrace(const std::filesystem::path& folder);

} // namespace kinora::trace
