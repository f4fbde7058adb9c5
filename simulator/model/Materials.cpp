#include "simulator/model/Materials.h"

#include "simulator/model/DesktopError.h"
#include "simulator/model/Files.h"
#include "simulator/model/JsonReader.h"
#include "simulator/model/Text.h"

namespace vantor::model {
namespace {

Material Plain(const std::string& name, double relativePermeability) {
    return {name, relativePermeability, std::nullopt};
}

Material Magnet(const std::string& name, double coercivity, double relativePermeability) {
    return {name, relativePermeability, Coercivity{coercivity, {1.0, 0.0, 0.0}}};
}

Material ReadMaterial(const JsonReader& entry) {
    Material material;
    material.name = entry.At("name").Text();
    if (material.name.empty() || material.name.find('"') != std::string::npos) {
        entry.At("name").Fail("a material needs a name without double quotes");
    }
    material.relativePermeability = entry.At("relativePermeability").Number();
    if (!(material.relativePermeability > 0.0)) {
        entry.At("relativePermeability").Fail("the relative permeability must be more than 0");
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

MaterialTable BuiltInMaterials() {
    // Coercivity and recoil permeability are typical catalogue values at 20 degrees Celsius; remanence is their product
    // with the permeability of vacuum.
    const std::vector<Material> materials = {
        Plain("vacuum", 1.0),
        Plain("air", 1.0000004),
        Plain("copper", 0.999991),
        Plain("aluminum", 1.000021),
        Plain("steel_soft", 4000.0),
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
        entry.AllowOnly({"name", "relativePermeability", "coercivityMagnitude", "components"});
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
