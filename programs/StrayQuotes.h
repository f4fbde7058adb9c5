#pragma once

#include <string>
#include <vector>

namespace kinora::programs {

/// Arguments as they were meant where a folder ends in a backslash before the closing quote, "C:\my folder\": Windows
/// takes the two for a quote that belongs to the text, and goes on with the argument. The last one can be mended.
/// @throws InputError  others have become part of the argument
std::vector<std::string> WithoutStrayQuotes(std::vector<std::string> words);

} // namespace kinora::programs
