#include "tests/support/Texts.h"

namespace fake {

std::string Narrow(const std::wstring& text, UINT codePage) {
    const int length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(codePage, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(codePage, 0, text.data(), length, narrow.data(), size, nullptr, nullptr);
    return narrow;
}

std::wstring Widen(const std::string& text, UINT codePage) {
    const int length = static_cast<int>(text.size());
    const int size = MultiByteToWideChar(codePage, 0, text.data(), length, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(codePage, 0, text.data(), length, wide.data(), size);
    return wide;
}

std::string ToUtf8(const std::wstring& text) {
    return Narrow(text, CP_UTF8);
}

std::string ToAnsi(const std::wstring& text) {
    return Narrow(text, CP_ACP);
}

std::wstring FromAnsi(const std::string& text) {
    return Widen(text, CP_ACP);
}

std::filesystem::path ToPath(const std::wstring& text) {
    return std::filesystem::u8path(ToUtf8(text));
}

std::wstring OfPath(const std::filesystem::path& path) {
    return Widen(path.u8string(), CP_UTF8);
}

} // namespace fake
