#include "simulator/model/MaterialsJson.h"

#include "simulator/model/Text.h"

#include <nlohmann/json.hpp>

namespace vantor::model {
namespace {

using Json = nlohmann::ordered_json;

} // namespace

Json MaterialsToJson(const MaterialTable& materials) {
    Json list = Json::array();
    for (const auto& [name, material] : materials) {
        Json entry = {{"name", name}, {"relativePermeability", material.relativePermeability}};
        if (material.coercivity) {
            entry["coercivityMagnitude"] = material.coercivity->magnitude;
            entry["components"] = material.coercivity->components;
        }
        list.push_back(std::move(entry));
    }
    return list;
}

MaterialTable MaterialsFromJson(const JsonReader& json) {
    MaterialTable table;
    for (const auto& entry : json.Elements()) {
        entry.AllowOnly({"name", "relativePermeability", "coercivityMagnitude", "components"});
        Material material;
        material.name = entry.At("name").Text();
        material.relativePermeability = entry.At("relativePermeability").Number();
        if (entry.Has("coercivityMagnitude")) {
            material.coercivity =
                Coercivity{entry.At("coercivityMagnitude").Number(), entry.At("components").Numbers<3>()};
        }
        if (!table.emplace(material.name, material).second) {
            entry.At("name").Fail("a second material named " + Quoted(material.name));
        }
    }
    return table;
}

} // namespace vantor::model
