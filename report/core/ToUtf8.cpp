#include "report/core/ToUtf8.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace kinora::report {
namespace {

/// Bytes of the well-formed UTF-8 character at the start of a text; 0 when there is none.
std::size_t CharacterLength(std::string_view text) {
    const auto byte = [&text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(0);
    if (lead < 0x80) {
        return 1;
    }
    const std::size_t length = lead >= 0xC2 && lead < 0xE0 ? 2 : lead >= 0xE0 && lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
    if (lead < 0xC2 || length == 0 || text.size() < length) {
        return 0;
    }
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80U) {
            return 0;
        }
    }
    // Overlong forms, surrogates and what lies beyond the last character.
    const bool isWrong = (lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xED && byte(1) > 0x9F) ||
                         (lead == 0xF0 && byte(1) < 0x90) || (lead == 0xF4 && byte(1) > 0x8F);
    return isWrong ? 0 : length;
}

bool IsUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = CharacterLength(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

/// Characters of the bytes 80 to 9F; the five that stand for none become the replacement character.
constexpr std::array<std::uint16_t, 32> windows1252 = {0x20AC, 0xFFFD, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                       0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0xFFFD, 0x017D, 0xFFFD,
                                                       0xFFFD, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                       0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0xFFFD, 0x017E, 0x0178};

void Append(std::string& text, unsigned int character) {
    const auto put = [&text](unsigned int value) { text += static_cast<char>(static_cast<unsigned char>(value)); };
    if (character < 0x80) {
        put(character);
    } else if (character < 0x800) {
        put(0xC0U | (character >> 6U));
        put(0x80U | (character & 0x3FU));
    } else {
        put(0xE0U | (character >> 12U));
        put(0x80U | ((character >> 6U) & 0x3FU));
        put(0x80U | (character & 0x3FU));
    }
}

} // namespace

std::string ToUtf8(std::string text) {
    if (IsUtf8(text)) {
        return text;
    }
    std::string result;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        Append(result, byte >= 0x80 && byte < 0xA0 ? windows1252[byte - 0x80U] : byte);
    }
    return result;
}

} // namespace kinora::report
