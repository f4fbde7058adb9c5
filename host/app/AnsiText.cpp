#include "host/app/AnsiText.h"

#include "programs/Errors.h"
#include "programs/Utf.h"

#include <windows.h>

#include <fmt/format.h>

namespace kinora::host {

std::string AnsiFromUtf8(const std::string& text) {
    const std::wstring wide = programs::WideFromUtf8(text);
    std::string narrow = programs::AnsiFromWide(wide);
    // Checked by the way back: not every code page can report a replaced character.
    if (programs::WideFromAnsi(narrow) != wide) {
        throw programs::InputError(
            fmt::format("\"{}\" has characters that this system's code page {} lacks, and the coupling takes "
                        "narrow text only; choose another name or folder.",
                        text, GetACP()));
    }
    return narrow;
}

std::string Utf8FromAnsi(const std::string& text) {
    return programs::Utf8FromWide(programs::WideFromAnsi(text));
}

} // namespace kinora::host
