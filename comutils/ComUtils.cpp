#include "comutils/ComUtils.h"

#include "comutils/Dispatch.h"

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
    return Dispatch::QueryTexts(object, L"GetChildNames");
}

IDispatch* CComUtils::CallGetChildObject(IDispatch* object, const std::string& name) {
    return Dispatch::QueryObject(object, L"GetChildObject", {name}).release();
}

std::vector<std::string> CComUtils::CallGetPropNames(IDispatch* object) {
    return Dispatch::QueryTexts(object, L"GetPropNames");
}

VARIANT CComUtils::CallGetPropValue(IDispatch* object, const std::string& property) {
    CValue value;
    Dispatch::Call(object, L"GetPropValue", {property}, value);
    return value.Detach();
}

bool CComUtils::CallSetPropValue(IDispatch* object, const std::string& property, const VARIANT& value) {
    return Dispatch::Call(object, L"SetPropValue", {property, CValue::Copy(value)});
}

IDispatch* CComUtils::CallGetModule(IDispatch* object, const std::string& module) {
    return Dispatch::QueryObject(object, L"GetModule", {module}).release();
}

IDispatch* CComUtils::CallSetActive(IDispatch* object, const wchar_t* methodName, const std::string& name) {
    return Dispatch::QueryObject(object, methodName, {name}).release();
}

std::set<std::string> CComUtils::CallAndGetStringSet(IDispatch* object, const wchar_t* methodName) {
    const std::vector<std::string> texts = Dispatch::QueryTexts(object, methodName);
    return {texts.begin(), texts.end()};
}
