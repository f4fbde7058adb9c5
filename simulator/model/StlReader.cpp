#include "simulator/model/StlReader.h"

#include "simulator/model/Text.h"

#include <algorithm>
#include <cstring>

namespace vantor::model {
namespace {

constexpr std::size_t binaryHeader = 84;
constexpr std::size_t binaryFacet = 50;

std::uint32_t ReadCount(const std::string& source) {
    const auto byte = [&source](std::size_t i) {
        return static_cast<std::uint32_t>(static_cast<unsigned char>(source[80 + i]));
    };
    return byte(0) | (byte(1) << 8U) | (byte(2) << 16U) | (byte(3) << 24U);
}

float ReadFloat(const char* bytes) {
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        bits |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i])) << (8U * i);
    }
    float value = 0.0F;
    std::memcpy(&value, &bits, sizeof(value));
    return value;
}

/// A binary file's size follows from its facet count; text files begin with "solid" and never fit by chance.
bool IsBinary(const std::string& source) {
    return source.size() >= binaryHeader &&
           source.size() == binaryHeader + ReadCount(source) * std::size_t{binaryFacet};
}

ImportedSolid Checked(ImportedSolid solid, const std::vector<std::size_t>& locations, const std::string& fileName,
                      const char* locationWord, std::vector<std::string>& warnings) {
    solid.mesh = Welded(solid.mesh.vertices, solid.mesh.triangles);
    try {
        if (MakeSolid(solid.mesh)) {
            warnings.push_back(fileName + ": object " + Quoted(solid.name) + " was inside out and has been turned");
        }
    } catch (const MeshError& error) {
        std::string location;
        if (error.Triangle() >= 0) {
            location = std::string(", ") + locationWord + " " +
                       std::to_string(locations.at(static_cast<std::size_t>(error.Triangle())));
        }
        throw GeometryFileError(fileName + location + ": object " + Quoted(solid.name) + ": " + error.what());
    }
    return solid;
}

void AddTriangle(Mesh& mesh, const std::array<Eigen::Vector3d, 3>& corners) {
    const int first = static_cast<int>(mesh.vertices.size());
    mesh.vertices.insert(mesh.vertices.end(), corners.begin(), corners.end());
    mesh.triangles.push_back({first, first + 1, first + 2});
}

ImportedGeometry ReadBinary(const std::string& source, const std::string& fileName, const std::string& defaultName) {
    ImportedSolid solid{defaultName, {}, {}};
    std::vector<std::size_t> locations;
    const std::size_t count = ReadCount(source);
    solid.mesh.vertices.reserve(3 * count);
    solid.mesh.triangles.reserve(count);
    for (std::size_t facet = 0; facet < count; ++facet) {
        const char* bytes = source.data() + binaryHeader + facet * binaryFacet + 12;
        std::array<Eigen::Vector3d, 3> corners;
        for (std::size_t k = 0; k < 3; ++k) {
            for (std::size_t axis = 0; axis < 3; ++axis) {
                corners[k][static_cast<Eigen::Index>(axis)] = static_cast<double>(ReadFloat(bytes + 12 * k + 4 * axis));
            }
        }
        AddTriangle(solid.mesh, corners);
        locations.push_back(facet + 1);
    }
    ImportedGeometry geometry;
    geometry.solids.push_back(Checked(std::move(solid), locations, fileName, "facet", geometry.warnings));
    return geometry;
}

/// The words of a text file with their line numbers, one after the other.
class WordReader {
public:
    WordReader(const std::string& source, const std::string& fileName) : m_source(source), m_fileName(fileName) {}

    bool AtEnd() {
        SkipBlanks();
        return m_position >= m_source.size();
    }

    std::string_view Next() {
        SkipBlanks();
        const std::size_t begin = m_position;
        while (m_position < m_source.size() && !IsBlank(m_source[m_position])) {
            ++m_position;
        }
        return std::string_view(m_source).substr(begin, m_position - begin);
    }

    /// What is left of the present line.
    std::string RestOfLine() {
        const std::size_t end = std::min(m_source.find_first_of("\r\n", m_position), m_source.size());
        const std::string_view rest = std::string_view(m_source).substr(m_position, end - m_position);
        m_position = end;
        return std::string(Trim(rest));
    }

    void Expect(std::string_view word) {
        const std::string_view found = Next();
        if (found != word) {
            Fail(Quoted(word) + " is missing; here stands " + Quoted(found.substr(0, 40)));
        }
    }

    double Number() {
        const std::string_view word = Next();
        double value = 0.0;
        if (!ParseNumber(word, value)) {
            Fail("not a finite number: " + Quoted(word.substr(0, 40)));
        }
        return value;
    }

    std::size_t Line() const { return m_line; }

    [[noreturn]] void Fail(const std::string& reason) const {
        throw GeometryFileError(m_fileName + ", line " + std::to_string(m_line) + ": " + reason);
    }

private:
    static bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

    void SkipBlanks() {
        while (m_position < m_source.size() && IsBlank(m_source[m_position])) {
            const bool carriage = m_source[m_position] == '\r';
            const bool pair = carriage && m_position + 1 < m_source.size() && m_source[m_position + 1] == '\n';
            if (m_source[m_position] == '\n' || (carriage && !pair)) {
                ++m_line;
            }
            ++m_position;
        }
    }

    const std::string& m_source;
    const std::string& m_fileName;
    std::size_t m_position = 0;
    std::size_t m_line = 1;
};

void ReadFacet(WordReader& reader, Mesh& mesh) {
    reader.Expect("normal");
    for (int i = 0; i < 3; ++i) {
        reader.Number();
    }
    reader.Expect("outer");
    reader.Expect("loop");
    std::array<Eigen::Vector3d, 3> corners;
    for (auto& corner : corners) {
        reader.Expect("vertex");
        const double x = reader.Number(), y = reader.Number(), z = reader.Number();
        corner = {x, y, z};
    }
    reader.Expect("endloop");
    reader.Expect("endfacet");
    AddTriangle(mesh, corners);
}

ImportedSolid ReadTextSolid(WordReader& reader, const std::string& fileName, const std::string& defaultName,
                            std::vector<std::string>& warnings) {
    reader.Expect("solid");
    const std::string name = reader.RestOfLine();
    ImportedSolid solid{name.empty() ? defaultName : name, {}, {}};
    std::vector<std::size_t> locations;
    for (;;) {
        const std::string_view word = reader.Next();
        if (word == "endsolid") {
            reader.RestOfLine();
            return Checked(std::move(solid), locations, fileName, "line", warnings);
        }
        if (word != "facet") {
            reader.Fail("\"facet\" or \"endsolid\" is missing; here stands " + Quoted(word.substr(0, 40)));
        }
        locations.push_back(reader.Line());
        ReadFacet(reader, solid.mesh);
    }
}

} // namespace

ImportedGeometry ReadStl(const std::string& source, const std::string& fileName, const std::string& defaultName) {
    if (IsBinary(source)) {
        return ReadBinary(source, fileName, defaultName);
    }
    if (Trim(std::string_view(source).substr(0, 80)).substr(0, 5) != "solid") {
        throw GeometryFileError(
            fileName + ": neither a text STL file (it does not begin with \"solid\") nor a binary " +
            "one (its size of " + std::to_string(source.size()) + " bytes does not fit its facet count)");
    }
    ImportedGeometry geometry;
    WordReader reader(source, fileName);
    while (!reader.AtEnd()) {
        ImportedSolid solid = ReadTextSolid(reader, fileName, defaultName, geometry.warnings);
        for (const auto& other : geometry.solids) {
            if (other.name == solid.name) {
                reader.Fail("a second solid named " + Quoted(solid.name));
            }
        }
        geometry.solids.push_back(std::move(solid));
    }
    return geometry;
}

} // namespace vantor::model
