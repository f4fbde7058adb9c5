#include "simulator/model/ObjReader.h"

#include "simulator/model/Text.h"
#include "simulator/model/Triangulation.h"

#define TINYOBJLOADER_USE_DOUBLE
#include <algorithm>
#include <array>
#include <charconv>
#include <map>
#include <sstream>
#include <tiny_obj_loader.h>

namespace vantor::model {
namespace {

constexpr std::size_t maximumCorners = 1000;

[[noreturn]] void Fail(const std::string& fileName, std::size_t line, const std::string& reason) {
    throw GeometryFileError(fileName + ", line " + std::to_string(line) + ": " + reason);
}

bool IsBlank(char character) {
    return character == ' ' || character == '\t' || character == '\r';
}

/// Puts the blank-separated words of a line into a list, which is used again for every line: files have millions.
void ReadWords(std::string_view line, std::vector<std::string_view>& words) {
    words.clear();
    const auto end = line.end();
    for (auto begin = std::find_if_not(line.begin(), end, IsBlank); begin != end;) {
        const auto wordEnd = std::find_if(begin, end, IsBlank);
        words.push_back(
            line.substr(static_cast<std::size_t>(begin - line.begin()), static_cast<std::size_t>(wordEnd - begin)));
        begin = std::find_if_not(wordEnd, end, IsBlank);
    }
}

/// Goes over the lines before the loader does: the loader takes what it cannot read for zero and knows no lines.
class LineChecker {
public:
    explicit LineChecker(const std::string& fileName) : m_fileName(fileName) {}

    /// Line number of every face, in the file's order.
    std::vector<std::size_t> Run(const std::string& source) {
        const auto isLineEnd = [](char character) { return character == '\r' || character == '\n'; };
        std::size_t begin = 0;
        while (begin <= source.size()) {
            const auto from = source.begin() + static_cast<std::ptrdiff_t>(begin);
            const auto end = static_cast<std::size_t>(std::find_if(from, source.end(), isLineEnd) - source.begin());
            ++m_line;
            Check(std::string_view(source).substr(begin, end - begin));
            const bool pair = end + 1 < source.size() && source[end] == '\r' && source[end + 1] == '\n';
            begin = end + (pair ? 2 : 1);
        }
        return std::move(m_faceLines);
    }

private:
    void Check(std::string_view line) {
        if (line.find('\0') != std::string_view::npos) {
            Fail(m_fileName, m_line, "a zero character: this is not a text file");
        }
        ReadWords(line, m_words);
        const std::vector<std::string_view>& words = m_words;
        if (words.empty() || words[0].front() == '#') {
            return;
        }
        if (words.back() == "\\") {
            Fail(m_fileName, m_line, "lines that go on in the next line are not supported");
        }
        if (words[0] == "v") {
            CheckVertex(words);
        } else if (words[0] == "f") {
            CheckFace(words);
        } else if (words[0] == "usemtl" && words.size() < 2) {
            Fail(m_fileName, m_line, "\"usemtl\" without a material name");
        }
    }

    void CheckVertex(const std::vector<std::string_view>& words) {
        if (words.size() < 4) {
            Fail(m_fileName, m_line, "a vertex needs three coordinates");
        }
        for (std::size_t i = 1; i < words.size(); ++i) {
            double value = 0.0;
            if (!ParseNumber(words[i], value)) {
                Fail(m_fileName, m_line, "not a finite number: " + Quoted(words[i]));
            }
        }
        ++m_vertices;
    }

    void CheckFace(const std::vector<std::string_view>& words) {
        if (words.size() < 4) {
            Fail(m_fileName, m_line, "a face needs at least three corners");
        }
        if (words.size() > maximumCorners) {
            Fail(m_fileName, m_line, "a face has more than " + std::to_string(maximumCorners) + " corners");
        }
        for (std::size_t i = 1; i < words.size(); ++i) {
            CheckCorner(words[i]);
        }
        m_faceLines.push_back(m_line);
    }

    /// "vertex", "vertex/texture", "vertex/texture/normal" or "vertex//normal".
    void CheckCorner(std::string_view word) {
        std::array<std::string_view, 3> fields;
        std::size_t count = 0;
        for (std::size_t begin = 0; begin <= word.size(); ++count) {
            const std::size_t end = std::min(word.find('/', begin), word.size());
            if (count == fields.size()) {
                FailCorner(word);
            }
            fields[count] = word.substr(begin, end - begin);
            begin = end + 1;
        }
        for (std::size_t i = 0; i < count; ++i) {
            const bool isLeftOut = i == 1 && count == 3 && fields[i].empty();
            int index = 0;
            if (!isLeftOut && !ParseIndex(fields[i], index)) {
                FailCorner(word);
            }
            if (i == 0) {
                CheckIndex(index);
            }
        }
    }

    [[noreturn]] void FailCorner(std::string_view word) const {
        Fail(m_fileName, m_line, "not a face corner: " + Quoted(word));
    }

    static bool ParseIndex(std::string_view field, int& index) {
        const auto result = std::from_chars(field.data(), field.data() + field.size(), index);
        return result.ec == std::errc() && result.ptr == field.data() + field.size() && index != 0;
    }

    void CheckIndex(int index) {
        if (index > m_vertices || index < -m_vertices) {
            Fail(m_fileName, m_line,
                 "vertex " + std::to_string(index) + " does not exist: " + std::to_string(m_vertices) +
                     " vertices stand above this line");
        }
    }

    const std::string& m_fileName;
    std::size_t m_line = 0;
    int m_vertices = 0;
    std::vector<std::string_view> m_words;
    std::vector<std::size_t> m_faceLines;
};

/// Faces of one name, as they are collected.
struct Part {
    std::string material;
    bool severalMaterials = false;
    std::vector<std::array<int, 3>> triangles;
    /// The line of each triangle.
    std::vector<std::size_t> lines;
};

/// Receives the loader's events in the order of the file.
class Collector {
public:
    Collector(const std::string& fileName, const std::string& defaultName, std::vector<std::size_t> faceLines)
        : m_fileName(fileName), m_defaultName(defaultName), m_faceLines(std::move(faceLines)) {}

    void AddVertex(double x, double y, double z) { m_vertices.emplace_back(x, y, z); }

    void AddFace(const tinyobj::index_t* indices, int count) {
        const std::size_t line = m_faceLines.at(m_face++);
        m_corners.clear();
        for (int i = 0; i < count; ++i) {
            const int index = indices[i].vertex_index;
            m_corners.push_back(index > 0 ? index - 1 : static_cast<int>(m_vertices.size()) + index);
        }
        Part& part = CurrentPart();
        NoteMaterial(part);
        try {
            AppendTriangulated(m_corners, m_vertices, part.triangles);
            part.lines.resize(part.triangles.size(), line);
        } catch (const MeshError& error) {
            Fail(m_fileName, line, error.what());
        }
    }

    void SetMaterial(const std::string& name) { m_material = std::string(Trim(name)); }

    void SetGroup(const std::string& name) { m_group = name; }

    void SetObject(const std::string& name) {
        m_object = std::string(Trim(name));
        m_group.clear();
    }

    ImportedGeometry Finish() {
        ImportedGeometry geometry;
        for (const auto& name : m_order) {
            geometry.solids.push_back(MakeSolidOf(name, m_parts.at(name), geometry.warnings));
        }
        return geometry;
    }

private:
    Part& CurrentPart() {
        const std::string& name = !m_object.empty() ? m_object : !m_group.empty() ? m_group : m_defaultName;
        const auto inserted = m_parts.try_emplace(name);
        if (inserted.second) {
            m_order.push_back(name);
        }
        return inserted.first->second;
    }

    void NoteMaterial(Part& part) {
        if (part.triangles.empty()) {
            part.material = m_material;
        } else if (part.material != m_material) {
            part.severalMaterials = true;
        }
    }

    ImportedSolid MakeSolidOf(const std::string& name, const Part& part, std::vector<std::string>& warnings) const {
        ImportedSolid solid{name, part.material, Welded(m_vertices, part.triangles)};
        try {
            if (MakeSolid(solid.mesh)) {
                warnings.push_back(m_fileName + ": object " + Quoted(name) + " was inside out and has been turned");
            }
        } catch (const MeshError& error) {
            const std::size_t triangle = error.Triangle() < 0 ? 0 : static_cast<std::size_t>(error.Triangle());
            Fail(m_fileName, part.lines.at(triangle), "object " + Quoted(name) + ": " + error.what());
        }
        if (part.severalMaterials) {
            warnings.push_back(m_fileName + ": object " + Quoted(name) + " names several materials; it gets " +
                               Quoted(part.material));
        }
        return solid;
    }

    const std::string& m_fileName;
    const std::string& m_defaultName;
    std::vector<std::size_t> m_faceLines;
    std::size_t m_face = 0;
    std::vector<Eigen::Vector3d> m_vertices;
    std::vector<int> m_corners;
    std::string m_object, m_group, m_material;
    std::map<std::string, Part> m_parts;
    std::vector<std::string> m_order;
};

Collector& From(void* userData) {
    return *static_cast<Collector*>(userData);
}

tinyobj::callback_t Callbacks() {
    tinyobj::callback_t callbacks;
    callbacks.vertex_cb = [](void* collector, double x, double y, double z, double) {
        From(collector).AddVertex(x, y, z);
    };
    callbacks.index_cb = [](void* collector, tinyobj::index_t* indices, int count) {
        From(collector).AddFace(indices, count);
    };
    callbacks.usemtl_cb = [](void* collector, const char* name, int) { From(collector).SetMaterial(name); };
    callbacks.group_cb = [](void* collector, const char** names, int count) {
        From(collector).SetGroup(count > 0 ? names[0] : "");
    };
    callbacks.object_cb = [](void* collector, const char* name) { From(collector).SetObject(name); };
    return callbacks;
}

} // namespace

ImportedGeometry ReadObj(const std::string& source, const std::string& fileName, const std::string& defaultName) {
    Collector collector(fileName, defaultName, LineChecker(fileName).Run(source));
    std::istringstream stream(source);
    std::string warnings, errors;
    if (!tinyobj::LoadObjWithCallback(stream, Callbacks(), &collector, nullptr, &warnings, &errors)) {
        throw GeometryFileError(fileName + ": " + errors);
    }
    ImportedGeometry geometry = collector.Finish();
    if (geometry.solids.empty()) {
        throw GeometryFileError(fileName + ": there are no faces in this file");
    }
    return geometry;
}

} // namespace vantor::model
