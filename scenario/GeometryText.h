#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>

namespace kinora::scenario {

/// Between the words of a geometry file.
constexpr std::string_view geometryBlanks = " \t";

/// Without the blanks around it.
std::string_view TrimmedLine(std::string_view text);

/// What follows the word that a line begins with; nothing when it begins with another.
std::optional<std::string_view> AfterWord(std::string_view word, std::string_view line);

/// Hands over the lines of a file as it is read in pieces, whatever ends them, without the blanks that they begin with.
/// @return false when the file cannot be read, or has lines that no text has
template <class Take>
bool ForEachLine(const std::filesystem::path& file, Take take) {
    constexpr std::size_t longestLine = 1U << 20U;
    std::ifstream stream(file, std::ios::binary);
    std::string text;
    // A line feed at once after a carriage return ends no further line.
    bool wasReturn = false;
    while (stream) {
        const std::size_t kept = text.size();
        if (kept > longestLine) {
            return false;
        }
        text.resize(kept + longestLine);
        stream.read(text.data() + kept, longestLine);
        text.resize(kept + static_cast<std::size_t>(stream.gcount()));
        if (!stream) {
            text += '\n';
        }
        const char* begin = text.data();
        const char* const end = begin + text.size();
        const auto isEnd = [](char c) { return c == '\n' || c == '\r'; };
        for (const char* at = std::find_if(begin, end, isEnd); at != end; at = std::find_if(begin, end, isEnd)) {
            const std::string_view line(begin, static_cast<std::size_t>(at - begin));
            if (!(wasReturn && line.empty() && *at == '\n')) {
                take(line.substr(std::min(line.find_first_not_of(geometryBlanks), line.size())));
            }
            wasReturn = *at == '\r';
            begin = at + 1;
        }
        text.erase(0, static_cast<std::size_t>(begin - text.data()));
    }
    return stream.eof();
}

/// Follows the names of an OBJ file from line to line: objects (`o`), or groups (`g`) where there are no objects.
class ObjNames {
public:
    /// @param defaultName  of what comes before any name
    explicit ObjNames(std::string defaultName) : m_default(std::move(defaultName)) {}

    /// @return whether the line was a name
    bool Take(std::string_view line);

    /// Of the faces that come now.
    const std::string& Current() const { return !m_object.empty() ? m_object : !m_group.empty() ? m_group : m_default; }

private:
    std::string m_default, m_object, m_group;
};

/// A binary STL file's size follows from its facet count.
bool IsBinaryStl(const std::filesystem::path& file);

} // namespace kinora::scenario
