// VARIANTs: what clearing and copying them releases, copies and refuses.

#include "tests/platform/CountedObject.h"
#include "tests/platform/Variants.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

/// 15 stands between two types and is none, 24 (VT_VOID) is one of type descriptions only.
constexpr VARTYPE invalidTypes[] = {15, 24, 77, VT_ARRAY | VT_EMPTY, VT_BYREF | VT_NULL};

TEST(Variant, BeginsEmpty) {
    VARIANT value;
    VariantInit(&value);
    EXPECT_EQ(value.vt, VT_EMPTY);
}

TEST(Variant, ClearedIsEmptyWhateverItWas) {
    for (const VARTYPE type : {VT_EMPTY, VT_NULL, VT_I2, VT_I4, VT_R4, VT_R8, VT_DATE, VT_ERROR, VT_BOOL, VT_I1, VT_UI1,
                               VT_UI2, VT_UI4, VT_I8, VT_UI8, VT_INT, VT_UINT}) {
        VARIANT value{};
        value.vt = type;
        EXPECT_EQ(VariantClear(&value), S_OK) << type;
        EXPECT_EQ(value.vt, VT_EMPTY) << type;
    }
}

TEST(Variant, ClearedWithNullContentsIsEmpty) {
    for (const int type : {int{VT_BSTR}, int{VT_DISPATCH}, int{VT_UNKNOWN}, VT_ARRAY | VT_VARIANT, VT_ARRAY | VT_R8}) {
        VARIANT value{};
        value.vt = static_cast<VARTYPE>(type);
        EXPECT_EQ(VariantClear(&value), S_OK) << type;
        EXPECT_EQ(value.vt, VT_EMPTY) << type;
    }
}

TEST(Variant, ClearReleasesAnObjectOnce) {
    CountedObject object;
    VARIANT value = ObjectVariant(object);
    EXPECT_EQ(VariantClear(&value), S_OK);
    EXPECT_EQ(object.References(), 0);
    EXPECT_EQ(VariantClear(&value), S_OK) << "and nothing the second time";
    EXPECT_EQ(object.References(), 0);
}

TEST(Variant, ClearReleasesAnObjectOfTheOtherTypeToo) {
    CountedObject object;
    VARIANT value = ObjectVariant(object);
    value.vt = VT_UNKNOWN;
    EXPECT_EQ(VariantClear(&value), S_OK);
    EXPECT_EQ(object.References(), 0);
}

TEST(Variant, ClearLeavesWhatAReferenceLeadsTo) {
    CountedObject object;
    object.AddRef();
    IDispatch* pointer = &object;
    VARIANT text = TextVariant(L"Rotor");
    SAFEARRAY* elements = SafeArrayCreateVector(VT_VARIANT, 0, 2);

    VARIANT reference{};
    reference.vt = VT_BYREF | VT_DISPATCH;
    reference.ppdispVal = &pointer;
    EXPECT_EQ(VariantClear(&reference), S_OK);
    EXPECT_EQ(reference.vt, VT_EMPTY);
    reference.vt = VT_BYREF | VT_BSTR;
    reference.pbstrVal = &text.bstrVal;
    EXPECT_EQ(VariantClear(&reference), S_OK);
    reference.vt = VT_BYREF | VT_VARIANT;
    reference.pvarVal = &text;
    EXPECT_EQ(VariantClear(&reference), S_OK);
    reference.vt = VT_BYREF | VT_ARRAY | VT_VARIANT;
    reference.pparray = &elements;
    EXPECT_EQ(VariantClear(&reference), S_OK);

    EXPECT_EQ(object.References(), 1);
    EXPECT_EQ(TextOf(text.bstrVal), L"Rotor");
    EXPECT_EQ(VariantClear(&text), S_OK);
    EXPECT_EQ(SafeArrayDestroy(elements), S_OK);
}

TEST(Variant, ClearRefusesWhatIsNoTypeAndLeavesItAsItIs) {
    for (const VARTYPE type : invalidTypes) {
        VARIANT value{};
        value.vt = type;
        EXPECT_EQ(VariantClear(&value), DISP_E_BADVARTYPE) << type;
        EXPECT_EQ(value.vt, type);
    }
}

TEST(Variant, ClearRefusesALockedArray) {
    SAFEARRAY* const elements = SafeArrayCreateVector(VT_VARIANT, 0, 1);
    VARIANT value = ArrayVariant(elements, VT_VARIANT);
    ASSERT_EQ(SafeArrayLock(elements), S_OK);
    EXPECT_EQ(VariantClear(&value), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayUnlock(elements), S_OK);
    EXPECT_EQ(SafeArrayDestroy(elements), S_OK) << "it is still there";
}

TEST(Variant, CopyOfANumberIsThatNumber) {
    VARIANT source{};
    source.vt = VT_R8;
    source.dblVal = -2.5;
    VARIANT copy{};
    EXPECT_EQ(VariantCopy(&copy, &source), S_OK);
    EXPECT_EQ(copy.vt, VT_R8);
    EXPECT_EQ(copy.dblVal, -2.5);
    source.vt = VT_INT;
    source.intVal = -7;
    EXPECT_EQ(VariantCopy(&copy, &source), S_OK);
    EXPECT_EQ(copy.vt, VT_INT);
    EXPECT_EQ(copy.intVal, -7);
    source.vt = VT_BOOL;
    source.boolVal = VARIANT_TRUE;
    EXPECT_EQ(VariantCopy(&copy, &source), S_OK);
    EXPECT_EQ(copy.vt, VT_BOOL);
    EXPECT_EQ(copy.boolVal, -1);
}

TEST(Variant, CopyOfATextIsATextOfItsOwn) {
    VARIANT source = TextVariant(std::wstring(L"a\0b", 3));
    VARIANT copy{};
    EXPECT_EQ(VariantCopy(&copy, &source), S_OK);
    EXPECT_NE(copy.bstrVal, source.bstrVal);
    copy.bstrVal[0] = L'c';
    EXPECT_EQ(TextOf(source.bstrVal), std::wstring(L"a\0b", 3));
    VariantClear(&source);
    EXPECT_EQ(TextOf(copy.bstrVal), std::wstring(L"c\0b", 3));
    VariantClear(&copy);
}

TEST(Variant, CopyOfANullTextIsAnEmptyText) {
    VARIANT source{};
    source.vt = VT_BSTR;
    VARIANT copy{};
    EXPECT_EQ(VariantCopy(&copy, &source), S_OK);
    EXPECT_EQ(copy.vt, VT_BSTR);
    EXPECT_EQ(SysStringLen(copy.bstrVal), 0U);
    EXPECT_EQ(VariantClear(&copy), S_OK);
}

TEST(Variant, CopyOfAnObjectTakesOneReference) {
    CountedObject object;
    VARIANT source = ObjectVariant(object);
    VARIANT copy{};
    EXPECT_EQ(VariantCopy(&copy, &source), S_OK);
    EXPECT_EQ(copy.pdispVal, &object);
    EXPECT_EQ(object.References(), 2);
    EXPECT_EQ(VariantClear(&source), S_OK);
    EXPECT_EQ(VariantClear(&copy), S_OK);
    EXPECT_EQ(object.References(), 0);
}

TEST(Variant, CopyOfANullObjectIsANullObject) {
    VARIANT source{};
    source.vt = VT_DISPATCH;
    VARIANT copy = TextVariant(L"before");
    EXPECT_EQ(VariantCopy(&copy, &source), S_OK);
    EXPECT_EQ(copy.vt, VT_DISPATCH);
    EXPECT_EQ(copy.pdispVal, nullptr);
}

TEST(Variant, CopyReleasesWhatWasThere) {
    CountedObject object;
    VARIANT copy = ObjectVariant(object);
    VARIANT source = TextVariant(L"Rotor");
    EXPECT_EQ(VariantCopy(&copy, &source), S_OK);
    EXPECT_EQ(object.References(), 0);
    EXPECT_EQ(TextOf(copy.bstrVal), L"Rotor");
    VariantClear(&source);
    VariantClear(&copy);
}

TEST(Variant, CopyOntoItselfChangesNothing) {
    CountedObject object;
    VARIANT value = ObjectVariant(object);
    EXPECT_EQ(VariantCopy(&value, &value), S_OK);
    EXPECT_EQ(value.pdispVal, &object);
    EXPECT_EQ(object.References(), 1);
    VariantClear(&value);
}

TEST(Variant, CopyOfAReferenceLeadsToTheSame) {
    CountedObject object;
    IDispatch* pointer = &object;
    VARIANT source{};
    source.vt = VT_BYREF | VT_DISPATCH;
    source.ppdispVal = &pointer;
    VARIANT copy = TextVariant(L"before");
    EXPECT_EQ(VariantCopy(&copy, &source), S_OK);
    EXPECT_EQ(copy.vt, VT_BYREF | VT_DISPATCH);
    EXPECT_EQ(copy.ppdispVal, &pointer);
    EXPECT_EQ(object.References(), 0);
    EXPECT_EQ(VariantClear(&copy), S_OK);
    EXPECT_EQ(object.References(), 0);
}

TEST(Variant, CopyRefusesWhatIsNoTypeAndLeavesTheTargetAsItIs) {
    for (const VARTYPE type : invalidTypes) {
        VARIANT source{};
        source.vt = type;
        VARIANT copy = TextVariant(L"kept");
        EXPECT_EQ(VariantCopy(&copy, &source), DISP_E_BADVARTYPE) << type;
        ASSERT_EQ(copy.vt, VT_BSTR);
        EXPECT_EQ(TextOf(copy.bstrVal), L"kept");
        VariantClear(&copy);
    }
}

TEST(Variant, CopyOntoALockedArrayIsRefused) {
    SAFEARRAY* const elements = SafeArrayCreateVector(VT_VARIANT, 0, 1);
    VARIANT copy = ArrayVariant(elements, VT_VARIANT);
    VARIANT source{};
    source.vt = VT_I4;
    ASSERT_EQ(SafeArrayLock(elements), S_OK);
    EXPECT_EQ(VariantCopy(&copy, &source), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayUnlock(elements), S_OK);
    EXPECT_EQ(SafeArrayDestroy(elements), S_OK);
}

TEST(Variant, CopyOfAnArrayIsDeepAndTakesReferences) {
    CountedObject object;
    SAFEARRAY* const inner = SafeArrayCreateVector(VT_VARIANT, 0, 1);
    static_cast<VARIANT*>(inner->pvData)[0] = ObjectVariant(object);
    SAFEARRAY* const outer = SafeArrayCreateVector(VT_VARIANT, 0, 3);
    auto* const elements = static_cast<VARIANT*>(outer->pvData);
    elements[0] = ArrayVariant(inner, VT_VARIANT);
    elements[1] = ObjectVariant(object);
    elements[2] = TextVariant(L"Rotor");
    VARIANT source = ArrayVariant(outer, VT_VARIANT);

    VARIANT copy{};
    EXPECT_EQ(VariantCopy(&copy, &source), S_OK);
    EXPECT_EQ(object.References(), 4);
    EXPECT_NE(copy.parray, outer);
    elements[2].bstrVal[0] = L'M';
    EXPECT_EQ(VariantClear(&source), S_OK);
    EXPECT_EQ(object.References(), 2);

    const auto* const copied = static_cast<const VARIANT*>(copy.parray->pvData);
    EXPECT_EQ(copied[0].vt, VT_ARRAY | VT_VARIANT);
    EXPECT_EQ(static_cast<const VARIANT*>(copied[0].parray->pvData)[0].pdispVal, &object);
    EXPECT_EQ(TextOf(copied[2].bstrVal), L"Rotor");
    EXPECT_EQ(VariantClear(&copy), S_OK);
    EXPECT_EQ(object.References(), 0);
}

TEST(Variant, ClearReleasesTenArraysInsideOfOneAnother) {
    CountedObject object;
    VARIANT value = ObjectVariant(object);
    for (int depth = 0; depth < 10; ++depth) {
        SAFEARRAY* const elements = SafeArrayCreateVector(VT_VARIANT, 0, 1);
        static_cast<VARIANT*>(elements->pvData)[0] = value;
        value = ArrayVariant(elements, VT_VARIANT);
    }
    EXPECT_EQ(object.References(), 1);
    EXPECT_EQ(VariantClear(&value), S_OK);
    EXPECT_EQ(object.References(), 0);
}

} // namespace
