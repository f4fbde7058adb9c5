#include "scenario/GeometryText.h"

#include <array>
#include <cstdint>
#include <system_error>

namespace kinora::scenario {

std::string_view TrimmedLine(std::string_view text) {
    constexpr std::string_view invisible = " \t\f\v";
    const std::size_t first = text.find_first_not_of(invisible);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(invisible) - first + 1);
}

std::optional<std::string_view> AfterWord(std::string_view word, std::string_view line) {
    const bool begins = line.substr(0, word.size()) == word;
    if (!begins || (line.size() > word.size() && geometryBlanks.find(line[word.size()]) == std::string_view::npos)) {
        return std::nullopt;
    }
    return line.substr(word.size());
}

bool ObjNames::Take(std::string_view line) {
    if (const auto object = AfterWord("o", line); object && !object->empty()) {
        m_object = TrimmedLine(*object);
        m_group.clear();
        return true;
    }
    if (const auto group = AfterWord("g", line); group && !group->empty()) {
        const std::string_view groups = TrimmedLine(*group);
        m_group = groups.substr(0, groups.find_first_of(geometryBlanks));
        return true;
    }
    return false;
}

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

} // namespace kinora::scenario
