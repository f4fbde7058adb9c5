#pragma once

#include <cstddef>
#include <string>

namespace kinora::trace {

/// Appends UTF-16 text as a JSON string. What is no character (half of a pair) becomes the replacement character.
void AppendJson(std::string& out, const wchar_t* text, std::size_t length);
void AppendJson(std::string& out, const std::wstring& text);

/// Appends UTF-8 text as a JSON string.
void AppendJson(std::string& out, const std::string& text);

/// Appends the shortest number that reads back to the same bits; what is not finite becomes a text.
void AppendJson(std::string& out, double number);

/// UTF-16 as UTF-8, by the same rule.
std::string Utf8(const wchar_t* text, std::size_t length);

} // namespace kinora::trace
