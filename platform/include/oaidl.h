#pragma once

/// @file
/// Automation values and objects.

#include <unknwn.h>

#pragma GCC visibility push(default)

/// A text behind its length: it may hold zeros, and a null one is empty.
using BSTR = OLECHAR*;
using VARTYPE = USHORT;
using VARIANT_BOOL = SHORT;
using DISPID = LONG;
using DATE = double;
using SCODE = LONG;

inline constexpr VARIANT_BOOL VARIANT_TRUE = -1;
inline constexpr VARIANT_BOOL VARIANT_FALSE = 0;

enum VARENUM : VARTYPE {
    VT_EMPTY = 0,
    VT_NULL = 1,
    VT_I2 = 2,
    VT_I4 = 3,
    VT_R4 = 4,
    VT_R8 = 5,
    VT_DATE = 7,
    VT_BSTR = 8,
    VT_DISPATCH = 9,
    VT_ERROR = 10,
    VT_BOOL = 11,
    VT_VARIANT = 12,
    VT_UNKNOWN = 13,
    VT_I1 = 16,
    VT_UI1 = 17,
    VT_UI2 = 18,
    VT_UI4 = 19,
    VT_I8 = 20,
    VT_UI8 = 21,
    VT_INT = 22,
    VT_UINT = 23,
    VT_TYPEMASK = 0x0FFF,
    VT_ARRAY = 0x2000,
    VT_BYREF = 0x4000,
    VT_ILLEGAL = 0xFFFF
};

struct SAFEARRAYBOUND {
    ULONG cElements;
    LONG lLbound;
};

/// An array of any rank. Its bounds stand last dimension first; the elements of the first dimension lie beside one
/// another.
struct SAFEARRAY {
    USHORT cDims;
    USHORT fFeatures;
    ULONG cbElements;
    ULONG cLocks;
    PVOID pvData;
    SAFEARRAYBOUND rgsabound[1];
};

struct IDispatch;
struct ITypeInfo;

struct VARIANT {
    VARTYPE vt;
    WORD wReserved1;
    WORD wReserved2;
    WORD wReserved3;
    union {
        LONGLONG llVal;
        ULONGLONG ullVal;
        LONG lVal;
        ULONG ulVal;
        SHORT iVal;
        USHORT uiVal;
        char cVal;
        BYTE bVal;
        INT intVal;
        UINT uintVal;
        float fltVal;
        double dblVal;
        DATE date;
        SCODE scode;
        VARIANT_BOOL boolVal;
        BSTR bstrVal;
        IUnknown* punkVal;
        IDispatch* pdispVal;
        SAFEARRAY* parray;
        PVOID byref;
        VARIANT* pvarVal;
        SHORT* piVal;
        LONG* plVal;
        INT* pintVal;
        double* pdblVal;
        VARIANT_BOOL* pboolVal;
        BSTR* pbstrVal;
        IUnknown** ppunkVal;
        IDispatch** ppdispVal;
        SAFEARRAY** pparray;
    };
};
using VARIANTARG = VARIANT;

/// Arguments of a call, the last one first.
struct DISPPARAMS {
    VARIANTARG* rgvarg;
    DISPID* rgdispidNamedArgs;
    UINT cArgs;
    UINT cNamedArgs;
};

/// What a call that fails says about it; its texts belong to the caller.
struct EXCEPINFO {
    WORD wCode;
    WORD wReserved;
    BSTR bstrSource;
    BSTR bstrDescription;
    BSTR bstrHelpFile;
    DWORD dwHelpContext;
    PVOID pvReserved;
    HRESULT (*pfnDeferredFillIn)(EXCEPINFO*);
    SCODE scode;
};

extern const IID IID_IDispatch;

struct IDispatch : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) = 0;
    /// There are no type libraries: no object of this process has any to give.
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale,
                                                    DISPID* ids) = 0;
    virtual HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* parameters,
                                             VARIANT* result, EXCEPINFO* exception, UINT* argumentError) = 0;
};

#pragma GCC visibility pop
