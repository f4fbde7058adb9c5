#pragma once

#include "simulator/model/Mesh.h"

#include <string>

namespace shapes {

/// A cube with its lower corner at (x, 0, 0).
vantor::model::Mesh Cube(double x, double edge);

/// The same cube as an object of an OBJ text, with quadrilaterals that count their corners backwards.
std::string CubeObj(const std::string& name, const std::string& material, double x, double edge);

/// The same cube as a solid of an STL text.
std::string CubeStl(const std::string& name, double x, double edge);

/// A ring of round section with a round cavity of half its radius: 4 * around * across triangles, the cavity's last.
vantor::model::Mesh HollowRing(double ringRadius, double sectionRadius, int around, int across);

/// Its volume: every section across the ring's axis is bounded by regular polygons of `around` corners.
double HollowRingVolume(double ringRadius, double sectionRadius, int around, int across);

/// A mesh as the first object of an OBJ text: a line with its name, one per vertex, one per triangle.
std::string ObjText(const std::string& name, const vantor::model::Mesh& mesh);

/// A mesh as a solid of an STL text, seven lines per triangle after the first line.
std::string StlText(const std::string& name, const vantor::model::Mesh& mesh);

} // namespace shapes
