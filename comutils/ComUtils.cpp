#include "comutils/ComUtils.h"

#include "comutils/DesignCommands.h"
#include "comutils/DesktopCommands.h"
#include "comutils/Dispatch.h"
#include "comutils/ObjectCommands.h"
#include "comutils/ProjectCommands.h"

namespace {

std::set<std::string> AsSet(const std::vector<std::string>& texts) {
    return {texts.begin(), texts.end()};
}

} // namespace

bool CComUtils::SupportComFunction(IDispatch* object, const wchar_t* methodName) {
    return Dispatch::Knows(object, methodName);
}

bool CComUtils::CallComFunction(IDispatch* object, const wchar_t* methodName, unsigned short flags,
                                DISPPARAMS& arguments, VARIANT& result) {
    return Dispatch::Invoke(object, methodName, flags, arguments, result);
}

bool CComUtils::CallComFunction(IDispatch* object, const wchar_t* methodName, VARIANT& result) {
    DISPPARAMS none = {};
    return Dispatch::Invoke(object, methodName, DISPATCH_METHOD, none, result);
}

VARIANT CComUtils::CreateVariant(const std::string& text) {
    return CValue(text).Detach();
}

VARIANT CComUtils::CreateStringArray(const std::vector<std::string>& texts) {
    return CListBuilder::OfTexts(texts).Detach();
}

std::vector<std::string> CComUtils::ReadStringArray(const VARIANT& array) {
    return CValue::TextsOf(array);
}

VARIANT CComUtils::CreateVariantArray(const std::vector<VARIANT>& values) {
    return CListBuilder::OfCopies(values).Detach();
}

std::vector<std::string> CComUtils::CallGetChildNames(IDispatch* object) {
    return ObjectCommands::ChildNames(object);
}

IDispatch* CComUtils::CallGetChildObject(IDispatch* object, const std::string& name) {
    return ObjectCommands::GetChildObject(object, name).release();
}

std::vector<std::string> CComUtils::CallGetPropNames(IDispatch* object) {
    return ObjectCommands::GetPropNames(object);
}

VARIANT CComUtils::CallGetPropValue(IDispatch* object, const std::string& property) {
    return ObjectCommands::GetPropValue(object, property).Detach();
}

bool CComUtils::CallSetPropValue(IDispatch* object, const std::string& property, const VARIANT& value) {
    return ObjectCommands::SetPropValue(object, property, CValue::Copy(value));
}

IDispatch* CComUtils::CallGetModule(IDispatch* object, const std::string& module) {
    return DesignCommands::GetModule(object, module).release();
}

IDispatch* CComUtils::CallSetActive(IDispatch* object, const wchar_t* methodName, const std::string& name) {
    return Dispatch::QueryObject(object, methodName, {name}).release();
}

std::set<std::string> CComUtils::CallAndGetStringSet(IDispatch* object, const wchar_t* methodName) {
    return AsSet(Dispatch::QueryTexts(object, methodName));
}

bool CComUtils::CallInsertDesign(IDispatch* project, const std::string& designName) {
    return ProjectCommands::InsertDesign(project, designName);
}

bool CComUtils::CallSetDesignSetttings(IDispatch* design) {
    return DesignCommands::SetDesignSettings(design);
}

bool CComUtils::CallSaveAs(IDispatch* project, const std::string& path, const bool& overwrite) {
    return ProjectCommands::SaveAs(project, path, overwrite);
}

std::string CComUtils::CallGetRegistryString(IDispatch* desktop, const std::string& key) {
    return DesktopCommands::GetRegistryString(desktop, key);
}
