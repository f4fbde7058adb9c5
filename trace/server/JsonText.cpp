#include "trace/server/JsonText.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace kinora::trace {
namespace {

void AppendUtf8(std::string& out, std::uint32_t character) {
    if (character < 0x80) {
        out += static_cast<char>(character);
        return;
    }
    if (character < 0x800) {
        out += static_cast<char>(0xC0 | (character >> 6));
    } else {
        if (character < 0x10000) {
            out += static_cast<char>(0xE0 | (character >> 12));
        } else {
            out += static_cast<char>(0xF0 | (character >> 18));
            out += static_cast<char>(0x80 | ((character >> 12) & 0x3F));
        }
        out += static_cast<char>(0x80 | ((character >> 6) & 0x3F));
    }
    out += static_cast<char>(0x80 | (character & 0x3F));
}

bool IsHighHalf(wchar_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsLowHalf(wchar_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

void AppendEscaped(std::string& out, char c) {
    constexpr const char* digits = "0123456789abcdef";
    const auto code = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
        out += '\\';
        out += c;
    } else if (code < 0x20) {
        out += "\\u00";
        out += digits[code >> 4];
        out += digits[code & 15];
    } else {
        out += c;
    }
}

} // namespace

std::string Utf8(const wchar_t* text, std::size_t length) {
    constexpr std::uint32_t replacement = 0xFFFD;
    std::string out;
    out.reserve(length);
    for (std::size_t i = 0; i < length; ++i) {
        if (IsHighHalf(text[i]) && i + 1 < length && IsLowHalf(text[i + 1])) {
            AppendUtf8(out, 0x10000 + ((static_cast<std::uint32_t>(text[i]) - 0xD800) << 10) +
                                (static_cast<std::uint32_t>(text[i + 1]) - 0xDC00));
            ++i;
        } else {
            AppendUtf8(out, IsHighHalf(text[i]) || IsLowHalf(text[i]) ? replacement : text[i]);
        }
    }
    return out;
}

void AppendJson(std::string& out, const std::string& text) {
    out += '"';
    for (const char c : text) {
        AppendEscaped(out, c);
    }
    out += '"';
}

void AppendJson(std::string& out, const wchar_t* text, std::size_t length) {
    AppendJson(out, Utf8(text, length));
}

void AppendJson(std::string& out, const std::wstring& text) {
    AppendJson(out, text.data(), text.size());
}

void AppendJson(std::string& out, double number) {
    if (!std::isfinite(number)) {
        out += std::isnan(number) ? "\"nan\"" : number > 0.0 ? "\"inf\"" : "\"-inf\"";
        return;
    }
    std::array<char, 32> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    const std::string text(digits.data(), end);
    // A real number stays one for readers that tell the two apart.
    out += text.find_first_of(".e") == std::string::npos ? text + ".0" : text;
}

} // namespace kinora::trace
