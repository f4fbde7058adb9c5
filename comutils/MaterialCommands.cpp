#include "comutils/ComUtils.h"
#include "comutils/Dispatch.h"
#include "comutils/Names.h"

#include <algorithm>

namespace {

constexpr char quotedVacuum[] = "\"vacuum\"";

/// An object whose material cannot be read does not count as one that is not vacuum.
bool IsNonVacuum(IDispatch* editor, const std::string& name) {
    const CObject object = Dispatch::Own(CComUtils::CallGetChildObject(editor, name));
    const CValue material = CValue::Attach(CComUtils::CallGetPropValue(object.get(), "Material"));
    return material.IsText() && material.ToText() != quotedVacuum;
}

} // namespace

bool CComUtils::CallAssignMaterial(IDispatch* editor, const std::string& object, std::string material) {
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
          "ShellElementThickness:=", "nan ",
          "IsMaterialEditable:=", true,
          "UseMaterialAppearance:=", false,
          "IsLightweight:=", false}});
    // clang-format on
}

bool CComUtils::CallCloneMaterial(IDispatch* definitionManager, const std::string& source, const std::string& newName) {
    CValue result;
    return Dispatch::Call(definitionManager, L"CloneMaterial", {source, newName}, result) &&
           result.Get().vt == VT_BOOL && result.Get().boolVal != VARIANT_FALSE;
}

bool CComUtils::SetSolveInside(IDispatch* editor) {
    constexpr char property[] = "Solve Inside";
    for (const std::string& name : CallGetChildNames(editor)) {
        const CObject object = Dispatch::Own(CallGetChildObject(editor, name));
        if (!object)
            return false;
        if (Names::Contains(CallGetPropNames(object.get()), property) &&
            !CallSetPropValue(object.get(), property, CValue(true).Get()))
            return false;
    }
    return true;
}

std::vector<std::string> CComUtils::GetNonVacuumObjects(IDispatch* editor, std::vector<std::string> objects) {
    std::vector<std::string> kept;
    std::copy_if(objects.begin(), objects.end(), std::back_inserter(kept),
                 [editor](const std::string& name) { return IsNonVacuum(editor, name); });
    return kept;
}
