#include "simulator/model/Files.h"

#include "simulator/model/DesktopError.h"
#include "simulator/model/Text.h"

#include <fstream>

namespace vantor::model {

std::filesystem::path PathFromUtf8(const std::string& text) {
    return std::filesystem::u8path(text);
}

std::filesystem::path WholePath(const std::string& text) {
    std::filesystem::path path = PathFromUtf8(text);
    const bool isOnNetwork = std::filesystem::path::preferred_separator == '\\' && text.compare(0, 2, "\\\\") == 0;
    return isOnNetwork ? path : std::filesystem::absolute(path).lexically_normal().make_preferred();
}

std::string Utf8(const std::filesystem::path& path) {
    return path.u8string();
}

std::string ReadWholeFile(const std::filesystem::path& path) {
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(path, ignored)) {
        throw DesktopError(ErrorCode::ReadFile, "there is no file " + Quoted(Utf8(path)));
    }
    // As one piece: a stream's own buffer may be so small that each fill of it costs more than the parsing of its text.
    std::ifstream stream(path, std::ios::binary | std::ios::ate);
    std::string content(stream ? static_cast<std::size_t>(stream.tellg()) : 0, '\0');
    stream.seekg(0);
    stream.read(content.data(), static_cast<std::streamsize>(content.size()));
    // A file that has been cut meanwhile ends early.
    content.resize(static_cast<std::size_t>(stream.gcount()));
    if (!stream.is_open() || stream.bad()) {
        throw DesktopError(ErrorCode::ReadFile, "the file " + Quoted(Utf8(path)) + " cannot be read");
    }
    return content;
}

void WriteWholeFile(const std::filesystem::path& path, const std::string& content) {
    std::filesystem::path temporary = path;
    temporary += ".tmp";
    std::ofstream stream(temporary, std::ios::binary | std::ios::trunc);
    stream.write(content.data(), static_cast<std::streamsize>(content.size()));
    stream.close();
    std::error_code error;
    if (stream) {
        std::filesystem::rename(temporary, path, error);
    }
    if (!stream || error) {
        std::error_code ignored;
        std::filesystem::remove(temporary, ignored);
        throw DesktopError(ErrorCode::WriteFile, "the file " + Quoted(Utf8(path)) + " cannot be written" +
                                                     (error ? ": " + error.message() : std::string()));
    }
}

} // namespace vantor::model
