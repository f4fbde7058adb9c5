#pragma once

#include <string>
#include <string_view>

namespace kinora::programs {

/// UTF-8 from UTF-16. What is no character, half of a pair for one, becomes the replacement character.
std::string Utf8FromWide(std::wstring_view text);

/// UTF-16 from UTF-8, by the same rule.
std::wstring WideFromUtf8(std::string_view text);

/// The system's ANSI code page from UTF-16. Characters that it lacks are replaced by others, never by similar ones; the
/// way back tells.
std::string AnsiFromWide(std::wstring_view text);

/// UTF-16 from the system's ANSI code page.
std::wstring WideFromAnsi(std::string_view text);

} // namespace kinora::programs
