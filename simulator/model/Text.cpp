#include "simulator/model/Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <system_error>

namespace vantor::model {

std::string FormatNumber(double value) {
    std::array<char, 32> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return std::string(buffer.data(), result.ptr);
}

bool ParseNumber(std::string_view text, double& value) {
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
        if (!text.empty() && text.front() == '-') {
            return false;
        }
    }
    double parsed = 0.0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), parsed);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size() || !std::isfinite(parsed)) {
        return false;
    }
    value = parsed;
    return true;
}

std::string_view Trim(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n\f\v";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::vector<std::string> Split(std::string_view text, char separator) {
    std::vector<std::string> fields;
    for (;;) {
        const auto end = text.find(separator);
        fields.emplace_back(text.substr(0, end));
        if (end == std::string_view::npos) {
            return fields;
        }
        text.remove_prefix(end + 1);
    }
}

std::string Unquoted(const std::string& text) {
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"') {
        return text.substr(1, text.size() - 2);
    }
    return text;
}

std::string Quoted(std::string_view text) {
    std::string quoted;
    quoted.reserve(text.size() + 2);
    quoted += '"';
    quoted += text;
    quoted += '"';
    return quoted;
}

bool IsDigit(char character) {
    return character >= '0' && character <= '9';
}

bool IsNameStart(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') || character == '_' ||
           static_cast<unsigned char>(character) >= 0x80;
}

bool IsNamePart(char character) {
    return IsNameStart(character) || IsDigit(character);
}

bool IsIdentifier(std::string_view text) {
    return !text.empty() && IsNameStart(text.front()) && std::all_of(text.begin(), text.end(), IsNamePart);
}

std::string QuotedList(const std::vector<std::string>& names, std::size_t limit) {
    std::string list;
    const std::size_t shown = std::min(names.size(), limit);
    for (std::size_t i = 0; i < shown; ++i) {
        list += (i == 0 ? "" : ", ") + Quoted(names[i]);
    }
    if (shown < names.size()) {
        list += " and " + std::to_string(names.size() - shown) + " more";
    }
    return list;
}

} // namespace vantor::model
