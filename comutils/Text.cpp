#include "comutils/Text.h"

#include <comdef.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>
#include <type_traits>

namespace Text {
namespace {

/// Long enough for any double: DBL_MAX has 309 digits before the point, and six follow it.
constexpr std::size_t longestNumber = std::numeric_limits<double>::max_exponent10 + 16;

void AppendNumber(std::string& text, double number, std::chars_format format) {
    char buffer[longestNumber];
    const auto end = std::to_chars(buffer, buffer + longestNumber, number, format, 6).ptr;
    text.append(buffer, end);
}

template <class Character>
bool AreAscii(std::basic_string_view<Character> text) {
    unsigned seen = 0;
    for (const Character character : text) {
        seen |= static_cast<std::make_unsigned_t<Character>>(character);
    }
    return seen < 0x80;
}

template <class Source, class Target>
void CopyAscii(std::basic_string_view<Source> text, Target* target) {
    std::transform(text.begin(), text.end(), target, [](Source character) { return static_cast<Target>(character); });
}

int WideLength(std::string_view text, UINT codePage) {
    return MultiByteToWideChar(codePage, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
}

void Widen(std::string_view text, UINT codePage, wchar_t* target, int length) {
    MultiByteToWideChar(codePage, 0, text.data(), static_cast<int>(text.size()), target, length);
}

BSTR AllocateBstr(std::size_t length) {
    const BSTR text = SysAllocStringLen(nullptr, static_cast<UINT>(length));
    if (!text) {
        throw _com_error(E_OUTOFMEMORY);
    }
    return text;
}

std::wstring Widened(std::string_view text, UINT codePage) {
    std::wstring wide;
    if (IsAscii(text)) {
        wide.assign(text.begin(), text.end());
    } else {
        wide.resize(static_cast<std::size_t>(WideLength(text, codePage)));
        Widen(text, codePage, wide.data(), static_cast<int>(wide.size()));
    }
    return wide;
}

template <class Native>
std::wstring WideFromNative(const Native& text) {
    if constexpr (std::is_same_v<Native, std::wstring>) {
        return text;
    } else {
        return ToWide(text);
    }
}

template <class Native>
Native NativeFromWide(const std::wstring& text) {
    if constexpr (std::is_same_v<Native, std::wstring>) {
        return text;
    } else {
        return ToNarrow(text, CP_ACP);
    }
}

} // namespace

bool IsAscii(std::string_view text) {
    return AreAscii(text);
}

BSTR ToBstr(std::string_view text) {
    if (IsAscii(text)) {
        const BSTR wide = AllocateBstr(text.size());
        CopyAscii(text, wide);
        return wide;
    }
    const int length = WideLength(text, CP_ACP);
    const BSTR wide = AllocateBstr(static_cast<std::size_t>(length));
    Widen(text, CP_ACP, wide, length);
    return wide;
}

std::string FromBstr(BSTR text) {
    return text ? ToNarrow(std::wstring_view(text, SysStringLen(text)), CP_ACP) : std::string();
}

std::wstring ToWide(std::string_view text) {
    return Widened(text, CP_ACP);
}

std::string ToNarrow(std::wstring_view text, UINT codePage) {
    std::string narrow;
    if (AreAscii(text)) {
        narrow.resize(text.size());
        CopyAscii(text, narrow.data());
        return narrow;
    }
    const int wideLength = static_cast<int>(text.size());
    const int length = WideCharToMultiByte(codePage, 0, text.data(), wideLength, nullptr, 0, nullptr, nullptr);
    narrow.resize(static_cast<std::size_t>(length));
    WideCharToMultiByte(codePage, 0, text.data(), wideLength, narrow.data(), length, nullptr, nullptr);
    return narrow;
}

std::filesystem::path ToFileSystemPath(std::string_view text) {
    return ToPath(Widened(text, AreFileApisANSI() ? CP_ACP : CP_OEMCP));
}

std::wstring OfPath(const std::filesystem::path& path) {
    return WideFromNative(path.native());
}

std::filesystem::path ToPath(const std::wstring& text) {
    return NativeFromWide<std::filesystem::path::string_type>(text);
}

std::string Fixed(double number) {
    std::string text;
    AppendNumber(text, number, std::chars_format::fixed);
    return text;
}

void AppendGeneral(std::string& text, double number) {
    AppendNumber(text, number, std::chars_format::general);
}

double ToNumber(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    if (text.substr(0, 1) == "+" && text.substr(1, 1) != "-") {
        text.remove_prefix(1);
    }
    double number = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc::result_out_of_range) {
        return number;
    }
    const std::string_view digits = text.substr(0, static_cast<std::size_t>(end - text.data()));
    const bool isTiny = digits.find("e-") != std::string_view::npos || digits.find("E-") != std::string_view::npos;
    return std::copysign(isTiny ? 0.0 : HUGE_VAL, digits.front() == '-' ? -1.0 : 1.0);
}

} // namespace Text
