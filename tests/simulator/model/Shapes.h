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

} // namespace shapes
