#pragma once

/// @file
/// What is done with automation values.

#include <oaidl.h>

#pragma GCC visibility push(default)

inline constexpr WORD DISPATCH_METHOD = 0x1;
inline constexpr WORD DISPATCH_PROPERTYGET = 0x2;
inline constexpr DISPID DISPID_UNKNOWN = -1;

/// @name Texts
/// @{
BSTR SysAllocString(const OLECHAR* text);
/// @param text  null for a text of zeros
BSTR SysAllocStringLen(const OLECHAR* text, UINT length);
void SysFreeString(BSTR text);
/// @return characters, the closing zero not counted; 0 for null
UINT SysStringLen(BSTR text);
UINT SysStringByteLen(BSTR text);
/// @}

/// @name Values
/// @{
void VariantInit(VARIANT* value);
HRESULT VariantClear(VARIANT* value);
HRESULT VariantCopy(VARIANT* target, const VARIANT* source);
/// Knows the way to VT_I4 from numbers and flags; DISP_E_TYPEMISMATCH for any other.
HRESULT VariantChangeType(VARIANT* target, const VARIANT* source, USHORT flags, VARTYPE type);
/// @}

/// @name Arrays
/// Of all types but VT_ARRAY, VT_BYREF, VT_EMPTY and VT_NULL.
/// @{
SAFEARRAY* SafeArrayCreate(VARTYPE type, UINT rank, SAFEARRAYBOUND* bounds);
SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lowerBound, ULONG count);
HRESULT SafeArrayDestroy(SAFEARRAY* array);
HRESULT SafeArrayCopy(SAFEARRAY* array, SAFEARRAY** copy);
UINT SafeArrayGetDim(SAFEARRAY* array);
UINT SafeArrayGetElemsize(SAFEARRAY* array);
HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type);
/// @param dimension  from 1 on
HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* bound);
HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* bound);
HRESULT SafeArrayLock(SAFEARRAY* array);
HRESULT SafeArrayUnlock(SAFEARRAY* array);
HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data);
HRESULT SafeArrayUnaccessData(SAFEARRAY* array);
/// @param indices  one per dimension, the first one first
/// @param element  texts and objects are read as such, all others through the pointer
HRESULT SafeArrayPutElement(SAFEARRAY* array, LONG* indices, void* element);
HRESULT SafeArrayGetElement(SAFEARRAY* array, LONG* indices, void* element);
/// @}

#pragma GCC visibility pop
