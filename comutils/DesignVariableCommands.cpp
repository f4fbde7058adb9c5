#include "comutils/ComUtils.h"
#include "comutils/Dispatch.h"
#include "comutils/Names.h"

namespace {

/// Addresses the local variables of a design.
/// @param properties  the list "NAME:NewProps" or "NAME:ChangedProps"
CValue LocalVariableTab(CValue properties) {
    return {"NAME:AllTabs", {"NAME:LocalVariableTab", {"NAME:PropServers", "LocalVariables"}, std::move(properties)}};
}

CValue ChangedVariable(const std::string& name, const std::string& value) {
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
    CListBuilder properties(1 + variables.size());
    properties.Add("NAME:ChangedProps");
    for (const auto& [name, value] : variables)
        properties.Add(ChangedVariable(name, value));
    return Dispatch::Call(design, L"ChangeProperty", {LocalVariableTab(properties.Finish())});
}
