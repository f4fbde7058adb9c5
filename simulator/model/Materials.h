#pragma once

#include <array>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vantor::model {

/// What a permanent magnet adds to a material.
struct Coercivity {
    /// A/m.
    double magnitude = 0.0;
    /// Direction in the object's orientation frame; only the direction counts.
    std::array<double, 3> components{};
};

struct Material {
    std::string name;
    double relativePermeability = 1.0;
    std::optional<Coercivity> coercivity;
};

/// Materials by name.
using MaterialTable = std::map<std::string, Material>;

/// The materials that every desktop knows.
MaterialTable BuiltInMaterials();

/// Reads user materials: {"materials": [{"name", "relativePermeability", "coercivityMagnitude", "components"}]}.
/// @throws DesktopError (ReadFile) naming file and location for anything that is missing, unknown or out of range.
std::vector<Material> ReadMaterialsFile(const std::filesystem::path& path);

/// As ReadMaterialsFile, from text; `fileName` is for messages.
std::vector<Material> ReadMaterials(const std::string& text, const std::string& fileName);

} // namespace vantor::model
