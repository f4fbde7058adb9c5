#pragma once

#include <string>
#include <string_view>

namespace kinora::trace {

/// Appends UTF-16 text as a JSON string. What is no character (half of a pair) becomes the replacement character.
void AppendJson(std::string& out, std::wstring_view text);

/// Appends UTF-8 text as a JSON string.
void AppendJson(std::string& out, const std::string& text);

/// Appends the shortest number that reads back to the same bits; what is not finite becomes a text.
void AppendJson(std::string& out, double number);

} // namespace kinora::trace
