// Arrays: bounds, the order of elements, what they own, and locks.

#include "tests/platform/CountedObject.h"
#include "tests/platform/Variants.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

/// An array of numbers whose dimensions have these bounds, the leftmost first; each element is its place in memory.
SAFEARRAY* NumberedArray(std::vector<SAFEARRAYBOUND> bounds) {
    SAFEARRAY* const array = SafeArrayCreate(VT_I4, static_cast<UINT>(bounds.size()), bounds.data());
    LONG count = 1;
    for (const SAFEARRAYBOUND& bound : bounds) {
        count *= static_cast<LONG>(bound.cElements);
    }
    for (LONG place = 0; place < count; ++place) {
        static_cast<LONG*>(array->pvData)[place] = place;
    }
    return array;
}

LONG ElementAt(SAFEARRAY* array, std::vector<LONG> indices) {
    LONG element = -1;
    EXPECT_EQ(SafeArrayGetElement(array, indices.data(), &element), S_OK);
    return element;
}

HRESULT AccessAt(SAFEARRAY* array, std::vector<LONG> indices) {
    LONG element = 0;
    const HRESULT got = SafeArrayGetElement(array, indices.data(), &element);
    EXPECT_EQ(SafeArrayPutElement(array, indices.data(), &element), got);
    return got;
}

LONG LowerBound(SAFEARRAY* array, UINT dimension) {
    LONG bound = -99;
    EXPECT_EQ(SafeArrayGetLBound(array, dimension, &bound), S_OK);
    return bound;
}

LONG UpperBound(SAFEARRAY* array, UINT dimension) {
    LONG bound = -99;
    EXPECT_EQ(SafeArrayGetUBound(array, dimension, &bound), S_OK);
    return bound;
}

TEST(SafeArray, BoundsAreThoseThatItWasMadeWith) {
    SAFEARRAY* const array = NumberedArray({{2, -3}, {3, 5}, {4, 1000000}});
    EXPECT_EQ(SafeArrayGetDim(array), 3U);
    EXPECT_EQ(LowerBound(array, 1), -3);
    EXPECT_EQ(UpperBound(array, 1), -2);
    EXPECT_EQ(LowerBound(array, 2), 5);
    EXPECT_EQ(UpperBound(array, 2), 7);
    EXPECT_EQ(LowerBound(array, 3), 1000000);
    EXPECT_EQ(UpperBound(array, 3), 1000003);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, StoresItsBoundsInReverse) {
    SAFEARRAY* const array = NumberedArray({{2, -3}, {3, 5}});
    EXPECT_EQ(array->rgsabound[0].cElements, 3U);
    EXPECT_EQ(array->rgsabound[0].lLbound, 5);
    EXPECT_EQ(array->rgsabound[1].cElements, 2U);
    EXPECT_EQ(array->rgsabound[1].lLbound, -3);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, DimensionThatItDoesNotHaveIsABadIndex) {
    SAFEARRAY* const array = NumberedArray({{2, 0}});
    LONG bound = 0;
    for (const UINT dimension : {0U, 2U}) {
        EXPECT_EQ(SafeArrayGetLBound(array, dimension, &bound), DISP_E_BADINDEX);
        EXPECT_EQ(SafeArrayGetUBound(array, dimension, &bound), DISP_E_BADINDEX);
    }
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, FirstIndexIsTheFastestInMemory) {
    SAFEARRAY* const list = NumberedArray({{3, -1}});
    EXPECT_EQ(ElementAt(list, {-1}), 0);
    EXPECT_EQ(ElementAt(list, {1}), 2);
    SafeArrayDestroy(list);
    SAFEARRAY* const table = NumberedArray({{2, 1}, {3, -1}});
    EXPECT_EQ(ElementAt(table, {1, -1}), 0);
    EXPECT_EQ(ElementAt(table, {2, -1}), 1);
    EXPECT_EQ(ElementAt(table, {1, 0}), 2);
    EXPECT_EQ(ElementAt(table, {2, 1}), 5);
    SafeArrayDestroy(table);
    SAFEARRAY* const cube = NumberedArray({{2, 0}, {3, 0}, {4, 10}});
    EXPECT_EQ(ElementAt(cube, {1, 0, 10}), 1);
    EXPECT_EQ(ElementAt(cube, {0, 1, 10}), 2);
    EXPECT_EQ(ElementAt(cube, {0, 0, 11}), 6);
    EXPECT_EQ(ElementAt(cube, {1, 2, 13}), 23);
    SafeArrayDestroy(cube);
}

TEST(SafeArray, IndexOutOfItsBoundsIsABadIndex) {
    SAFEARRAY* const list = NumberedArray({{3, -1}});
    EXPECT_EQ(AccessAt(list, {-2}), DISP_E_BADINDEX);
    EXPECT_EQ(AccessAt(list, {2}), DISP_E_BADINDEX);
    EXPECT_EQ(AccessAt(list, {1}), S_OK);
    SafeArrayDestroy(list);
    SAFEARRAY* const table = NumberedArray({{2, 1}, {3, 5}});
    EXPECT_EQ(AccessAt(table, {0, 5}), DISP_E_BADINDEX);
    EXPECT_EQ(AccessAt(table, {3, 5}), DISP_E_BADINDEX);
    EXPECT_EQ(AccessAt(table, {1, 4}), DISP_E_BADINDEX);
    EXPECT_EQ(AccessAt(table, {1, 8}), DISP_E_BADINDEX);
    EXPECT_EQ(AccessAt(table, {2, 7}), S_OK);
    SafeArrayDestroy(table);
}

TEST(SafeArray, VectorHasOneDimension) {
    SAFEARRAY* const array = SafeArrayCreateVector(VT_R8, 1, 4);
    EXPECT_EQ(SafeArrayGetDim(array), 1U);
    EXPECT_EQ(LowerBound(array, 1), 1);
    EXPECT_EQ(UpperBound(array, 1), 4);
    EXPECT_EQ(array->rgsabound[0].cElements, 4U);
    SafeArrayDestroy(array);
}

TEST(SafeArray, BeginsWithZeros) {
    SAFEARRAY* const array = SafeArrayCreateVector(VT_VARIANT, 0, 3);
    for (int index = 0; index < 3; ++index) {
        EXPECT_EQ(static_cast<const VARIANT*>(array->pvData)[index].vt, VT_EMPTY);
    }
    SafeArrayDestroy(array);
    SAFEARRAY* const numbers = SafeArrayCreateVector(VT_R8, 0, 2);
    EXPECT_EQ(static_cast<const double*>(numbers->pvData)[1], 0.0);
    SafeArrayDestroy(numbers);
}

TEST(SafeArray, VectorWithoutElementsIsAnArray) {
    SAFEARRAY* const array = SafeArrayCreateVector(VT_VARIANT, 0, 0);
    ASSERT_NE(array, nullptr);
    EXPECT_EQ(SafeArrayGetDim(array), 1U);
    EXPECT_EQ(LowerBound(array, 1), 0);
    EXPECT_EQ(UpperBound(array, 1), -1);
    EXPECT_EQ(array->rgsabound[0].cElements, 0U);
    void* data = nullptr;
    EXPECT_EQ(SafeArrayAccessData(array, &data), S_OK);
    EXPECT_EQ(SafeArrayUnaccessData(array), S_OK);
    LONG index = 0;
    VARIANT element{};
    EXPECT_EQ(SafeArrayGetElement(array, &index, &element), DISP_E_BADINDEX);
    SAFEARRAY* copy = nullptr;
    EXPECT_EQ(SafeArrayCopy(array, &copy), S_OK);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(UpperBound(copy, 1), -1);
    EXPECT_EQ(SafeArrayDestroy(copy), S_OK);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, WithoutElementsInOneOfItsDimensionsIsAnArray) {
    SAFEARRAYBOUND bounds[] = {{2, 0}, {0, 7}};
    SAFEARRAY* const array = SafeArrayCreate(VT_BSTR, 2, bounds);
    ASSERT_NE(array, nullptr);
    EXPECT_EQ(UpperBound(array, 1), 1);
    EXPECT_EQ(UpperBound(array, 2), 6);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, ThatCannotBeIsNull) {
    SAFEARRAYBOUND bound = {1, 0};
    EXPECT_EQ(SafeArrayCreate(VT_I4, 0, &bound), nullptr);
    EXPECT_EQ(SafeArrayCreate(VT_I4, 1, nullptr), nullptr);
    EXPECT_EQ(SafeArrayCreate(VT_EMPTY, 1, &bound), nullptr);
    EXPECT_EQ(SafeArrayCreateVector(VT_NULL, 0, 1), nullptr);
}

TEST(SafeArray, ElementsHaveTheSizeOfTheirType) {
    const struct {
        VARTYPE type;
        std::size_t size;
    } table[] = {{VT_UI1, 1},
                 {VT_I2, 2},
                 {VT_BOOL, 2},
                 {VT_I4, 4},
                 {VT_INT, 4},
                 {VT_R4, 4},
                 {VT_R8, 8},
                 {VT_I8, 8},
                 {VT_BSTR, sizeof(BSTR)},
                 {VT_DISPATCH, sizeof(IDispatch*)},
                 {VT_UNKNOWN, sizeof(IUnknown*)},
                 {VT_VARIANT, sizeof(VARIANT)}};
    for (const auto& row : table) {
        SAFEARRAY* const array = SafeArrayCreateVector(row.type, 0, 1);
        ASSERT_NE(array, nullptr) << row.type;
        EXPECT_EQ(SafeArrayGetElemsize(array), row.size) << row.type;
        VARTYPE type = VT_EMPTY;
        EXPECT_EQ(SafeArrayGetVartype(array, &type), S_OK);
        EXPECT_EQ(type, row.type);
        EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    }
}

TEST(SafeArray, NullIsAnsweredPlainly) {
    LONG number = 0;
    void* data = nullptr;
    VARTYPE type = VT_EMPTY;
    EXPECT_EQ(SafeArrayGetDim(nullptr), 0U);
    EXPECT_EQ(SafeArrayGetElemsize(nullptr), 0U);
    EXPECT_EQ(SafeArrayDestroy(nullptr), S_OK);
    EXPECT_EQ(SafeArrayGetLBound(nullptr, 1, &number), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetUBound(nullptr, 1, &number), E_INVALIDARG);
    EXPECT_EQ(SafeArrayAccessData(nullptr, &data), E_INVALIDARG);
    EXPECT_EQ(SafeArrayUnaccessData(nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayLock(nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayUnlock(nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetElement(nullptr, &number, &number), E_INVALIDARG);
    EXPECT_EQ(SafeArrayPutElement(nullptr, &number, &number), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetVartype(nullptr, &type), E_INVALIDARG);
}

TEST(SafeArray, NullResultsAndIndicesAreRefused) {
    SAFEARRAY* const array = NumberedArray({{2, 0}});
    LONG number = 0;
    EXPECT_EQ(SafeArrayCopy(array, nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetLBound(array, 1, nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetUBound(array, 1, nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayAccessData(array, nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetElement(array, nullptr, &number), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetElement(array, &number, nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayPutElement(array, nullptr, &number), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetVartype(array, nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK) << "and it is not locked";
}

TEST(SafeArray, DestroyedReleasesObjectsAndNestedArrays) {
    CountedObject object;
    SAFEARRAY* const inner = SafeArrayCreateVector(VT_VARIANT, 0, 2);
    static_cast<VARIANT*>(inner->pvData)[1] = ObjectVariant(object);
    SAFEARRAY* const outer = SafeArrayCreateVector(VT_VARIANT, -1, 3);
    static_cast<VARIANT*>(outer->pvData)[0] = ObjectVariant(object);
    static_cast<VARIANT*>(outer->pvData)[2] = ArrayVariant(inner, VT_VARIANT);
    EXPECT_EQ(SafeArrayDestroy(outer), S_OK);
    EXPECT_EQ(object.References(), 0);
}

TEST(SafeArray, OfObjectsOwnsThem) {
    CountedObject object;
    for (const VARTYPE type : {VT_DISPATCH, VT_UNKNOWN}) {
        SAFEARRAY* const array = SafeArrayCreateVector(type, 0, 2);
        LONG index = 1;
        EXPECT_EQ(SafeArrayPutElement(array, &index, static_cast<IDispatch*>(&object)), S_OK);
        EXPECT_EQ(object.References(), 1);
        SAFEARRAY* copy = nullptr;
        EXPECT_EQ(SafeArrayCopy(array, &copy), S_OK);
        EXPECT_EQ(object.References(), 2);
        IDispatch* element = nullptr;
        EXPECT_EQ(SafeArrayGetElement(copy, &index, &element), S_OK);
        EXPECT_EQ(element, &object);
        EXPECT_EQ(object.References(), 3);
        element->Release();
        EXPECT_EQ(SafeArrayDestroy(array), S_OK);
        EXPECT_EQ(SafeArrayDestroy(copy), S_OK);
        EXPECT_EQ(object.References(), 0);
    }
}

TEST(SafeArray, PutReplacesAnObjectAndTakesNullToo) {
    CountedObject first;
    CountedObject second;
    SAFEARRAY* const array = SafeArrayCreateVector(VT_DISPATCH, 0, 1);
    LONG index = 0;
    EXPECT_EQ(SafeArrayPutElement(array, &index, static_cast<IDispatch*>(&first)), S_OK);
    EXPECT_EQ(SafeArrayPutElement(array, &index, static_cast<IDispatch*>(&second)), S_OK);
    EXPECT_EQ(first.References(), 0);
    EXPECT_EQ(second.References(), 1);
    EXPECT_EQ(SafeArrayPutElement(array, &index, nullptr), S_OK);
    EXPECT_EQ(second.References(), 0);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, PutCopiesAVariantAndClearsTheOldOne) {
    CountedObject object;
    SAFEARRAY* const array = SafeArrayCreateVector(VT_VARIANT, 0, 1);
    LONG index = 0;
    VARIANT value = ObjectVariant(object);
    EXPECT_EQ(SafeArrayPutElement(array, &index, &value), S_OK);
    EXPECT_EQ(object.References(), 2);
    VariantClear(&value);
    VARIANT text = TextVariant(L"Rotor");
    EXPECT_EQ(SafeArrayPutElement(array, &index, &text), S_OK);
    EXPECT_EQ(object.References(), 0);
    VariantClear(&text);
    VARIANT element{};
    EXPECT_EQ(SafeArrayGetElement(array, &index, &element), S_OK);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    ASSERT_EQ(element.vt, VT_BSTR) << "it is the caller's";
    EXPECT_EQ(TextOf(element.bstrVal), L"Rotor");
    VariantClear(&element);
}

TEST(SafeArray, OfTextsOwnsCopies) {
    SAFEARRAY* const array = SafeArrayCreateVector(VT_BSTR, 1, 2);
    LONG index = 2;
    const BSTR text = SysAllocStringLen(L"a\0b", 3);
    EXPECT_EQ(SafeArrayPutElement(array, &index, text), S_OK);
    EXPECT_EQ(SafeArrayPutElement(array, &index, text), S_OK) << "and the first one is freed";
    SysFreeString(text);
    SAFEARRAY* copy = nullptr;
    EXPECT_EQ(SafeArrayCopy(array, &copy), S_OK);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    BSTR element = nullptr;
    EXPECT_EQ(SafeArrayGetElement(copy, &index, &element), S_OK);
    EXPECT_EQ(TextOf(element), std::wstring(L"a\0b", 3));
    SysFreeString(element);
    index = 1;
    EXPECT_EQ(SafeArrayGetElement(copy, &index, &element), S_OK);
    EXPECT_EQ(SysStringLen(element), 0U) << "nothing was put there";
    SysFreeString(element);
    EXPECT_EQ(SafeArrayDestroy(copy), S_OK);
}

TEST(SafeArray, OfNumbersHoldsThem) {
    SAFEARRAY* const array = SafeArrayCreateVector(VT_R8, 0, 2);
    LONG index = 1;
    double number = -2.5;
    EXPECT_EQ(SafeArrayPutElement(array, &index, &number), S_OK);
    number = 0.0;
    EXPECT_EQ(SafeArrayGetElement(array, &index, &number), S_OK);
    EXPECT_EQ(number, -2.5);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, CopyKeepsRankBoundsAndTypeAndIsApart) {
    SAFEARRAY* const array = NumberedArray({{2, -3}, {3, 5}});
    SAFEARRAY* copy = nullptr;
    EXPECT_EQ(SafeArrayCopy(array, &copy), S_OK);
    static_cast<LONG*>(array->pvData)[0] = 77;
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    EXPECT_EQ(SafeArrayGetDim(copy), 2U);
    EXPECT_EQ(LowerBound(copy, 1), -3);
    EXPECT_EQ(UpperBound(copy, 2), 7);
    EXPECT_EQ(ElementAt(copy, {-3, 5}), 0);
    EXPECT_EQ(ElementAt(copy, {-2, 7}), 5);
    VARTYPE type = VT_EMPTY;
    EXPECT_EQ(SafeArrayGetVartype(copy, &type), S_OK);
    EXPECT_EQ(type, VT_I4);
    EXPECT_EQ(SafeArrayDestroy(copy), S_OK);
}

TEST(SafeArray, LockedIsNotDestroyed) {
    CountedObject object;
    SAFEARRAY* const array = SafeArrayCreateVector(VT_VARIANT, 0, 1);
    static_cast<VARIANT*>(array->pvData)[0] = ObjectVariant(object);
    EXPECT_EQ(SafeArrayLock(array), S_OK);
    EXPECT_EQ(SafeArrayLock(array), S_OK);
    EXPECT_EQ(SafeArrayDestroy(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayUnlock(array), S_OK);
    EXPECT_EQ(SafeArrayDestroy(array), DISP_E_ARRAYISLOCKED) << "locked twice";
    EXPECT_EQ(object.References(), 1);
    EXPECT_EQ(SafeArrayUnlock(array), S_OK);
    EXPECT_EQ(SafeArrayUnlock(array), E_UNEXPECTED);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    EXPECT_EQ(object.References(), 0);
}

TEST(SafeArray, AccessGivesTheElementsAndLocks) {
    SAFEARRAY* const array = NumberedArray({{3, 1}});
    void* data = nullptr;
    EXPECT_EQ(SafeArrayAccessData(array, &data), S_OK);
    EXPECT_EQ(data, array->pvData);
    EXPECT_EQ(static_cast<const LONG*>(data)[2], 2);
    EXPECT_EQ(SafeArrayDestroy(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(ElementAt(array, {3}), 2) << "elements are reached all the same";
    EXPECT_EQ(SafeArrayUnaccessData(array), S_OK);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, CopyOfALockedArrayIsNotLocked) {
    SAFEARRAY* const array = NumberedArray({{3, 1}});
    EXPECT_EQ(SafeArrayLock(array), S_OK);
    SAFEARRAY* copy = nullptr;
    EXPECT_EQ(SafeArrayCopy(array, &copy), S_OK);
    EXPECT_EQ(SafeArrayDestroy(copy), S_OK);
    EXPECT_EQ(SafeArrayUnlock(array), S_OK);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

} // namespace
