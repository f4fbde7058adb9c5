#include "comutils/ComUtils.h"

#include "comutils/Dispatch.h"
#include "comutils/Text.h"

namespace {

constexpr VARTYPE variantArray = VT_ARRAY | VT_VARIANT;

bool FindMethod(IDispatch* object, const wchar_t* methodName, DISPID& id) {
    if (!object)
        return false;
    LPOLESTR name = const_cast<LPOLESTR>(methodName);
    return SUCCEEDED(object->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_SYSTEM_DEFAULT, &id));
}

std::vector<std::string> QueryTexts(IDispatch* object, const wchar_t* methodName) {
    CValue result;
    Dispatch::Call(object, methodName, {}, result);
    return CComUtils::ReadStringArray(result.Get());
}

} // namespace

bool CComUtils::SupportComFunction(IDispatch* object, const wchar_t* methodName) {
    DISPID id = DISPID_UNKNOWN;
    return FindMethod(object, methodName, id);
}

bool CComUtils::CallComFunction(IDispatch* object, const wchar_t* methodName, unsigned short flags,
                                DISPPARAMS& arguments, VARIANT& result) {
    DISPID id = DISPID_UNKNOWN;
    return FindMethod(object, methodName, id) &&
           SUCCEEDED(object->Invoke(id, IID_NULL, LOCALE_SYSTEM_DEFAULT, flags, &arguments, &result, nullptr, nullptr));
}

bool CComUtils::CallComFunction(IDispatch* object, const wchar_t* methodName, VARIANT& result) {
    DISPPARAMS none = {};
    return CallComFunction(object, methodName, DISPATCH_METHOD, none, result);
}

VARIANT CComUtils::CreateVariant(const std::string& text) {
    return CValue(text).Detach();
}

VARIANT CComUtils::CreateStringArray(const std::vector<std::string>& texts) {
    return CListBuilder::OfTexts(texts).Detach();
}

std::vector<std::string> CComUtils::ReadStringArray(const VARIANT& array) {
    std::vector<std::string> texts;
    if (array.vt != variantArray || !array.parray || SafeArrayGetDim(array.parray) != 1)
        return texts;
    const auto* elements = static_cast<const VARIANT*>(array.parray->pvData);
    const ULONG count = array.parray->rgsabound[0].cElements;
    texts.reserve(count);
    for (const VARIANT* element = elements; element != elements + count; ++element)
        if (element->vt == VT_BSTR)
            texts.push_back(Text::FromBstr(element->bstrVal));
    return texts;
}

VARIANT CComUtils::CreateVariantArray(const std::vector<VARIANT>& values) {
    CListBuilder list(values.size());
    for (const VARIANT& value : values) {
        CValue copy;
        if (FAILED(copy.CopyFrom(value)))
            return CValue().Detach();
        list.Add(std::move(copy));
    }
    return list.Finish().Detach();
}

std::vector<std::string> CComUtils::CallGetChildNames(IDispatch* object) {
    return QueryTexts(object, L"GetChildNames");
}

IDispatch* CComUtils::CallGetChildObject(IDispatch* object, const std::string& name) {
    return Dispatch::QueryObject(object, L"GetChildObject", {name}).release();
}

std::vector<std::string> CComUtils::CallGetPropNames(IDispatch* object) {
    return QueryTexts(object, L"GetPropNames");
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
    const std::vector<std::string> texts = QueryTexts(object, methodName);
    return {texts.begin(), texts.end()};
}
