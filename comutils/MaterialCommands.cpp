#include "comutils/MaterialCommands.h"

#include "comutils/Names.h"
#include "comutils/ObjectCommands.h"

#include <algorithm>
#include <iterator>

namespace MaterialCommands {
namespace {

/// An object whose material cannot be read does not count as one that is not vacuum.
bool IsNonVacuum(IDispatch* editor, const std::string& name) {
    const CValue material = MaterialOf(editor, name);
    return material.IsText() && material.ToText() != Names::quotedVacuum;
}

} // namespace

bool AssignMaterial(IDispatch* editor, std::string_view object, const std::string& material) {
    // clang-format off
    return Dispatch::Call(editor, L"AssignMaterial",
        {{"NAME:Selections",
          "Selections:=", object,
          "AllowRegionDependentPartSelectionForPMLCreation:=", true,
          "AllowRegionSelectionForPMLCreation:=", true},
         {"NAME:Attributes",
          "MaterialValue:=", "\"" + material + "\"",
          "SolveInside:=", true,
          "ShellElement:=", false,
          "ShellElementThickness:=", Names::noThickness,
          "IsMaterialEditable:=", true,
          "UseMaterialAppearance:=", false,
          "IsLightweight:=", false}});
    // clang-format on
}

bool CloneMaterial(IDispatch* definitionManager, std::string_view source, std::string_view newName) {
    CValue result;
    return Dispatch::Call(definitionManager, L"CloneMaterial", {source, newName}, result) &&
           result.Get().vt == VT_BOOL && result.Get().boolVal != VARIANT_FALSE;
}

bool AddMaterial(IDispatch* project, std::string_view material) {
    return Dispatch::Call(project, L"AddMaterial", {{Names::Block(material)}});
}

CValue MaterialOf(IDispatch* editor, std::string_view object) {
    return ObjectCommands::GetPropValue(ObjectCommands::GetChildObject(editor, object).get(), "Material");
}

std::vector<std::string> NonVacuumObjects(IDispatch* editor, const std::vector<std::string>& objects) {
    std::vector<std::string> kept;
    std::copy_if(objects.begin(), objects.end(), std::back_inserter(kept),
                 [editor](const std::string& name) { return IsNonVacuum(editor, name); });
    return kept;
}

bool SetSolveInside(IDispatch* editor) {
    constexpr char property[] = "Solve Inside";
    for (const std::string& name : ObjectCommands::ChildNames(editor)) {
        const CObject object = ObjectCommands::GetChildObject(editor, name);
        if (!object) {
            return false;
        }
        if (Names::Contains(ObjectCommands::GetPropNames(object.get()), property) &&
            !ObjectCommands::SetPropValue(object.get(), property, true)) {
            return false;
        }
    }
    return true;
}

} // namespace MaterialCommands
