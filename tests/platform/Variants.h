#pragma once

#include <windows.h>

#include <oleauto.h>

#include <string>

/// @name VARIANTs that own what is put into them, until VariantClear
/// @{
inline VARIANT TextVariant(const std::wstring& text) {
    VARIANT value;
    VariantInit(&value);
    value.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    value.vt = VT_BSTR;
    return value;
}

/// One more reference on the object.
inline VARIANT ObjectVariant(IDispatch& object) {
    VARIANT value;
    VariantInit(&value);
    object.AddRef();
    value.pdispVal = &object;
    value.vt = VT_DISPATCH;
    return value;
}

inline VARIANT ArrayVariant(SAFEARRAY* elements, VARTYPE type) {
    VARIANT value;
    VariantInit(&value);
    value.parray = elements;
    value.vt = static_cast<VARTYPE>(VT_ARRAY | type);
    return value;
}
/// @}

inline std::wstring TextOf(BSTR text) {
    return std::wstring(text, SysStringLen(text));
}
