#include "comutils/ObjectCommands.h"

namespace ObjectCommands {

bool GetName(IDispatch* object, std::string& name) {
    return Dispatch::QueryText(object, L"GetName", name);
}

bool GetChildNames(IDispatch* object, CValue& names) {
    return Dispatch::Call(object, L"GetChildNames", {}, names);
}

std::vector<std::string> ChildNames(IDispatch* object) {
    CValue names;
    GetChildNames(object, names);
    return names.ToTexts();
}

CObject GetChildObject(IDispatch* object, std::string_view name) {
    return Dispatch::QueryObject(object, L"GetChildObject", {name});
}

std::vector<std::string> GetPropNames(IDispatch* object) {
    return Dispatch::QueryTexts(object, L"GetPropNames");
}

CValue GetPropValue(IDispatch* object, std::string_view property) {
    CValue value;
    Dispatch::Call(object, L"GetPropValue", {property}, value);
    return value;
}

bool SetPropValue(IDispatch* object, std::string_view property, CValue value) {
    return Dispatch::Call(object, L"SetPropValue", {property, std::move(value)});
}

} // namespace ObjectCommands
