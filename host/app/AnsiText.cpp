#include "host/app/AnsiText.h"

#include "scenario/Errors.h"

#include <windows.h>

#include <fmt/format.h>

namespace kinora::host {
namespace {

std::wstring Widen(const std::string& text, UINT codePage) {
    const int size = static_cast<int>(text.size());
    std::wstring wide(static_cast<std::size_t>(MultiByteToWideChar(codePage, 0, text.data(), size, nullptr, 0)), L'\0');
    MultiByteToWideChar(codePage, 0, text.data(), size, wide.data(), static_cast<int>(wide.size()));
    return wide;
}

} // namespace

std::string Utf8FromWide(const std::wstring& text) {
    const int size = static_cast<int>(text.size());
    const int length = WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), size, narrow.data(), length, nullptr, nullptr);
    return narrow;
}

std::string AnsiFromUtf8(const std::string& text) {
    const std::wstring wide = Widen(text, CP_UTF8);
    const int size = static_cast<int>(wide.size());
    const int length =
        WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, wide.data(), size, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, wide.data(), size, narrow.data(), length, nullptr, nullptr);
    // Checked by the way back: not every code page can report a replaced character.
    if (Widen(narrow, CP_ACP) != wide)
        throw scenario::InputError(
            fmt::format("\"{}\" has characters that this system's code page {} lacks, and the coupling takes "
                        "narrow text only; choose another name or folder.",
                        text, GetACP()));
    return narrow;
}

std::string Utf8FromAnsi(const std::string& text) {
    return Utf8FromWide(Widen(text, CP_ACP));
}

} // namespace kinora::host
