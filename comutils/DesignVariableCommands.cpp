#include "comutils/DesignVariableCommands.h"

#include "comutils/Names.h"

#include <algorithm>

namespace DesignVariableCommands {
namespace {

constexpr char server[] = "LocalVariables";

/// Addresses the local variables of a design.
/// @param properties  the list "NAME:NewProps" or "NAME:ChangedProps"
CValue OnVariables(CValue properties) {
    return {"NAME:AllTabs", {"NAME:LocalVariableTab", {"NAME:PropServers", server}, std::move(properties)}};
}

CValue ChangedVariable(std::string_view name, std::string_view value) {
    return {Names::Block(name), "Value:=", value};
}

CValue NewVariable(std::string_view name, std::string_view value) {
    return {Names::Block(name), "PropType:=", "VariableProp", "UserDef:=", true, "Value:=", value};
}

bool ChangeProperty(IDispatch* design, CValue change) {
    return Dispatch::Call(design, L"ChangeProperty", {std::move(change)});
}

} // namespace

bool GetVariables(IDispatch* design, std::vector<std::string>& names) {
    CValue result;
    if (!Dispatch::Call(design, L"GetProperties", {"LocalVariableTab", server}, result)) {
        return false;
    }
    names = result.ToTexts();
    return true;
}

CValue ChangeArgument(std::string_view name, std::string_view value, bool isNew) {
    CValue properties = isNew ? CValue{"NAME:NewProps", NewVariable(name, value)}
                              : CValue{"NAME:ChangedProps", ChangedVariable(name, value)};
    return OnVariables(std::move(properties));
}

bool SetVariable(IDispatch* design, std::string_view name, std::string_view value, bool isNew) {
    return ChangeProperty(design, ChangeArgument(name, value, isNew));
}

void Sort(std::vector<Update>& updates) {
    const auto isBefore = [](const Update& one, const Update& other) { return one.first < other.first; };
    const auto isSame = [](const Update& one, const Update& other) { return one.first == other.first; };
    // Most often the host names its bodies in this order already.
    if (!std::is_sorted(updates.begin(), updates.end(), isBefore)) {
        std::stable_sort(updates.begin(), updates.end(), isBefore);
    }
    updates.erase(std::unique(updates.begin(), updates.end(), isSame), updates.end());
}

bool ChangeVariables(IDispatch* design, const std::vector<Update>& updates) {
    CListBuilder properties(1 + updates.size());
    properties.Add("NAME:ChangedProps");
    for (const auto& [name, value] : updates) {
        properties.Add(ChangedVariable(name, value));
    }
    return ChangeProperty(design, OnVariables(properties.Finish()));
}

bool ChangeVariables(IDispatch* design, const std::map<std::string, std::string>& variables) {
    return ChangeVariables(design, std::vector<Update>(variables.begin(), variables.end()));
}

} // namespace DesignVariableCommands
