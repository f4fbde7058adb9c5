// Texts of the automation runtime: their length, what ends them, and null.

#include <windows.h>

#include <oleauto.h>

#include <gtest/gtest.h>
#include <string>

namespace {

TEST(Bstr, NullIsAnEmptyText) {
    EXPECT_EQ(SysStringLen(nullptr), 0U);
    EXPECT_EQ(SysStringByteLen(nullptr), 0U);
    SysFreeString(nullptr);
}

TEST(Bstr, IsACopyOfItsSource) {
    OLECHAR source[] = L"Rotor";
    const BSTR text = SysAllocString(source);
    source[0] = L'M';
    EXPECT_EQ(std::wstring(text), L"Rotor");
    EXPECT_EQ(SysStringLen(text), 5U);
    EXPECT_EQ(SysStringByteLen(text), 5 * sizeof(OLECHAR));
    SysFreeString(text);
}

TEST(Bstr, OfNullIsNull) {
    EXPECT_EQ(SysAllocString(nullptr), nullptr);
}

TEST(Bstr, WithoutCharactersIsNotNull) {
    for (const BSTR text : {SysAllocString(L""), SysAllocStringLen(L"x", 0), SysAllocStringLen(nullptr, 0)}) {
        ASSERT_NE(text, nullptr);
        EXPECT_EQ(SysStringLen(text), 0U);
        EXPECT_EQ(text[0], L'\0');
        SysFreeString(text);
    }
}

TEST(Bstr, KeepsZerosInside) {
    const std::wstring source(L"a\0b\0", 4);
    const BSTR text = SysAllocStringLen(source.data(), 4);
    EXPECT_EQ(SysStringLen(text), 4U);
    EXPECT_EQ(std::wstring(text, SysStringLen(text)), source);
    EXPECT_EQ(text[4], L'\0');
    SysFreeString(text);
}

TEST(Bstr, StopsAtTheFirstZeroWithoutALength) {
    const BSTR text = SysAllocString(L"a\0b");
    EXPECT_EQ(SysStringLen(text), 1U);
    SysFreeString(text);
}

TEST(Bstr, OfALengthTakesThatManyCharactersAndAddsAZero) {
    const BSTR text = SysAllocStringLen(L"Rotor", 3);
    EXPECT_EQ(std::wstring(text), L"Rot");
    EXPECT_EQ(SysStringLen(text), 3U);
    SysFreeString(text);
}

TEST(Bstr, WithoutASourceHasRoomAndAZeroBehindIt) {
    const BSTR text = SysAllocStringLen(nullptr, 100);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(SysStringLen(text), 100U);
    EXPECT_EQ(text[100], L'\0');
    for (UINT index = 0; index < 100; ++index) {
        text[index] = L'x';
    }
    EXPECT_EQ(std::wstring(text), std::wstring(100, L'x'));
    SysFreeString(text);
}

TEST(Bstr, HoldsCharactersOutsideTheBasicPlane) {
    const std::wstring source = L"\U0001F9F2";
    const BSTR text = SysAllocString(source.c_str());
    EXPECT_EQ(SysStringLen(text), 4 / sizeof(OLECHAR));
    EXPECT_EQ(SysStringByteLen(text), 4U);
    EXPECT_EQ(std::wstring(text), source);
    SysFreeString(text);
}

TEST(Bstr, HoldsALongText) {
    const std::wstring source(1000000, L'x');
    const BSTR text = SysAllocStringLen(source.data(), static_cast<UINT>(source.size()));
    EXPECT_EQ(SysStringLen(text), source.size());
    EXPECT_EQ(std::wstring(text, SysStringLen(text)), source);
    SysFreeString(text);
}

} // namespace
