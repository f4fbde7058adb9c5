#pragma once

#include <windows.h>

#include <oleauto.h>

/// What the tests' dispatch objects have in common: one identity under both interfaces, and no type information. Each
/// counts its references as it needs.
class DispatchBase : public IDispatch {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        const bool isKnown = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IDispatch);
        *object = isKnown ? static_cast<IDispatch*>(this) : nullptr;
        if (!isKnown) {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
};
