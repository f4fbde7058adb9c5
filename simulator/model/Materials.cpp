#include "simulator/model/Materials.h"

#include "simulator/model/DesktopError.h"
#include "simulator/model/Files.h"
#include "simulator/model/JsonReader.h"
#include "simulator/model/MaterialsJson.h"
#include "simulator/model/Text.h"

namespace vantor::model {
namespace {

Material Plain(const std::string& name, double relativePermeability) {
    return {name, relativePermeability, std::nullopt};
}

Material Magnet(const std::string& name, double coercivity, double relativePermeability) {
    return {name, relativePermeability, Coercivity{coercivity, {1.0, 0.0, 0.0}}};
}

Material Iron(const std::string& name, std::vector<BhCurve::Point> points) {
    const BhCurve curve{std::move(points)};
    return {name, curve.InitialPermeability(), std::nullopt, std::make_shared<const BhCurve>(curve)};
}

/// A plain low-carbon steel: T. Nakata, N. Takahashi, K. Fujiwara, Summary of results for benchmark problem 13 (3-D
/// nonlinear magnetostatic model), COMPEL 11 (1992) 345-369, whose steel has this table up to 1.75 T, above it
/// B = mu0 H - 2.822e-10 H^2 + 2.529e-5 H + 1.591, and from 2.22 T on B = mu0 H + 2.16. The weak fields, where its
/// permeability only rises to the greatest one at 1 T, are taken as a straight line to there.
std::vector<BhCurve::Point> LowCarbonSteel() {
    return {{0, 0},          {342, 1.0},      {377, 1.1},      {433, 1.2},      {509, 1.3},      {648, 1.4},
            {933, 1.5},      {1228, 1.55},    {1934, 1.6},     {2913, 1.65},    {4993, 1.7},     {7189, 1.75},
            {15000, 1.9257}, {20000, 2.0091}, {25000, 2.0783}, {30000, 2.1334}, {35000, 2.1744}, {40000, 2.2013},
            {50000, 2.2228}, {1e5, 2.2857},   {1e6, 3.4167}};
}

Material ReadMaterial(const JsonReader& entry) {
    Material material;
    material.name = entry.At("name").Text();
    if (material.name.empty() || material.name.find('"') != std::string::npos) {
        entry.At("name").Fail("a material needs a name without double quotes");
    }
    PermeabilityFromJson(entry, material);
    if (!(material.relativePermeability >= leastRelativePermeability)) {
        entry.At("relativePermeability")
            .Fail("the relative permeability of " + Quoted(material.name) + " is " +
                  FormatNumber(material.relativePermeability) + " and must be " +
                  FormatNumber(leastRelativePermeability) + " or more; write 1 for what is not magnetic");
    }
    if (!entry.Has("coercivityMagnitude") && !entry.Has("components")) {
        return material;
    }
    Coercivity coercivity;
    coercivity.magnitude = entry.At("coercivityMagnitude").Number();
    if (!(coercivity.magnitude > 0.0)) {
        entry.At("coercivityMagnitude").Fail("the coercivity must be more than 0 A/m");
    }
    if (entry.Has("components")) {
        coercivity.components = entry.At("components").Numbers<3>();
    } else {
        coercivity.components = {1.0, 0.0, 0.0};
    }
    if (coercivity.components == std::array<double, 3>{}) {
        entry.At("components").Fail("the components give no direction: all are 0");
    }
    material.coercivity = coercivity;
    return material;
}

} // namespace

double BhCurve::InitialPermeability() const {
    return points[1].b / points[1].h / vacuumPermeability;
}

MaterialTable BuiltInMaterials() {
    // Coercivity and recoil permeability are typical catalogue values at 20 degrees Celsius; remanence is their product
    // with the permeability of vacuum.
    const std::vector<Material> materials = {
        Plain("vacuum", 1.0),
        Plain("air", 1.0000004),
        Plain("copper", 0.999991),
        Plain("aluminum", 1.000021),
        Iron("steel_soft", LowCarbonSteel()),
        Magnet("magnet_1T", 795774.71545947669, 1.0),
        Magnet("NdFeB_N35", 890000.0, 1.0998),
        Magnet("NdFeB_N42", 980000.0, 1.05),
        Magnet("SmCo_28", 760000.0, 1.08),
        Magnet("ferrite_Y30", 195000.0, 1.55),
    };
    MaterialTable table;
    for (const auto& material : materials) {
        table.emplace(material.name, material);
    }
    return table;
}

std::vector<Material> ReadMaterials(const std::string& text, const std::string& fileName) {
    const JsonDocument document(text, fileName);
    const JsonReader root = document.Root();
    root.AllowOnly({"materials"});
    std::vector<Material> materials;
    for (const auto& entry : root.At("materials").Elements()) {
        entry.AllowOnly({"name", "relativePermeability", "bhCurve", "coercivityMagnitude", "components"});
        Material material = ReadMaterial(entry);
        for (const auto& other : materials) {
            if (other.name == material.name) {
                entry.At("name").Fail("a second material named " + Quoted(material.name));
            }
        }
        materials.push_back(std::move(material));
    }
    return materials;
}

std::vector<Material> ReadMaterialsFile(const std::filesystem::path& path) {
    return ReadMaterials(ReadWholeFile(path), Utf8(path));
}

} // namespace vantor::model
