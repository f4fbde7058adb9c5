#pragma once

#include <array>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantor::model {

/// Vacuum permeability, V s/(A m), the same number as the solver's.
constexpr double vacuumPermeability = 1.25663706143591729539e-6;

/// The least relative permeability that can be solved; no material has less but superconductors.
constexpr double leastRelativePermeability = 0.9;

/// B over H of a soft-magnetic material, from zero field on.
struct BhCurve {
    struct Point {
        /// A/m.
        double h = 0.0;
        /// T.
        double b = 0.0;
    };
    /// Two or more, the first one (0, 0). H grows, and B with it, never by less than vacuum's share. It is never
    /// changed: materials share it, and a solver knows it again.
    std::vector<Point> points;

    /// Relative permeability up to the first point after (0, 0).
    double InitialPermeability() const;
};

/// What a permanent magnet adds to a material.
struct Coercivity {
    /// A/m.
    double magnitude = 0.0;
    /// Direction in the object's orientation frame; only the direction counts.
    std::array<double, 3> components{};
};

struct Material {
    std::string name;
    /// Of a material with a curve it is only what is shown.
    double relativePermeability = 1.0;
    std::optional<Coercivity> coercivity;
    /// Null for a linear material, and for a magnet.
    std::shared_ptr<const BhCurve> bhCurve = nullptr;
};

/// Materials by name.
using MaterialTable = std::map<std::string, Material>;

/// The materials that every desktop knows.
MaterialTable BuiltInMaterials();

/// Reads user materials: {"materials": [{"name", "relativePermeability", "bhCurve", "coercivityMagnitude",
/// "components"}]}.
/// @throws DesktopError (ReadFile) naming file and location for anything that is missing, unknown or out of range.
std::vector<Material> ReadMaterialsFile(const std::filesystem::path& path);

/// As ReadMaterialsFile, from text; `fileName` is for messages.
std::vector<Material> ReadMaterials(const std::string& text, const std::string& fileName);

} // namespace vantor::model
