#pragma once

#include <cstdio>
#include <string>

namespace kinora::programs {

/// Writes a text at once. A console of Windows gets it as wide text, whatever its code page and font; a file or a pipe
/// gets the bytes. Where the stream shows colours, a leading "error:" is red and a leading "warning:" yellow.
/// @param text  UTF-8; begins and ends with whole characters
/// @return false when not all of it could be written
bool Print(std::FILE* stream, const std::string& text);

/// Whether a stream is a terminal with colours whose user does not mind them (the variable NO_COLOR).
bool ShowsColours(std::FILE* stream);

} // namespace kinora::programs
