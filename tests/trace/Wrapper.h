#pragma once

#include "tests/support/TestFolder.h"
#include "trace/core/Session.h"
#include "trace/server/Tracer.h"

#include <windows.h>

#include <oaidl.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace kinora::trace {

/// An automation object that does what the test says, and counts its references.
class Target final : public IDispatch {
public:
    using Handler = std::function<HRESULT(DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*)>;
    Handler handler;
    std::atomic<ULONG> references{1};

    /// What the last call came with, besides its arguments.
    struct Way {
        DISPID id = 0;
        IID iid = {};
        LCID locale = 0;
        WORD flags = 0;
    };
    Way way;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** result) override {
        const bool isKnown = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IDispatch);
        *result = isKnown ? this : nullptr;
        references += isKnown ? 1U : 0U;
        return isKnown ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        *count = 1;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override {
        *info = nullptr;
        return index == 3 && locale == 0x407 ? TYPE_E_CANTLOADLIBRARY : DISP_E_BADINDEX;
    }
    /// Knows every name but "Unknown": a method has the number 7, its arguments 101, 102 ..
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
        HRESULT code = S_OK;
        for (UINT i = 0; i < count; ++i) {
            const bool isKnown = std::wstring(names[i]) != L"Unknown";
            const DISPID id = i == 0 ? 7 : 100 + static_cast<DISPID>(i);
            ids[i] = isKnown ? id : DISPID_UNKNOWN;
            code = isKnown ? code : DISP_E_UNKNOWNNAME;
        }
        return code;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO* exception, UINT* argumentError) override {
        way = {id, iid, locale, flags};
        return handler(parameters, result, exception, argumentError);
    }
};

inline VARIANT ObjectVariant(IDispatch* object) {
    VARIANT value;
    VariantInit(&value);
    V_VT(&value) = VT_DISPATCH;
    V_DISPATCH(&value) = object;
    return value;
}

/// An array of VARIANTs with one object in it, which gets a reference.
inline VARIANT ArrayOf(IDispatch* object) {
    VARIANT element = ObjectVariant(object);
    VARIANT value;
    VariantInit(&value);
    V_VT(&value) = VT_ARRAY | VT_VARIANT;
    V_ARRAY(&value) = SafeArrayCreateVector(VT_VARIANT, 0, 1);
    LONG index = 0;
    SafeArrayPutElement(V_ARRAY(&value), &index, &element);
    return value;
}

inline IDispatch* FirstObject(const VARIANT& array) {
    return V_DISPATCH(static_cast<VARIANT*>(V_ARRAY(&array)->pvData));
}

inline Session ReadTraceFile(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    Session session;
    ReadTrace(stream, file.u8string(), session);
    return session;
}

class Wrapper : public testing::Test {
protected:
    Wrapper() : tracer(RecorderSettings{folder.Path(), 1 << 26}), wrapper(tracer.WrapperOf(&target, "desktop")) {}
    ~Wrapper() override {
        wrapper->Release();
        EXPECT_EQ(tracer.Wrappers(), 0U);
        EXPECT_EQ(target.references, 1U);
        EXPECT_EQ(child.references, 1U);
    }

    HRESULT Call(std::vector<VARIANT> arguments, VARIANT* result, EXCEPINFO* exception = nullptr,
                 UINT* argumentError = nullptr) {
        wchar_t name[] = L"Method";
        LPOLESTR names[] = {name};
        DISPID id = 0;
        EXPECT_EQ(wrapper->GetIDsOfNames(IID_NULL, names, 1, LOCALE_SYSTEM_DEFAULT, &id), S_OK);
        DISPPARAMS parameters = {arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
        return wrapper->Invoke(id, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_METHOD, &parameters, result, exception,
                               argumentError);
    }

    void GiveChild() {
        target.handler = [this](DISPPARAMS*, VARIANT* result, EXCEPINFO*, UINT*) {
            child.AddRef();
            *result = ObjectVariant(&child);
            return S_OK;
        };
    }

    Record LastRecord() { return ReadTraceFile(tracer.ItsRecorder().File()).records.back(); }

    const fake::TestFolder folder;
    Target target;
    Target child;
    Tracer tracer;
    IDispatch* wrapper;
};

} // namespace kinora::trace
