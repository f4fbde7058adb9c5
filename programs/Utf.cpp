#include "programs/Utf.h"

#include <windows.h>

namespace kinora::programs {
namespace {

std::string Narrowed(std::wstring_view text, UINT codePage, DWORD flags) {
    const int length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(codePage, flags, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(codePage, flags, text.data(), length, result.data(), size, nullptr, nullptr);
    return result;
}

std::wstring Widened(std::string_view text, UINT codePage) {
    const int length = static_cast<int>(text.size());
    const int size = MultiByteToWideChar(codePage, 0, text.data(), length, nullptr, 0);
    std::wstring result(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(codePage, 0, text.data(), length, result.data(), size);
    return result;
}

} // namespace

std::string Utf8FromWide(std::wstring_view text) {
    // UTF-8 takes at most three bytes for each UTF-16 unit, four for a UTF-32 one: short texts need no second pass.
    constexpr std::size_t mostBytes = sizeof(wchar_t) == 2 ? 3 : 4;
    char small[128 * mostBytes];
    if (text.size() > sizeof(small) / mostBytes) {
        return Narrowed(text, CP_UTF8, 0);
    }
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), small, sizeof(small),
                                         nullptr, nullptr);
    return std::string(small, static_cast<std::size_t>(size));
}

std::wstring WideFromUtf8(std::string_view text) {
    return Widened(text, CP_UTF8);
}

std::string AnsiFromWide(std::wstring_view text) {
    return Narrowed(text, CP_ACP, WC_NO_BEST_FIT_CHARS);
}

std::wstring WideFromAnsi(std::string_view text) {
    return Widened(text, CP_ACP);
}

} // namespace kinora::programs
