#pragma once

#include <string>

namespace kinora::host {

/// Text for the interface: UTF-8 in, the system's ANSI code page out.
/// @throws InputError  a character has no counterpart in the code page
std::string AnsiFromUtf8(const std::string& text);

/// Text from the interface: the system's ANSI code page in, UTF-8 out.
std::string Utf8FromAnsi(const std::string& text);

} // namespace kinora::host
