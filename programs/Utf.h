#pragma once

#include <string>
#include <string_view>

namespace kinora::programs {

/// UTF-8 from wide text, which is UTF-16 on Windows and UTF-32 elsewhere. What is no character, half of a pair for one,
/// becomes the replacement character.
std::string Utf8FromWide(std::wstring_view text);

/// Wide text from UTF-8, by the same rule.
std::wstring WideFromUtf8(std::string_view text);

/// The system's ANSI code page, UTF-8 but on Windows, from wide text. Characters that it lacks are replaced by others,
/// never by similar ones; the way back tells.
std::string AnsiFromWide(std::wstring_view text);

/// Wide text from the system's ANSI code page.
std::wstring WideFromAnsi(std::string_view text);

} // namespace kinora::programs
