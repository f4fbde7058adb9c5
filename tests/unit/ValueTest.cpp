#include "comutils/Value.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

const VARIANT& At(const VARIANT& list, LONG index) {
    return static_cast<VARIANT*>(list.parray->pvData)[index];
}

ULONG Count(const VARIANT& list) {
    return list.parray->rgsabound[0].cElements;
}

std::wstring TextAt(const VARIANT& list, LONG index) {
    const VARIANT& element = At(list, index);
    return element.vt == VT_BSTR ? std::wstring(element.bstrVal, SysStringLen(element.bstrVal)) : L"(no text)";
}

constexpr VARTYPE listType = VT_ARRAY | VT_VARIANT;

} // namespace

TEST(Value, HoldsEachKind) {
    EXPECT_EQ(CValue().Get().vt, VT_EMPTY);
    EXPECT_EQ(CValue("a").Get().vt, VT_BSTR);
    EXPECT_EQ(CValue(std::string("a")).Get().vt, VT_BSTR);
    EXPECT_EQ(CValue(15.0).Get().vt, VT_R8);
    EXPECT_EQ(CValue(15.0).Get().dblVal, 15.0);
    EXPECT_EQ(CValue::Int(-3).Get().vt, VT_INT);
    EXPECT_EQ(CValue::Int(-3).Get().intVal, -3);
}

TEST(Value, FlagsAreMinusOneAndZero) {
    EXPECT_EQ(CValue(true).Get().vt, VT_BOOL);
    EXPECT_EQ(CValue(true).Get().boolVal, -1);
    EXPECT_EQ(CValue(false).Get().boolVal, 0);
}

TEST(Value, BracesMakeAList) {
    const CValue list = {"NAME:Shape", "Closed:=", true, {"NAME:Origin", "1mm"}, CValue(), 2.0};
    ASSERT_EQ(list.Get().vt, listType);
    ASSERT_EQ(SafeArrayGetDim(list.Get().parray), 1u);
    EXPECT_EQ(list.Get().parray->rgsabound[0].lLbound, 0);
    ASSERT_EQ(Count(list.Get()), 6u);
    EXPECT_EQ(TextAt(list.Get(), 0), L"NAME:Shape");
    EXPECT_EQ(TextAt(list.Get(), 1), L"Closed:=");
    EXPECT_EQ(At(list.Get(), 2).boolVal, -1);
    ASSERT_EQ(At(list.Get(), 3).vt, listType);
    EXPECT_EQ(TextAt(At(list.Get(), 3), 1), L"1mm");
    EXPECT_EQ(At(list.Get(), 4).vt, VT_EMPTY);
    EXPECT_EQ(At(list.Get(), 5).dblVal, 2.0);
}

TEST(Value, OneElementInBracesIsAListOfOne) {
    const CValue list = {"NAME:Goals"};
    ASSERT_EQ(list.Get().vt, listType);
    EXPECT_EQ(Count(list.Get()), 1u);
}

TEST(Value, EmptyListIsAnArray) {
    const CValue list = CValue::EmptyList();
    ASSERT_EQ(list.Get().vt, listType);
    EXPECT_EQ(Count(list.Get()), 0u);
}

TEST(Value, ListElementsAgreeWithThePlatformsReading) {
    const CValue list = CListBuilder::OfTexts(std::vector<std::string>{"a", "", "c"});
    for (LONG index = 0; index < 3; ++index) {
        VARIANT element;
        VariantInit(&element);
        ASSERT_EQ(SafeArrayGetElement(list.Get().parray, &index, &element), S_OK);
        EXPECT_EQ(std::wstring(element.bstrVal, SysStringLen(element.bstrVal)), TextAt(list.Get(), index));
        VariantClear(&element);
    }
}

TEST(Value, MovesLeaveNothingBehind) {
    CValue from = "text";
    const CValue to = std::move(from);
    EXPECT_EQ(from.Get().vt, VT_EMPTY); // NOLINT: that is the claim
    EXPECT_EQ(to.ToText(), "text");
}

TEST(Value, CopiesAreSeparate) {
    const CValue original = {"a", {"b"}};
    CValue copy = CValue::Copy(original.Get());
    EXPECT_NE(copy.Get().parray, original.Get().parray);
    EXPECT_EQ(TextAt(At(copy.Get(), 1), 0), L"b");
}

TEST(Value, AssignmentToItselfKeepsTheValue) {
    CValue value = "text";
    CValue& same = value;
    value = std::move(same);
    EXPECT_EQ(value.ToText(), "text");
}

TEST(Value, ReceiveGivesAZeroedAddress) {
    CValue value = "text";
    const VARIANT* address = value.Receive();
    const VARIANT zero = {};
    EXPECT_EQ(memcmp(address, &zero, sizeof zero), 0);
}

TEST(Value, OnlyTextsHaveText) {
    EXPECT_EQ(CValue(1.0).ToText(), "");
    EXPECT_FALSE(CValue(1.0).IsText());
}

TEST(Value, OnlyTheTextsOfAListAreRead) {
    const CValue list = {"a", 1.0, "", {"inner"}, CValue(), "c"};
    EXPECT_EQ(list.ToTexts(), (std::vector<std::string>{"a", "", "c"}));
    EXPECT_TRUE(CValue("a").ToTexts().empty());
    EXPECT_TRUE(CValue().ToTexts().empty());
    EXPECT_TRUE(CValue::EmptyList().ToTexts().empty());
}

TEST(Value, ListWithACountAndNoElementsHasNoTexts) {
    SAFEARRAY hollow = {};
    hollow.cDims = 1;
    hollow.cbElements = sizeof(VARIANT);
    hollow.rgsabound[0].cElements = 3;
    VARIANT list{};
    list.vt = VT_ARRAY | VT_VARIANT;
    list.parray = &hollow;
    EXPECT_TRUE(CValue::TextsOf(list).empty());
}

TEST(Value, OnlyObjectsGiveObjects) {
    EXPECT_EQ(CValue("text").DetachObject(), nullptr);
    VARIANT unknown = {};
    unknown.vt = VT_UNKNOWN;
    EXPECT_EQ(CValue::Attach(unknown).DetachObject(), nullptr);
}

TEST(ListBuilder, CopiesLeaveTheValuesTheirOwner) {
    const CValue text = "a";
    const CValue number = 2.0;
    const CValue list = CListBuilder::OfCopies({text.Get(), number.Get()});
    ASSERT_EQ(Count(list.Get()), 2u);
    EXPECT_EQ(TextAt(list.Get(), 0), L"a");
    EXPECT_NE(At(list.Get(), 0).bstrVal, text.Get().bstrVal);
    EXPECT_EQ(At(list.Get(), 1).dblVal, 2.0);
}

#if !defined(NDEBUG)
TEST(ListBuilder, CheckedBuildsEndAtAnElementTooMany) {
    EXPECT_DEATH(
        {
            CListBuilder list(1);
            list.Add(1.0);
            list.Add(2.0);
        },
        "cElements");
}
#endif

TEST(ListBuilder, AListWhoseCopyFailsIsNothing) {
    const CValue text = "a";
    VARIANT unknown = {};
    unknown.vt = VT_ILLEGAL;
    EXPECT_EQ(CListBuilder::OfCopies({text.Get(), unknown}).Get().vt, VT_EMPTY);
}

TEST(ListBuilder, UnfinishedListIsFreed) {
    CListBuilder list(2);
    list.Add("never finished");
    SUCCEED();
}
