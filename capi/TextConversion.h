#pragma once

#include <string>
#include <string_view>

namespace kinora::capi {

/// @param text  UTF-8
/// @param what  names the text in errors, for example "the project's path"
/// @return the text in the system's ANSI code page, which the library takes
/// @throws Error  KV_BAD_TEXT: it is no UTF-8, or the code page lacks a character; KV_BAD_ARGUMENT: it is null
std::string ToAnsi(const char* text, std::string_view what);

/// @param path  UTF-8; a relative path begins in the process's current folder
/// @param what  as above
/// @return the absolute path in the ANSI code page; separators and everything else stay as they are
/// @throws Error  as above; KV_BAD_ARGUMENT: it is empty
std::string ToAnsiPath(const char* path, std::string_view what);

/// @param text  in the system's ANSI code page
std::string ToUtf8(std::string_view text);

} // namespace kinora::capi
