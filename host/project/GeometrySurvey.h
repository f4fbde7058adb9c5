#pragma once

#include "scenario/Rigid.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace kinora::host {

/// An object of a geometry file, in the file's own length unit.
struct SurveyedObject {
    std::string name;
    /// A polygon of n corners counts as n - 2.
    std::size_t triangles = 0;
    /// Corners of its box.
    scenario::Vector lower = scenario::Vector::Zero();
    scenario::Vector upper = scenario::Vector::Zero();
    /// Edges without exactly one other face that runs along them the other way.
    std::size_t openEdges = 0;
    /// Faces without area.
    std::size_t flatFaces = 0;
    /// A desktop turns it.
    bool isInsideOut = false;

    /// Whether it bounds a solid.
    bool IsClosed() const { return openEdges == 0 && flatFaces == 0; }
};

/// Whether a file is a geometry by its extension, .obj or .stl in any letter case.
bool IsGeometryFile(const std::filesystem::path& file);

/// Reads a geometry file: Wavefront OBJ, STL as text or binary. Vertices at exactly equal places are one. Objects have
/// the names of scenario::GeometryObjects.
/// @throws InputError  it cannot be read, is damaged, or holds no faces: with the line, or the facet of a binary file
std::vector<SurveyedObject> SurveyGeometry(const std::filesystem::path& file);

} // namespace kinora::host
