#pragma once

#include "simulator/model/Mesh.h"

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

} // namespace vantor::model
