// The letter of what passes through a wrapper: every parameter, every way to call, every form of a result.
#include "tests/trace/Wrapper.h"

#include <gtest/gtest.h>

namespace {

using namespace kinora::trace;

VARIANT Number(LONG number) {
    VARIANT value;
    VariantInit(&value);
    V_VT(&value) = VT_I4;
    V_I4(&value) = number;
    return value;
}

class PassThrough : public Wrapper {
protected:
    /// The wrapper of the child, with one reference.
    IDispatch* ChildWrapper() {
        GiveChild();
        VARIANT object;
        VariantInit(&object);
        EXPECT_EQ(Call({}, &object), S_OK);
        return V_DISPATCH(&object);
    }
};

TEST_F(PassThrough, HandsOnTheClientsOwnBlocks) {
    VARIANT arguments[] = {Number(2), Number(1)};
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS parameters = {arguments, &put, 2, 1};
    VARIANT result;
    VariantInit(&result);
    EXCEPINFO exception = {};
    UINT argumentError = 0;
    target.handler = [&](DISPPARAMS* seen, VARIANT* seenResult, EXCEPINFO* seenException, UINT* seenError) {
        EXPECT_EQ(seen, &parameters);
        EXPECT_EQ(seenResult, &result);
        EXPECT_EQ(seenException, &exception);
        EXPECT_EQ(seenError, &argumentError);
        return S_FALSE;
    };
    EXPECT_EQ(wrapper->Invoke(12, IID_IDispatch, 0x407, DISPATCH_PROPERTYPUT | DISPATCH_METHOD, &parameters, &result,
                              &exception, &argumentError),
              S_FALSE);
    EXPECT_EQ(target.way.id, 12);
    EXPECT_TRUE(IsEqualIID(target.way.iid, IID_IDispatch));
    EXPECT_EQ(target.way.locale, 0x407U);
    EXPECT_EQ(target.way.flags, DISPATCH_PROPERTYPUT | DISPATCH_METHOD);
    const Record record = LastRecord();
    EXPECT_EQ(record.method, "#12");
    EXPECT_EQ(record.code, 1U);
    EXPECT_EQ(record.flags, 5U);
    EXPECT_EQ(record.arguments[0]["v"], 1);
    EXPECT_EQ(record.named, nlohmann::json::parse("[-3]"));
}

TEST_F(PassThrough, HandsOnNothingWhereTheClientPassesNothing) {
    target.handler = [](DISPPARAMS* parameters, VARIANT* result, EXCEPINFO*, UINT*) {
        EXPECT_EQ(parameters, nullptr);
        EXPECT_EQ(result, nullptr);
        return S_OK;
    };
    EXPECT_EQ(wrapper->Invoke(1, IID_NULL, 0, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(LastRecord().arguments.size(), 0U);
}

TEST_F(PassThrough, KeepsNamedArgumentsWithTheirWrappersTakenOff) {
    IDispatch* const object = ChildWrapper();
    VARIANT arguments[] = {ObjectVariant(object), Number(1)};
    DISPID names[] = {101};
    DISPPARAMS parameters = {arguments, names, 2, 1};
    target.handler = [&](DISPPARAMS* seen, VARIANT*, EXCEPINFO*, UINT*) {
        EXPECT_EQ(seen->rgdispidNamedArgs, names);
        EXPECT_EQ(seen->cNamedArgs, 1U);
        EXPECT_EQ(V_DISPATCH(&seen->rgvarg[0]), &child);
        EXPECT_EQ(V_I4(&seen->rgvarg[1]), 1);
        return S_OK;
    };
    EXPECT_EQ(wrapper->Invoke(7, IID_NULL, 0, DISPATCH_PROPERTYPUTREF, &parameters, nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(V_DISPATCH(&arguments[0]), object);
    object->Release();
}

TEST_F(PassThrough, HandsOnEveryFailure) {
    for (const HRESULT code : {DISP_E_MEMBERNOTFOUND, DISP_E_BADPARAMCOUNT, DISP_E_PARAMNOTOPTIONAL, DISP_E_NONAMEDARGS,
                               DISP_E_OVERFLOW, DISP_E_BADVARTYPE, DISP_E_UNKNOWNLCID, RPC_E_CALL_REJECTED, E_FAIL}) {
        target.handler = [code](DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) { return code; };
        EXPECT_EQ(Call({}, nullptr), code);
        EXPECT_EQ(LastRecord().code, static_cast<std::uint32_t>(code));
    }
}

TEST_F(PassThrough, LooksUpSeveralNamesAtOnce) {
    wchar_t method[] = L"Open";
    wchar_t first[] = L"file";
    wchar_t second[] = L"Unknown";
    LPOLESTR names[] = {method, first, second};
    DISPID ids[3] = {};
    EXPECT_EQ(wrapper->GetIDsOfNames(IID_NULL, names, 2, LOCALE_SYSTEM_DEFAULT, ids), S_OK);
    EXPECT_EQ(ids[0], 7);
    EXPECT_EQ(ids[1], 101);
    EXPECT_EQ(LastRecord().method, "Open");
    EXPECT_EQ(wrapper->GetIDsOfNames(IID_NULL, names, 3, LOCALE_SYSTEM_DEFAULT, ids), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(ids[1], 101);
    EXPECT_EQ(ids[2], DISPID_UNKNOWN);
    EXPECT_EQ(LastRecord().code, 0x80020006U);
}

TEST_F(PassThrough, GivesTheObjectsTypeInformation) {
    UINT count = 0;
    ITypeInfo* info = nullptr;
    EXPECT_EQ(wrapper->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(wrapper->GetTypeInfo(3, 0x407, &info), TYPE_E_CANTLOADLIBRARY);
    EXPECT_EQ(wrapper->GetTypeInfo(0, 0x407, &info), DISP_E_BADINDEX);
}

TEST_F(PassThrough, HasNoOtherInterfaces) {
    void* other = &target;
    EXPECT_EQ(wrapper->QueryInterface(IID_IClassFactory, &other), E_NOINTERFACE);
    EXPECT_EQ(other, nullptr);
    EXPECT_EQ(wrapper->QueryInterface(IID_IDispatch, nullptr), E_POINTER);
    ASSERT_EQ(wrapper->QueryInterface(IID_IUnknown, &other), S_OK);
    EXPECT_EQ(other, wrapper);
    wrapper->Release();
}

TEST_F(PassThrough, WrapsAutomationObjectsThatComeAsUnknown) {
    target.handler = [this](DISPPARAMS*, VARIANT* result, EXCEPINFO*, UINT*) {
        child.AddRef();
        V_VT(result) = VT_UNKNOWN;
        V_UNKNOWN(result) = &child;
        return S_OK;
    };
    VARIANT result;
    VariantInit(&result);
    ASSERT_EQ(Call({}, &result), S_OK);
    EXPECT_EQ(V_VT(&result), VT_UNKNOWN);
    EXPECT_EQ(tracer.ObjectBehind(V_UNKNOWN(&result)), &child);
    VariantClear(&result);
}

TEST_F(PassThrough, LeavesNullObjectsAsTheyAre) {
    target.handler = [](DISPPARAMS*, VARIANT* result, EXCEPINFO*, UINT*) {
        *result = ObjectVariant(nullptr);
        return S_OK;
    };
    VARIANT result;
    VariantInit(&result);
    ASSERT_EQ(Call({ObjectVariant(nullptr)}, &result), S_OK);
    EXPECT_EQ(V_VT(&result), VT_DISPATCH);
    EXPECT_EQ(V_DISPATCH(&result), nullptr);
}

TEST_F(PassThrough, WrapsAndUnwrapsInArraysOfArrays) {
    target.handler = [this](DISPPARAMS*, VARIANT* result, EXCEPINFO*, UINT*) {
        VARIANT inner = ArrayOf(&child);
        *result = ArrayOf(nullptr);
        static_cast<VARIANT*>(V_ARRAY(result)->pvData)[0] = inner;
        return S_OK;
    };
    VARIANT nested;
    VariantInit(&nested);
    ASSERT_EQ(Call({}, &nested), S_OK);
    const VARIANT& inner = static_cast<VARIANT*>(V_ARRAY(&nested)->pvData)[0];
    IDispatch* const object = FirstObject(inner);
    EXPECT_EQ(tracer.ObjectBehind(object), &child);
    target.handler = [this](DISPPARAMS* parameters, VARIANT*, EXCEPINFO*, UINT*) {
        EXPECT_EQ(FirstObject(static_cast<VARIANT*>(V_ARRAY(&parameters->rgvarg[0])->pvData)[0]), &child);
        return S_OK;
    };
    EXPECT_EQ(Call({nested}, nullptr), S_OK);
    EXPECT_EQ(FirstObject(inner), object) << "the client's own array is changed";
    VariantClear(&nested);
}

TEST_F(PassThrough, WrapsArraysOfObjects) {
    target.handler = [this](DISPPARAMS*, VARIANT* result, EXCEPINFO*, UINT*) {
        V_VT(result) = VT_ARRAY | VT_DISPATCH;
        V_ARRAY(result) = SafeArrayCreateVector(VT_DISPATCH, 1, 3);
        for (LONG index = 1; index <= 2; ++index) {
            SafeArrayPutElement(V_ARRAY(result), &index, &child);
        }
        return S_OK;
    };
    VARIANT result;
    VariantInit(&result);
    ASSERT_EQ(Call({}, &result), S_OK);
    auto** const objects = static_cast<IDispatch**>(V_ARRAY(&result)->pvData);
    EXPECT_EQ(tracer.ObjectBehind(objects[0]), &child);
    EXPECT_EQ(objects[1], objects[0]);
    EXPECT_EQ(objects[2], nullptr);
    EXPECT_EQ(child.references, 2U);
    EXPECT_EQ(LastRecord().result["lower"], 1);
    VariantClear(&result);
}

TEST_F(PassThrough, LetsTheObjectReplaceAReferredArray) {
    VARIANT mine = ArrayOf(nullptr);
    VARIANT byReference;
    VariantInit(&byReference);
    V_VT(&byReference) = VT_BYREF | VT_ARRAY | VT_VARIANT;
    V_ARRAYREF(&byReference) = &V_ARRAY(&mine);
    target.handler = [&](DISPPARAMS* parameters, VARIANT*, EXCEPINFO*, UINT*) {
        SAFEARRAY** const array = V_ARRAYREF(&parameters->rgvarg[0]);
        SafeArrayDestroy(*array);
        *array = V_ARRAY(&static_cast<const VARIANT&>(ArrayOf(&child)));
        return S_OK;
    };
    EXPECT_EQ(Call({byReference}, nullptr), S_OK);
    EXPECT_EQ(tracer.ObjectBehind(FirstObject(mine)), &child);
    EXPECT_EQ(LastRecord().after[0]["v"]["v"][0]["v"], "desktop.method");
    VariantClear(&mine);
}

TEST_F(PassThrough, ChangesAReferenceThatIsPassedTwiceOnce) {
    VARIANT mine = ObjectVariant(ChildWrapper());
    IDispatch* const before = V_DISPATCH(&mine);
    VARIANT byReference;
    VariantInit(&byReference);
    V_VT(&byReference) = VT_BYREF | VT_VARIANT;
    V_VARIANTREF(&byReference) = &mine;
    target.handler = [&](DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) {
        EXPECT_EQ(V_DISPATCH(&mine), &child);
        return E_FAIL;
    };
    EXPECT_EQ(Call({byReference, byReference}, nullptr), E_FAIL);
    EXPECT_EQ(V_DISPATCH(&mine), before);
    VariantClear(&mine);
}

TEST_F(PassThrough, HoldsTheObjectOnceUntilTheLastRelease) {
    IDispatch* const first = ChildWrapper();
    IDispatch* const again = ChildWrapper();
    EXPECT_EQ(again, first);
    EXPECT_EQ(first->AddRef(), 3U);
    EXPECT_EQ(child.references, 2U);
    EXPECT_EQ(first->Release(), 2U);
    EXPECT_EQ(first->Release(), 1U);
    EXPECT_EQ(child.references, 2U);
    EXPECT_EQ(first->Release(), 0U);
    EXPECT_EQ(child.references, 1U);
    IDispatch* const anew = ChildWrapper();
    EXPECT_EQ(child.references, 2U);
    EXPECT_EQ(anew->Release(), 0U);
}

/// An enumeration of two objects and a number.
class Elements final : public IEnumVARIANT {
public:
    explicit Elements(IDispatch* object) : m_object(object) {}
    std::atomic<ULONG> references{1};

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** result) override {
        const bool isKnown = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IEnumVARIANT);
        *result = isKnown ? this : nullptr;
        references += isKnown ? 1U : 0U;
        return isKnown ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    HRESULT STDMETHODCALLTYPE Next(ULONG count, VARIANT* elements, ULONG* fetched) override {
        ULONG given = 0;
        for (; given < count && m_next < 3; ++given, ++m_next) {
            elements[given] = m_next == 1 ? Number(5) : ObjectVariant(m_object);
            m_object->AddRef();
            if (m_next == 1) {
                m_object->Release();
            }
        }
        if (fetched) {
            *fetched = given;
        }
        return given == count ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
        m_next += count;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Reset() override {
        m_next = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** result) override {
        *result = nullptr;
        return E_NOTIMPL;
    }

private:
    IDispatch* m_object;
    ULONG m_next = 0;
};

TEST_F(PassThrough, WrapsObjectsThatAnEnumerationGives) {
    Elements elements(&child);
    target.handler = [&](DISPPARAMS*, VARIANT* result, EXCEPINFO*, UINT*) {
        elements.AddRef();
        V_VT(result) = VT_UNKNOWN;
        V_UNKNOWN(result) = &elements;
        return S_OK;
    };
    VARIANT result;
    VariantInit(&result);
    DISPPARAMS none = {};
    ASSERT_EQ(wrapper->Invoke(DISPID_NEWENUM, IID_NULL, 0, DISPATCH_PROPERTYGET, &none, &result, nullptr, nullptr),
              S_OK);
    EXPECT_EQ(LastRecord().method, "_NewEnum");
    IEnumVARIANT* enumeration = nullptr;
    ASSERT_EQ(V_UNKNOWN(&result)->QueryInterface(IID_IEnumVARIANT, reinterpret_cast<void**>(&enumeration)), S_OK);
    VARIANT given[5];
    ULONG count = 0;
    EXPECT_EQ(enumeration->Next(1, given, nullptr), S_OK);
    EXPECT_EQ(enumeration->Next(4, given + 1, &count), S_FALSE);
    EXPECT_EQ(count, 2U);
    EXPECT_EQ(tracer.ObjectBehind(V_DISPATCH(&given[0])), &child);
    EXPECT_EQ(V_I4(&given[1]), 5);
    EXPECT_EQ(V_DISPATCH(&given[2]), V_DISPATCH(&given[0]));
    const Record record = LastRecord();
    EXPECT_EQ(record.method, "Next");
    EXPECT_EQ(record.object, "desktop._NewEnum");
    ASSERT_EQ(record.result["v"].size(), 2U);
    EXPECT_EQ(record.result["v"][1]["v"], "desktop._NewEnum[0]") << "an object keeps its first path";
    VariantClear(&given[0]);
    VariantClear(&given[2]);
    EXPECT_EQ(enumeration->Reset(), S_OK);
    EXPECT_EQ(enumeration->Skip(2), S_OK);
    IEnumVARIANT* copy = enumeration;
    EXPECT_EQ(enumeration->Clone(&copy), E_NOTIMPL);
    EXPECT_EQ(copy, nullptr);
    EXPECT_EQ(enumeration->Release(), 1U);
    VariantClear(&result);
    EXPECT_EQ(elements.references, 1U);
}

} // namespace
