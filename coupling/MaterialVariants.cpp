#include "comutils/MaterialCommands.h"
#include "comutils/Names.h"
#include "comutils/ObjectCommands.h"
#include "comutils/Text.h"
#include "coupling/KinoraVeltrixCoupling.h"
#include "coupling/ModelBuild.h"

#include <algorithm>
#include <iterator>

namespace {

std::string ComponentProperty(int component) {
    return std::string(Names::coercivity) + "/Component" + std::to_string(component + 1);
}

/// @return false when a component is no text; all three are read in any case
bool ReadComponents(IDispatch* material, double (&components)[3]) {
    bool texts = true;
    for (int component = 0; component < 3; ++component) {
        const CValue value = ObjectCommands::GetPropValue(material, ComponentProperty(component));
        texts = texts && value.IsText();
        components[component] = Text::ToNumber(value.ToText());
    }
    return texts;
}

/// Writes the components that differ from those that the clone has from its source.
bool WriteComponents(IDispatch* clone, const double (&wanted)[3], const double (&stored)[3]) {
    for (int component = 0; component < 3; ++component) {
        if (wanted[component] != stored[component] &&
            !ObjectCommands::SetPropValue(clone, ComponentProperty(component), wanted[component])) {
            return false;
        }
    }
    return true;
}

} // namespace

bool CKinoraVeltrixCoupling::AssignMaterial(const ModelBuild& model, const std::string& object,
                                            const Material& wanted) {
    IDispatch* editor = model.editor.get();
    if (m_plainMaterials.count(wanted.name)) {
        return MaterialCommands::AssignMaterial(editor, object, wanted.name);
    }
    if (m_materialClones.count(wanted.name)) {
        return AssignVariant(model, object, wanted);
    }

    if (!MaterialCommands::AssignMaterial(editor, object, wanted.name)) {
        return false;
    }
    const CObject material = ObjectCommands::GetChildObject(model.materials.get(), wanted.name);
    if (!material) {
        return false;
    }
    if (!Names::Contains(ObjectCommands::GetPropNames(material.get()), Names::coercivity)) {
        m_plainMaterials.insert(wanted.name);
        return true;
    }
    MaterialVariant base = {wanted.name, {}};
    // Components that are no texts cannot be compared: the object keeps the material, and the next one asks again.
    if (!ReadComponents(material.get(), base.components)) {
        return true;
    }
    m_materialClones.emplace(wanted.name, MaterialVariants{base});
    return AssignVariant(model, object, wanted);
}

bool CKinoraVeltrixCoupling::AssignVariant(const ModelBuild& model, const std::string& object, const Material& wanted) {
    const MaterialVariants& variants = m_materialClones[wanted.name];
    const auto& direction = wanted.coercivityDirection;
    const auto known = std::find_if(variants.begin(), variants.end(), [&](const MaterialVariant& variant) {
        return std::equal(std::begin(direction), std::end(direction), std::begin(variant.components));
    });
    if (known != variants.end()) {
        const std::string name = known->name;
        return MaterialCommands::AssignMaterial(model.editor.get(), object, name);
    }

    const MaterialVariant base = variants.front();
    MaterialVariant variant = {wanted.name + "_" + std::to_string(variants.size()), {}};
    std::copy(std::begin(direction), std::end(direction), std::begin(variant.components));
    if (!MaterialCommands::CloneMaterial(model.definitions.get(), base.name, variant.name)) {
        return false;
    }
    const CObject clone = ObjectCommands::GetChildObject(model.materials.get(), variant.name);
    if (!clone || !WriteComponents(clone.get(), direction, base.components)) {
        return false;
    }
    m_materialClones[wanted.name].push_back(variant);
    return MaterialCommands::AssignMaterial(model.editor.get(), object, variant.name);
}
