#include <windows.h>

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <string_view>

namespace {

constexpr char32_t replacement = 0xFFFD;
constexpr char32_t last = 0x10FFFF;

bool IsCharacter(char32_t code) {
    return code <= last && !(code >= 0xD800 && code <= 0xDFFF);
}

/// Where converted units go: counted, and written as long as there is room.
template <class Unit>
class Target {
public:
    Target(Unit* units, int capacity) : m_units(units), m_capacity(capacity) {}

    void Put(Unit unit) {
        if (m_count < m_capacity) {
            m_units[m_count] = unit;
        }
        ++m_count;
    }

    /// @return how many units there are; 0 when they have no room
    int Result() const {
        if (m_capacity > 0 && m_count > m_capacity) {
            SetLastError(ERROR_INSUFFICIENT_BUFFER);
            return 0;
        }
        return m_count;
    }

private:
    Unit* m_units;
    int m_capacity;
    int m_count = 0;
};

/// How many bytes follow this one in a character, and what it has of it.
struct Lead {
    unsigned following;
    char32_t bits;
    /// What needs fewer bytes is none.
    char32_t least;
};

Lead LeadOf(unsigned char byte) {
    if (byte < 0x80) {
        return {0, byte, 0};
    }
    if (byte >= 0xC2 && byte < 0xE0) {
        return {1, byte & 0x1FU, 0x80};
    }
    if (byte >= 0xE0 && byte < 0xF0) {
        return {2, byte & 0x0FU, 0x800};
    }
    if (byte >= 0xF0 && byte < 0xF5) {
        return {3, byte & 0x07U, 0x10000};
    }
    return {0, replacement, 0};
}

/// Takes the character at the begin of a text off it.
char32_t TakeCharacter(std::string_view& text) {
    const Lead lead = LeadOf(static_cast<unsigned char>(text.front()));
    text.remove_prefix(1);
    char32_t code = lead.bits;
    for (unsigned left = lead.following; left > 0; --left) {
        const bool follows = !text.empty() && (static_cast<unsigned char>(text.front()) & 0xC0U) == 0x80;
        if (!follows) {
            return replacement;
        }
        const char32_t longer = code << 6U | (static_cast<unsigned char>(text.front()) & 0x3FU);
        // As soon as it cannot become a character any more, what was taken is none, and this byte begins anew.
        const unsigned rest = 6 * (left - 1);
        const char32_t least = longer << rest;
        const char32_t most = least | ((char32_t{1} << rest) - 1);
        if (most < lead.least || least > last || (least >= 0xD800 && most <= 0xDFFF)) {
            return replacement;
        }
        code = longer;
        text.remove_prefix(1);
    }
    return code;
}

void PutUtf8(char32_t code, Target<char>& target) {
    if (code < 0x80) {
        target.Put(static_cast<char>(code));
        return;
    }
    const unsigned following = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    const unsigned mark = 0xFF00U >> (following + 1) & 0xFFU;
    target.Put(static_cast<char>(mark | code >> 6 * following));
    for (unsigned left = following; left > 0; --left) {
        target.Put(static_cast<char>(0x80U | (code >> 6 * (left - 1) & 0x3FU)));
    }
}

bool IsAscii(std::wstring_view text) {
    unsigned seen = 0; // without an early end, for several units at a time
    for (const wchar_t unit : text) {
        seen |= static_cast<unsigned>(unit);
    }
    return seen < 0x80;
}

bool IsKnown(UINT codePage) {
    return codePage == CP_ACP || codePage == CP_OEMCP || codePage == CP_UTF8;
}

bool IsUsable(UINT codePage, const void* text, int length, const void* target, int capacity) {
    const bool isUsable = IsKnown(codePage) && text && length != 0 && length >= -1 && capacity >= 0 &&
                          (target || capacity == 0) && text != target;
    if (!isUsable) {
        SetLastError(ERROR_INVALID_PARAMETER);
    }
    return isUsable;
}

} // namespace

int MultiByteToWideChar(UINT codePage, DWORD, const char* text, int length, wchar_t* target, int capacity) {
    if (!IsUsable(codePage, text, length, target, capacity)) {
        return 0;
    }
    std::string_view rest(text, length < 0 ? std::strlen(text) + 1 : static_cast<std::size_t>(length));
    Target<wchar_t> wide(target, capacity);
    while (!rest.empty()) {
        wide.Put(static_cast<wchar_t>(TakeCharacter(rest)));
    }
    return wide.Result();
}

int WideCharToMultiByte(UINT codePage, DWORD, const wchar_t* text, int length, char* target, int capacity, const char*,
                        BOOL* usedDefault) {
    if (!IsUsable(codePage, text, length, target, capacity)) {
        return 0;
    }
    if (usedDefault) {
        *usedDefault = FALSE;
    }
    const std::wstring_view whole(text, length < 0 ? std::wcslen(text) + 1 : static_cast<std::size_t>(length));
    // Nearly all texts are of seven-bit characters, which are themselves.
    if (IsAscii(whole) && whole.size() <= static_cast<std::size_t>(capacity)) {
        std::transform(whole.begin(), whole.end(), target, [](wchar_t unit) { return static_cast<char>(unit); });
        return static_cast<int>(whole.size());
    }
    Target<char> narrow(target, capacity);
    for (const wchar_t unit : whole) {
        const auto code = static_cast<char32_t>(unit);
        PutUtf8(IsCharacter(code) ? code : replacement, narrow);
    }
    return narrow.Result();
}

BOOL AreFileApisANSI() {
    return TRUE;
}

UINT GetACP() {
    return CP_UTF8;
}
