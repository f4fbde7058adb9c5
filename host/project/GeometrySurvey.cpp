#include "host/project/GeometrySurvey.h"

#include "host/project/Surfaces.h"
#include "scenario/Errors.h"
#include "scenario/GeometryText.h"
#include "scenario/Text.h"
#include "scenario/UniqueNames.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fmt/format.h>
#include <fstream>
#include <set>

namespace kinora::host {
namespace {

using scenario::InputError;
using scenario::Vector;
using VertexNumber = Surfaces::Number;

std::string ExtensionOf(const std::filesystem::path& file) {
    return scenario::LowerCase(scenario::Utf8FromPath(file.extension()));
}

/// What both readers of text do: lines with their numbers, words, and findings.
class TextReader {
public:
    explicit TextReader(const std::filesystem::path& file)
        : m_file(scenario::Utf8FromPath(file)), m_name(scenario::Utf8FromPath(file.stem())) {}

protected:
    void BeginLine(std::string_view line) {
        ++m_line;
        if (line.find('\0') != std::string_view::npos) {
            Fail("a zero character: this is not a text file");
        }
        m_words.clear();
        for (std::size_t at = 0; (at = line.find_first_not_of(blanks, at)) != std::string_view::npos;) {
            const std::size_t end = std::min(line.find_first_of(blanks, at), line.size());
            m_words.push_back(line.substr(at, end - at));
            at = end;
        }
    }

    /// The three numbers that follow a word of the line.
    Vector Place(std::size_t word) const {
        if (m_words.size() < word + 4) {
            Fail(fmt::format("\"{}\" needs three numbers", m_words[word]));
        }
        return {Parsed(m_words[word + 1]), Parsed(m_words[word + 2]), Parsed(m_words[word + 3])};
    }

    [[noreturn]] void Fail(const std::string& reason) const {
        throw InputError(
            fmt::format("{}, line {}: {}; mend the line, or export the file again.", m_file, m_line, reason));
    }

    static std::string Quoted(std::string_view word) { return fmt::format("\"{}\"", word.substr(0, 40)); }

    std::string m_file, m_name;
    std::size_t m_line = 0;
    std::vector<std::string_view> m_words;

private:
    static constexpr std::string_view blanks = " \t\f\v";

    double Parsed(std::string_view word) const {
        const std::string_view digits = word.substr(word.front() == '+' ? 1 : 0);
        double value = 0.0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
        if (error != std::errc() || end != digits.data() + digits.size() || !std::isfinite(value)) {
            Fail("not a finite number: " + Quoted(word));
        }
        return value;
    }
};

class ObjReader : TextReader {
public:
    ObjReader(const std::filesystem::path& file, Surfaces& surfaces)
        : TextReader(file), m_names(m_name), m_surfaces(surfaces) {}

    void Take(std::string_view line) {
        BeginLine(line);
        if (m_words.empty()) {
            return;
        }
        if (m_words.front() == "v") {
            m_surfaces.AddVertex(Place(0));
        } else if (m_words.front() == "f") {
            TakeFace();
        } else if (m_names.Take(line)) {
            m_isNew = true;
        }
    }

    void Finish() {}

private:
    void TakeFace() {
        if (m_words.size() < 4) {
            Fail("a face needs at least three corners");
        }
        if (m_isNew) {
            m_isNew = false;
            m_surfaces.SetObject(m_names.Current());
        }
        m_corners.clear();
        for (std::size_t i = 1; i < m_words.size(); ++i) {
            m_corners.push_back(Corner(m_words[i]));
        }
        m_surfaces.AddFace(m_corners);
    }

    /// "vertex", "vertex/texture", "vertex/texture/normal" or "vertex//normal"; negative ones count from the last.
    VertexNumber Corner(std::string_view word) const {
        const auto count = static_cast<long long>(m_surfaces.VertexCount());
        const std::string_view field = word.substr(0, word.find('/'));
        long long index = 0;
        const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), index);
        if (error != std::errc() || end != field.data() + field.size() || index == 0) {
            Fail("not a corner of a face: " + Quoted(word));
        }
        if (index > count || index < -count) {
            Fail(fmt::format("vertex {} does not exist: {} stand above this line", index, count));
        }
        return static_cast<VertexNumber>(index > 0 ? index - 1 : count + index);
    }

    scenario::ObjNames m_names;
    Surfaces& m_surfaces;
    std::vector<VertexNumber> m_corners;
    bool m_isNew = true;
};

class TextStlReader : TextReader {
public:
    TextStlReader(const std::filesystem::path& file, Surfaces& surfaces) : TextReader(file), m_surfaces(surfaces) {}

    void Take(std::string_view line) {
        BeginLine(line);
        if (m_words.empty()) {
            return;
        }
        if (const auto name = scenario::AfterWord("solid", line)) {
            BeginSolid(std::string(scenario::TrimmedLine(*name)));
        } else if (!m_isOpen) {
            Fail(fmt::format("\"solid\" is missing; here stands {}", Quoted(m_words.front())));
        } else if (m_words.front() == "endsolid") {
            m_isOpen = false;
        } else {
            TakeWords();
        }
    }

    void Finish() const {
        if (m_isOpen) {
            throw InputError(
                fmt::format("{}, line {}: the file ends in the middle of a solid; export it again.", m_file, m_line));
        }
    }

private:
    void BeginSolid(const std::string& name) {
        const std::string& itsName = name.empty() ? m_name : name;
        if (m_isOpen) {
            Fail("\"endsolid\" is missing before this \"solid\"");
        }
        if (!m_known.insert(itsName).second) {
            Fail(fmt::format("a second solid named {}", Quoted(itsName)));
        }
        m_isOpen = true;
        m_surfaces.SetObject(itsName);
    }

    void TakeWords() {
        constexpr std::array<std::string_view, 4> silent = {"facet", "outer", "loop", "endloop"};
        for (std::size_t i = 0; i < m_words.size(); ++i) {
            if (m_words[i] == "vertex") {
                m_corners.push_back(static_cast<VertexNumber>(m_surfaces.VertexCount()));
                m_surfaces.AddVertex(Place(i));
                i += 3;
            } else if (m_words[i] == "normal") {
                i += 3; // the corners tell it
            } else if (m_words[i] == "endfacet") {
                EndFacet();
            } else if (std::find(silent.begin(), silent.end(), m_words[i]) == silent.end()) {
                Fail("not a word of an STL file: " + Quoted(m_words[i]));
            }
        }
    }

    void EndFacet() {
        if (m_corners.size() != 3) {
            Fail(fmt::format("a facet has three corners, not {}", m_corners.size()));
        }
        m_surfaces.AddFace(m_corners);
        m_corners.clear();
    }

    Surfaces& m_surfaces;
    std::set<std::string> m_known;
    std::vector<VertexNumber> m_corners;
    bool m_isOpen = false;
};

template <class Reader>
void ReadText(const std::filesystem::path& file, Surfaces& surfaces) {
    Reader reader(file, surfaces);
    if (!scenario::ForEachLine(file, [&](std::string_view line) { reader.Take(line); })) {
        throw InputError(
            fmt::format("{}: this is not a text file, or it cannot be read; check the file, or export it again.",
                        scenario::Utf8FromPath(file)));
    }
    reader.Finish();
}

/// A number of four bytes, the lowest first.
float FloatAt(const char* bytes) {
    std::uint32_t bits = 0;
    for (unsigned i = 0; i < 4; ++i) {
        bits |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i])) << (8U * i);
    }
    float value = 0.0F;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

void ReadBinaryStl(const std::filesystem::path& file, Surfaces& surfaces) {
    constexpr std::size_t header = 84;
    constexpr std::size_t facetSize = 50;
    const std::string bytes = scenario::ReadFile(file);
    surfaces.SetObject(scenario::Utf8FromPath(file.stem()));
    for (std::size_t at = header; at + facetSize <= bytes.size(); at += facetSize) {
        // Behind the normal; the corners tell it.
        const char* facet = bytes.data() + at + 12;
        const auto first = static_cast<VertexNumber>(surfaces.VertexCount());
        for (std::size_t corner = 0; corner < 3; ++corner) {
            const char* place = facet + 12 * corner;
            const Vector vertex(FloatAt(place), FloatAt(place + 4), FloatAt(place + 8));
            if (!vertex.allFinite()) {
                throw InputError(fmt::format("{}, facet {}: not a finite number; export the file again.",
                                             scenario::Utf8FromPath(file), (at - header) / facetSize + 1));
            }
            surfaces.AddVertex(vertex);
        }
        surfaces.AddFace({first, first + 1, first + 2});
    }
}

/// Whether the first word of a file begins with "solid".
bool BeginsAsText(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::string word;
    stream >> word;
    return word.substr(0, 5) == "solid";
}

void ReadStl(const std::filesystem::path& file, Surfaces& surfaces) {
    if (scenario::IsBinaryStl(file)) {
        ReadBinaryStl(file, surfaces);
    } else if (BeginsAsText(file)) {
        ReadText<TextStlReader>(file, surfaces);
    } else {
        throw InputError(
            fmt::format("{}: neither a text STL file (it does not begin with \"solid\") nor a binary one (its size "
                        "does not fit its number of facets); is it cut off? Export it again.",
                        scenario::Utf8FromPath(file)));
    }
}

} // namespace

bool IsGeometryFile(const std::filesystem::path& file) {
    const std::string extension = ExtensionOf(file);
    return extension == ".obj" || extension == ".stl";
}

std::vector<SurveyedObject> SurveyGeometry(const std::filesystem::path& file) {
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(file, ignored)) {
        throw InputError(
            fmt::format("{}: there is no such geometry file; check the name.", scenario::Utf8FromPath(file)));
    }
    if (std::filesystem::is_empty(file, ignored)) {
        throw InputError(fmt::format("{}: the file is empty; export it again.", scenario::Utf8FromPath(file)));
    }
    Surfaces surfaces;
    if (ExtensionOf(file) == ".obj") {
        ReadText<ObjReader>(file, surfaces);
    } else {
        ReadStl(file, surfaces);
    }
    std::vector<SurveyedObject> objects = surfaces.Survey();
    if (objects.empty()) {
        throw InputError(fmt::format("{}: there are no faces in this file; export the solids as meshes.",
                                     scenario::Utf8FromPath(file)));
    }
    return objects;
}

} // namespace kinora::host
