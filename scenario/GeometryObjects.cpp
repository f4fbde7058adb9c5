#include "scenario/GeometryObjects.h"

#include "scenario/Text.h"
#include "scenario/UniqueNames.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <set>
#include <string_view>
#include <system_error>

namespace kinora::scenario {
namespace {

/// Between words.
constexpr std::string_view blanks = " \t";

std::string_view Trimmed(std::string_view text) {
    constexpr std::string_view invisible = " \t\f\v";
    const std::size_t first = text.find_first_not_of(invisible);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(invisible) - first + 1);
}

/// What follows the word that a line begins with; nothing when it begins with another.
std::optional<std::string_view> After(std::string_view word, std::string_view line) {
    const bool begins = line.substr(0, word.size()) == word;
    if (!begins || (line.size() > word.size() && blanks.find(line[word.size()]) == std::string_view::npos)) {
        return std::nullopt;
    }
    return line.substr(word.size());
}

/// Hands over the lines of a file as it is read in pieces, whatever ends them, without the blanks that they begin with.
/// @return false when the file cannot be read, or has lines that no text has
template <class Take>
bool ForEachLine(const std::filesystem::path& file, Take take) {
    constexpr std::size_t longestLine = 1U << 20U;
    std::ifstream stream(file, std::ios::binary);
    std::string text;
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
            take(line.substr(std::min(line.find_first_not_of(blanks), line.size())));
            begin = at + 1;
        }
        text.erase(0, static_cast<std::size_t>(begin - text.data()));
    }
    return stream.eof();
}

using Names = std::vector<std::string>;

/// Names in the order in which they come, each once.
class NameList {
public:
    /// @return whether the name is new
    bool Add(const std::string& name) {
        const bool isNew = m_known.insert(name).second;
        if (isNew) {
            m_names.push_back(name);
        }
        return isNew;
    }

    /// All names; nothing when there are none.
    std::optional<Names> Result() const { return m_names.empty() ? std::nullopt : std::make_optional(m_names); }

private:
    Names m_names;
    std::set<std::string> m_known;
};

/// Follows the names of an OBJ file; only what has faces becomes an object.
class ObjNames {
public:
    explicit ObjNames(std::string defaultName) : m_default(std::move(defaultName)) {}

    void Take(std::string_view line) {
        if (After("f", line)) {
            TakeFace();
        } else if (const auto object = After("o", line); object && !object->empty()) {
            m_object = Trimmed(*object);
            m_group.clear();
            m_isNew = true;
        } else if (const auto group = After("g", line); group && !group->empty()) {
            const std::string_view groups = Trimmed(*group);
            m_group = groups.substr(0, groups.find_first_of(blanks));
            m_isNew = true;
        }
    }

    NameList names;

private:
    void TakeFace() {
        if (m_isNew) {
            m_isNew = false;
            names.Add(!m_object.empty() ? m_object : !m_group.empty() ? m_group : m_default);
        }
    }

    std::string m_default, m_object, m_group;
    /// Whether no face has come since the name changed.
    bool m_isNew = true;
};

std::optional<Names> ObjectsOfObj(const std::filesystem::path& file) {
    ObjNames reader(Utf8FromPath(file.stem()));
    const bool isRead = ForEachLine(file, [&](std::string_view line) { reader.Take(line); });
    return isRead ? reader.names.Result() : std::nullopt;
}

/// A binary file's size follows from its facet count.
bool IsBinaryStl(const std::filesystem::path& file) {
    std::array<char, 84> header{};
    std::ifstream stream(file, std::ios::binary);
    stream.read(header.data(), header.size());
    std::uintmax_t facets = 0;
    for (std::size_t byte = 84; byte-- > 80;) {
        facets = facets * 256 + static_cast<unsigned char>(header[byte]);
    }
    std::error_code error;
    return stream && std::filesystem::file_size(file, error) == header.size() + 50 * facets && !error;
}

std::optional<Names> ObjectsOfStl(const std::filesystem::path& file) {
    const std::string defaultName = Utf8FromPath(file.stem());
    if (IsBinaryStl(file)) {
        return Names{defaultName};
    }
    NameList names;
    bool isOpen = false;
    bool isRight = true;
    const auto take = [&](std::string_view line) {
        if (const auto rest = After("solid", line)) {
            const std::string name(Trimmed(*rest));
            isRight = isRight && !isOpen && names.Add(name.empty() ? defaultName : name);
            isOpen = true;
        } else if (After("endsolid", line)) {
            isRight = isRight && isOpen;
            isOpen = false;
        }
    };
    return ForEachLine(file, take) && isRight && !isOpen ? names.Result() : std::nullopt;
}

} // namespace

std::optional<Names> GeometryObjects(const std::filesystem::path& file) {
    const std::string extension = LowerCase(Utf8FromPath(file.extension()));
    return extension == ".obj" ? ObjectsOfObj(file) : extension == ".stl" ? ObjectsOfStl(file) : std::nullopt;
}

} // namespace kinora::scenario
