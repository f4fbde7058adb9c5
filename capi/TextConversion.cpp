#include "capi/TextConversion.h"

#include "capi/Error.h"
#include "comutils/Text.h"
#include "programs/Utf.h"

#include <filesystem>

namespace kinora::capi {
namespace {

// What a conversion cannot hold comes back from it as something else.

std::wstring ToWide(const char* text, std::string_view what) {
    if (!text) {
        throw Error(KV_BAD_ARGUMENT, std::string(what) + " is a null pointer.", "Hand over a text.");
    }
    std::wstring wide = programs::WideFromUtf8(text);
    if (programs::Utf8FromWide(wide) != text) {
        throw Error(KV_BAD_TEXT, std::string(what) + " is no UTF-8.", "Hand texts over as UTF-8.");
    }
    return wide;
}

std::string ToAnsi(const std::wstring& wide, std::string_view what) {
    std::string ansi = programs::AnsiFromWide(wide);
    if (programs::WideFromAnsi(ansi) != wide) {
        throw Error(KV_BAD_TEXT,
                    std::string(what) + " holds characters that the system's code page lacks: \"" +
                        programs::Utf8FromWide(wide) + "\".",
                    "Choose a name of other characters; for a path, the short name of the folder may do.");
    }
    return ansi;
}

} // namespace

std::string ToAnsi(const char* text, std::string_view what) {
    return text && Text::IsAscii(text) ? text : ToAnsi(ToWide(text, what), what);
}

std::string ToAnsiPath(const char* path, std::string_view what) {
    const std::wstring wide = ToWide(path, what);
    if (wide.empty()) {
        throw Error(KV_BAD_ARGUMENT, std::string(what) + " is an empty path.", "Name a file.");
    }
    const std::filesystem::path wanted = Text::ToPath(wide);
    const bool isRelative = !wanted.has_root_directory() && !wanted.has_root_name();
    return ToAnsi(isRelative ? Text::OfPath(std::filesystem::current_path() / wanted) : wide, what);
}

std::string ToUtf8(std::string_view text) {
    return Text::IsAscii(text) ? std::string(text) : programs::Utf8FromWide(programs::WideFromAnsi(text));
}

} // namespace kinora::capi
