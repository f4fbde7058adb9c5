#pragma once

/// @file
/// Objects that count their references, and those that make them.

#include <windows.h>

#pragma GCC visibility push(default)

extern const IID IID_NULL;
extern const IID IID_IUnknown;
extern const IID IID_IClassFactory;

struct IUnknown {
    virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) = 0;
    virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE Release() = 0;
};

struct IClassFactory : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) = 0;
    virtual HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) = 0;
};

#pragma GCC visibility pop
