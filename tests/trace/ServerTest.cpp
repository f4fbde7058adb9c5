// The wrapper against a small target in the same process: what passes through, and what is recorded.
#include "trace/core/Session.h"
#include "trace/server/Tracer.h"

#include <windows.h>

#include <oaidl.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <vector>

namespace {

using namespace kinora::trace;

/// An automation object that does what the test says, and counts its references.
class Target final : public IDispatch {
public:
    using Handler = std::function<HRESULT(DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*)>;
    Handler handler;
    ULONG references = 1;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** result) override {
        const bool isKnown = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IDispatch);
        *result = isKnown ? this : nullptr;
        references += isKnown ? 1 : 0;
        return isKnown ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return DISP_E_BADINDEX; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) override {
        const bool isKnown = std::wstring(names[0]) != L"Unknown";
        ids[0] = isKnown ? 7 : DISPID_UNKNOWN;
        return isKnown ? S_OK : DISP_E_UNKNOWNNAME;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT* result,
                                     EXCEPINFO* exception, UINT* argumentError) override {
        return handler(parameters, result, exception, argumentError);
    }
};

VARIANT ObjectVariant(IDispatch* object) {
    VARIANT value;
    VariantInit(&value);
    V_VT(&value) = VT_DISPATCH;
    V_DISPATCH(&value) = object;
    return value;
}

/// An array of VARIANTs with one object in it, which gets a reference.
VARIANT ArrayOf(IDispatch* object) {
    VARIANT element = ObjectVariant(object);
    VARIANT value;
    VariantInit(&value);
    V_VT(&value) = VT_ARRAY | VT_VARIANT;
    V_ARRAY(&value) = SafeArrayCreateVector(VT_VARIANT, 0, 1);
    LONG index = 0;
    SafeArrayPutElement(V_ARRAY(&value), &index, &element);
    return value;
}

IDispatch* FirstObject(const VARIANT& array) {
    return V_DISPATCH(static_cast<VARIANT*>(V_ARRAY(&array)->pvData));
}

class Wrapper : public testing::Test {
protected:
    Wrapper()
        : folder(std::filesystem::temp_directory_path() / ("trace-test-" + std::to_string(GetCurrentProcessId()))),
          tracer(RecorderSettings{folder.wstring(), 1 << 20}), wrapper(tracer.WrapperOf(&target, "desktop")) {}
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

    Record LastRecord() {
        std::ifstream stream(std::filesystem::path(tracer.ItsRecorder().File()), std::ios::binary);
        Session session;
        ReadTrace(stream, "trace", session);
        return session.records.back();
    }

    const std::filesystem::path folder;
    Target target;
    Target child;
    Tracer tracer;
    IDispatch* wrapper;
};

TEST_F(Wrapper, IsOneForTheSameObject) {
    GiveChild();
    VARIANT first;
    VARIANT second;
    VariantInit(&first);
    VariantInit(&second);
    ASSERT_EQ(Call({}, &first), S_OK);
    ASSERT_EQ(Call({}, &second), S_OK);
    EXPECT_NE(V_DISPATCH(&first), &child);
    EXPECT_EQ(V_DISPATCH(&first), V_DISPATCH(&second));
    EXPECT_EQ(child.references, 2U);
    VariantClear(&first);
    EXPECT_EQ(child.references, 2U);
    VariantClear(&second);
}

TEST_F(Wrapper, IsTakenOffArgumentsAndArrays) {
    GiveChild();
    VARIANT object;
    VariantInit(&object);
    ASSERT_EQ(Call({}, &object), S_OK);
    VARIANT array = ArrayOf(V_DISPATCH(&object));
    int seen = 0;
    target.handler = [&](DISPPARAMS* parameters, VARIANT* result, EXCEPINFO*, UINT*) {
        seen += V_DISPATCH(&parameters->rgvarg[1]) == &child ? 1 : 0;
        seen += FirstObject(parameters->rgvarg[0]) == &child ? 10 : 0;
        EXPECT_EQ(result, nullptr);
        return S_OK;
    };
    EXPECT_EQ(Call({array, object}, nullptr), S_OK);
    EXPECT_EQ(seen, 11);
    EXPECT_EQ(FirstObject(array), V_DISPATCH(&object));
    VariantClear(&array);
    VariantClear(&object);
}

TEST_F(Wrapper, IsPutOnObjectsInReturnedArrays) {
    target.handler = [&](DISPPARAMS*, VARIANT* result, EXCEPINFO*, UINT*) {
        *result = ArrayOf(&child);
        return S_OK;
    };
    VARIANT array;
    VariantInit(&array);
    ASSERT_EQ(Call({}, &array), S_OK);
    EXPECT_EQ(tracer.ObjectBehind(FirstObject(array)), &child);
    VariantClear(&array);
}

TEST_F(Wrapper, IsExchangedInReferences) {
    GiveChild();
    VARIANT object;
    VariantInit(&object);
    ASSERT_EQ(Call({}, &object), S_OK);
    IDispatch* const before = V_DISPATCH(&object);
    IDispatch* empty = nullptr;
    VARIANT byVariant;
    VARIANT byObject;
    VariantInit(&byVariant);
    VariantInit(&byObject);
    V_VT(&byVariant) = VT_BYREF | VT_VARIANT;
    V_VARIANTREF(&byVariant) = &object;
    V_VT(&byObject) = VT_BYREF | VT_DISPATCH;
    V_DISPATCHREF(&byObject) = &empty;
    target.handler = [&](DISPPARAMS* parameters, VARIANT*, EXCEPINFO*, UINT*) {
        EXPECT_EQ(V_DISPATCH(V_VARIANTREF(&parameters->rgvarg[0])), &child);
        target.AddRef();
        *V_DISPATCHREF(&parameters->rgvarg[1]) = &target;
        return S_OK;
    };
    EXPECT_EQ(Call({byVariant, byObject}, nullptr), S_OK);
    EXPECT_EQ(V_DISPATCH(&object), before);
    EXPECT_EQ(empty, wrapper);
    empty->Release();
    VariantClear(&object);
}

TEST_F(Wrapper, LeavesObjectsOfTheClientAlone) {
    Target own;
    target.handler = [&](DISPPARAMS* parameters, VARIANT*, EXCEPINFO*, UINT*) {
        EXPECT_EQ(V_DISPATCH(&parameters->rgvarg[0]), &own);
        return S_OK;
    };
    EXPECT_EQ(Call({ObjectVariant(&own)}, nullptr), S_OK);
    EXPECT_EQ(own.references, 1U);
}

HRESULT RaiseBadValue(DISPPARAMS*, VARIANT*, EXCEPINFO* exception, UINT*) {
    exception->scode = static_cast<SCODE>(0x80040202);
    exception->bstrDescription = SysAllocString(L"too large");
    return DISP_E_EXCEPTION;
}

TEST_F(Wrapper, RecordsExceptionsThatTheClientDoesNotAskFor) {
    target.handler = RaiseBadValue;
    EXPECT_EQ(Call({}, nullptr), DISP_E_EXCEPTION);
    EXPECT_EQ(LastRecord().description, "too large");
    EXPECT_EQ(LastRecord().scriptError, "0x0202: Bad argument value");
}

TEST_F(Wrapper, PassesExceptionsAndArgumentErrorsOn) {
    target.handler = RaiseBadValue;
    EXCEPINFO exception = {};
    EXPECT_EQ(Call({}, nullptr, &exception), DISP_E_EXCEPTION);
    EXPECT_EQ(std::wstring(exception.bstrDescription), L"too large");
    SysFreeString(exception.bstrDescription);
    target.handler = [](DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT* argumentError) {
        *argumentError = 0;
        return DISP_E_TYPEMISMATCH;
    };
    VARIANT empty;
    VariantInit(&empty);
    UINT argumentError = 9;
    EXPECT_EQ(Call({empty, empty}, nullptr, nullptr, &argumentError), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(argumentError, 0U);
    EXPECT_EQ(LastRecord().argumentError, 1);
}

HRESULT __stdcall MustNotBeAsked(EXCEPINFO*) {
    ADD_FAILURE() << "the client asks, not the trace";
    return S_OK;
}

TEST_F(Wrapper, LeavesTextsOnDemandToTheClient) {
    target.handler = [](DISPPARAMS*, VARIANT*, EXCEPINFO* exception, UINT*) {
        exception->pfnDeferredFillIn = MustNotBeAsked;
        return DISP_E_EXCEPTION;
    };
    EXCEPINFO exception = {};
    EXPECT_EQ(Call({}, nullptr, &exception), DISP_E_EXCEPTION);
    EXPECT_TRUE(exception.pfnDeferredFillIn == MustNotBeAsked);
}

TEST_F(Wrapper, RecordsNamesThatAreNotKnown) {
    wchar_t name[] = L"Unknown";
    LPOLESTR names[] = {name};
    DISPID id = 0;
    EXPECT_EQ(wrapper->GetIDsOfNames(IID_NULL, names, 1, LOCALE_SYSTEM_DEFAULT, &id), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(id, DISPID_UNKNOWN);
    EXPECT_EQ(LastRecord().kind, Record::Kind::Lookup);
    EXPECT_EQ(LastRecord().method, "Unknown");
    EXPECT_EQ(LastRecord().code, 0x80020006U);
}

TEST_F(Wrapper, HasItsLineInTheFileWhileTheCallRuns) {
    bool isOpen = false;
    target.handler = [&](DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) {
        // What a reader finds when the program ends here.
        isOpen = LastRecord().isOpen && LastRecord().method == "Method";
        return S_OK;
    };
    EXPECT_EQ(Call({}, nullptr), S_OK);
    EXPECT_TRUE(isOpen);
    EXPECT_FALSE(LastRecord().isOpen);
}

TEST(Recorder, DoesNotDisturbWhenItsFileCannotBeWritten) {
    Tracer tracer(RecorderSettings{L"C:\\no|such\\folder", 1 << 20});
    Target target;
    target.handler = [](DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) { return S_OK; };
    IDispatch* const wrapper = tracer.WrapperOf(&target, "desktop");
    DISPPARAMS none = {};
    EXPECT_EQ(wrapper->Invoke(1, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr), S_OK);
    wrapper->Release();
    EXPECT_EQ(target.references, 1U);
}

} // namespace
