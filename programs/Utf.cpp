#include "programs/Utf.h"

#include <windows.h>

namespace kinora::programs {

std::string Utf8FromWide(std::wstring_view text) {
    if (text.empty()) {
        return {};
    }
    const int wideLength = static_cast<int>(text.size());
    // UTF-8 takes at most three bytes for each UTF-16 unit: short texts need no second pass.
    char small[384];
    if (text.size() <= sizeof(small) / 3) {
        const int size =
            WideCharToMultiByte(CP_UTF8, 0, text.data(), wideLength, small, sizeof(small), nullptr, nullptr);
        return std::string(small, static_cast<std::size_t>(size));
    }
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), wideLength, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), wideLength, result.data(), size, nullptr, nullptr);
    return result;
}

std::wstring WideFromUtf8(std::string_view text) {
    if (text.empty()) {
        return {};
    }
    const int length = static_cast<int>(text.size());
    const int size = MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0);
    std::wstring result(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), length, result.data(), size);
    return result;
}

} // namespace kinora::programs
