// What names objects and what tells that a call has failed: identifiers, results and the exception made of them.

#include "tests/platform/CountedObject.h"

#include <windows.h>

#include <comdef.h>

#include <gtest/gtest.h>

namespace {

constexpr GUID known = {0x0C6D3A4E, 0x18F2, 0x4B7A, {0x9E, 0x01, 0xAB, 0xCD, 0xEF, 0x23, 0x45, 0x67}};

TEST(Identifier, EqualsOneOfTheSameValueOnly) {
    const GUID same = known;
    EXPECT_TRUE(IsEqualGUID(known, same));
    EXPECT_TRUE(known == same);
    GUID other = known;
    other.Data4[7] = 0x68;
    EXPECT_FALSE(IsEqualGUID(known, other));
    EXPECT_TRUE(known != other);
    EXPECT_FALSE(IsEqualIID(IID_IUnknown, IID_IDispatch));
}

TEST(Identifier, OfTheInterfacesIsTheOneThatEverybodyKnows) {
    GUID expected = {0x00000000, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
    EXPECT_TRUE(IID_IUnknown == expected);
    expected.Data1 = 0x00000001;
    EXPECT_TRUE(IID_IClassFactory == expected);
    expected.Data1 = 0x00020400;
    EXPECT_TRUE(IID_IDispatch == expected);
    EXPECT_TRUE(IID_NULL == GUID{});
}

TEST(Interface, IsReachedThroughTheOther) {
    CountedObject object;
    IUnknown* unknown = nullptr;
    IUnknown& base = object;
    EXPECT_EQ(base.QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&unknown)), S_OK);
    EXPECT_EQ(unknown, &base);
    unknown->Release();
    EXPECT_EQ(object.References(), 0);
}

TEST(Result, IsFailureOrSuccessByItsFirstBit) {
    for (const HRESULT success : {S_OK, S_FALSE, static_cast<HRESULT>(0x7FFFFFFF)}) {
        EXPECT_TRUE(SUCCEEDED(success));
        EXPECT_FALSE(FAILED(success));
    }
    for (const HRESULT failure : {E_FAIL, DISP_E_EXCEPTION, static_cast<HRESULT>(-1)}) {
        EXPECT_TRUE(FAILED(failure));
        EXPECT_FALSE(SUCCEEDED(failure));
    }
    EXPECT_EQ(sizeof(HRESULT), 4U);
    EXPECT_EQ(static_cast<unsigned>(DISP_E_BADINDEX), 0x8002000BU);
}

TEST(ComError, KeepsItsResultWhenItIsCopiedAndThrown) {
    const _com_error error(E_OUTOFMEMORY);
    const _com_error copy = error;
    EXPECT_EQ(copy.Error(), E_OUTOFMEMORY);
    _com_error assigned(E_FAIL);
    assigned = error;
    EXPECT_EQ(assigned.Error(), E_OUTOFMEMORY);
    try {
        throw error;
    } catch (const _com_error& caught) {
        EXPECT_EQ(caught.Error(), E_OUTOFMEMORY);
    }
}

} // namespace
