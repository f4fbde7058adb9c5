#include "host/app/AnsiText.h"

#include "programs/Errors.h"
#include "programs/Utf.h"

#include <windows.h>

#include <fmt/format.h>

namespace kinora::host {

namespace {

std::string NameOfCodePage() {
    const unsigned codePage = GetACP();
    return codePage == CP_UTF8 ? "UTF-8" : fmt::format("this system's code page {}", codePage);
}

} // namespace

std::string AnsiFromUtf8(const std::string& text) {
    std::string narrow = programs::AnsiFromWide(programs::WideFromUtf8(text));
    // Checked by the way back: not every code page can report a replaced character.
    if (Utf8FromAnsi(narrow) != text) {
        throw programs::InputError(
            fmt::format("\"{}\" has characters that {} lacks, and the coupling takes narrow text "
                        "only; choose another name or folder, or its short name (dir /x shows it).",
                        text, NameOfCodePage()));
    }
    return narrow;
}

std::string Utf8FromAnsi(const std::string& text) {
    return programs::Utf8FromWide(programs::WideFromAnsi(text));
}

} // namespace kinora::host
