// The wrapper against a small target in the same process: what passes through, and what is recorded.
#include "tests/trace/Wrapper.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using namespace kinora::trace;

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
    ASSERT_EQ(empty, wrapper);
    wrapper->Release();
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
