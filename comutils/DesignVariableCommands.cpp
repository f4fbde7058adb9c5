#include "comutils/ComUtils.h"
#include "comutils/Dispatch.h"
#include "comutils/Names.h"
#include "comutils/VariableUpdates.h"

#include <algorithm>

namespace {

/// Addresses the local variables of a design.
/// @param properties  the list "NAME:NewProps" or "NAME:ChangedProps"
CValue LocalVariableTab(CValue properties) {
    return {"NAME:AllTabs", {"NAME:LocalVariableTab", {"NAME:PropServers", "LocalVariables"}, std::move(properties)}};
}

CValue ChangedVariable(std::string_view name, std::string_view value) {
    return {Names::Block(name), "Value:=", value};
}

CValue NewVariable(const std::string& name, const std::string& value) {
    return {Names::Block(name), "PropType:=", "VariableProp", "UserDef:=", true, "Value:=", value};
}

} // namespace

VARIANT CComUtils::GetChangePropertyArgument(std::string name, std::string value, bool isNew) {
    CValue properties = isNew ? CValue{"NAME:NewProps", NewVariable(name, value)}
                              : CValue{"NAME:ChangedProps", ChangedVariable(name, value)};
    return LocalVariableTab(std::move(properties)).Detach();
}

bool CComUtils::UpdateVariables(IDispatch* design, const std::map<std::string, std::string>& variables) {
    return VariableUpdates::Send(design, {variables.begin(), variables.end()});
}

void VariableUpdates::Sort(std::vector<Update>& updates) {
    const auto isBefore = [](const Update& one, const Update& other) { return one.first < other.first; };
    const auto isSame = [](const Update& one, const Update& other) { return one.first == other.first; };
    // Most often the host names its bodies in this order already.
    if (!std::is_sorted(updates.begin(), updates.end(), isBefore))
        std::stable_sort(updates.begin(), updates.end(), isBefore);
    updates.erase(std::unique(updates.begin(), updates.end(), isSame), updates.end());
}

bool VariableUpdates::Send(IDispatch* design, const std::vector<Update>& updates) {
    CListBuilder properties(1 + updates.size());
    properties.Add("NAME:ChangedProps");
    for (const auto& [name, value] : updates)
        properties.Add(ChangedVariable(name, value));
    return Dispatch::Call(design, L"ChangeProperty", {LocalVariableTab(properties.Finish())});
}
