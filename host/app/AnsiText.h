#pragma once

#include <string>

namespace kinora::host {

/// Text for the interface: UTF-8 in, the system's ANSI code page out, which is UTF-8 elsewhere than on Windows.
/// @throws InputError  a character has no counterpart in the code page, or the text is no UTF-8
std::string AnsiFromUtf8(const std::string& text);

/// Text from the interface: the system's ANSI code page in, UTF-8 out.
std::string Utf8FromAnsi(const std::string& text);

} // namespace kinora::host
