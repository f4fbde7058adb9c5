#include "trace/server/JsonText.h"

#include "programs/Utf.h"

#include <array>
#include <charconv>
#include <cmath>

namespace kinora::trace {
namespace {

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

void AppendJson(std::string& out, const std::string& text) {
    out += '"';
    for (const char c : text) {
        AppendEscaped(out, c);
    }
    out += '"';
}

void AppendJson(std::string& out, std::wstring_view text) {
    AppendJson(out, programs::Utf8FromWide(text));
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
