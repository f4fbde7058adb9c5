#include "tests/simulator/automation/Automation.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace calls {

Variant Text(const wchar_t* text) {
    Variant variant;
    variant.vt = VT_BSTR;
    variant.bstrVal = SysAllocString(text);
    return variant;
}

Variant Int(int value) {
    Variant variant;
    variant.vt = VT_INT;
    variant.intVal = value;
    return variant;
}

Variant Flag(bool value) {
    Variant variant;
    variant.vt = VT_BOOL;
    variant.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
    return variant;
}

Variant Array(const std::vector<Variant>& elements) {
    Variant array;
    array.vt = VT_ARRAY | VT_VARIANT;
    array.parray = SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(elements.size()));
    for (LONG i = 0; i < static_cast<LONG>(elements.size()); ++i) {
        Variant element = elements[static_cast<std::size_t>(i)];
        SafeArrayPutElement(array.parray, &i, &element);
    }
    return array;
}

HRESULT Lookup(IDispatch* object, const wchar_t* method, DISPID& id) {
    std::wstring name(method);
    LPOLESTR text = name.data();
    return object->GetIDsOfNames(IID_NULL, &text, 1, LOCALE_SYSTEM_DEFAULT, &id);
}

Outcome Try(IDispatch* object, const wchar_t* method, const std::vector<Variant>& arguments) {
    Outcome outcome;
    if (!object) {
        outcome.status = E_POINTER;
        return outcome;
    }
    DISPID id = DISPID_UNKNOWN;
    outcome.status = Lookup(object, method, id);
    if (FAILED(outcome.status)) {
        return outcome;
    }
    std::vector<Variant> block(arguments.rbegin(), arguments.rend());
    DISPPARAMS parameters = {block.data(), nullptr, static_cast<UINT>(block.size()), 0};
    EXCEPINFO exception = {};
    outcome.status = object->Invoke(id, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_METHOD, &parameters, &outcome.result,
                                    &exception, nullptr);
    outcome.scode = exception.scode;
    const auto take = [](BSTR text) {
        const std::wstring copy = text != nullptr ? text : L"";
        SysFreeString(text);
        return copy;
    };
    outcome.source = take(exception.bstrSource);
    outcome.description = take(exception.bstrDescription);
    SysFreeString(exception.bstrHelpFile);
    return outcome;
}

Variant Call(IDispatch* object, const wchar_t* method, const std::vector<Variant>& arguments) {
    Outcome outcome = Try(object, method, arguments);
    EXPECT_EQ(outcome.status, S_OK) << std::string(outcome.description.begin(), outcome.description.end());
    return outcome.result;
}

Object CallObject(IDispatch* object, const wchar_t* method, const std::vector<Variant>& arguments) {
    Variant result = Call(object, method, arguments);
    EXPECT_EQ(result.vt, VT_DISPATCH);
    if (result.vt != VT_DISPATCH) {
        return Object();
    }
    result.vt = VT_EMPTY;
    return Object(result.pdispVal);
}

} // namespace calls
