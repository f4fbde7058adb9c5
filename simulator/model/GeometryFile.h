#pragma once

#include "simulator/model/Mesh.h"

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace vantor::model {

/// A solid of a geometry file, checked and closed, in the file's own length unit.
struct ImportedSolid {
    std::string name;
    /// Empty when the file names none.
    std::string material;
    Mesh mesh;
};

/// What a geometry file holds, and remarks that do not keep it from being used.
struct ImportedGeometry {
    std::vector<ImportedSolid> solids;
    std::vector<std::string> warnings;
};

/// A geometry file that cannot be used; the text names file, line (where there is one) and reason.
class GeometryFileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads the solids of a Wavefront OBJ text: objects (`o`), or groups (`g`) where there are no objects, with their
/// `usemtl` materials, polygons of any shape, negative indices, comments and any line ends.
/// @param source      the text of the file.
/// @param fileName    name for messages.
/// @param defaultName name of faces that stand in no object and no group.
ImportedGeometry ReadObj(const std::string& source, const std::string& fileName, const std::string& defaultName);

/// Reads the solids of an STL file, binary or text. A text file may hold several solids; a binary one holds one.
ImportedGeometry ReadStl(const std::string& source, const std::string& fileName, const std::string& defaultName);

/// Reads a geometry file by its extension (.obj or .stl, in any letter case).
/// @throws GeometryFileError for a file that is missing, unreadable, of another kind or bad.
ImportedGeometry ReadGeometryFile(const std::filesystem::path& path);

/// Cuts a planar polygon into triangles by ear clipping.
/// @param corners indices into `vertices`, at least three.
/// @throws MeshError when the polygon has no area or crosses itself.
std::vector<std::array<int, 3>> Triangulated(const std::vector<int>& corners,
                                             const std::vector<Eigen::Vector3d>& vertices);

} // namespace vantor::model
