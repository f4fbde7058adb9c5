#include "comutils/Text.h"

#include "tests/support/Texts.h"

#include <clocale>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <locale>

namespace {

std::wstring Widened(const std::string& text) {
    const BSTR bstr = Text::ToBstr(text);
    std::wstring wide(bstr, SysStringLen(bstr));
    SysFreeString(bstr);
    return wide;
}

std::string General(double number) {
    std::string text;
    Text::AppendGeneral(text, number);
    return text;
}

#ifdef _WIN32
constexpr UINT ansiCodePages[] = {874, 932, 936, 949, 950, 1250, 1251, 1252, 1253, 1254, 1255, 1256, 1257, 1258};
#else
constexpr UINT ansiCodePages[] = {CP_ACP};
#endif

struct DecimalComma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

} // namespace

TEST(Text, WidensEveryByteAsTheAnsiCodePageDoes) {
    for (int first = 0; first < 256; ++first) {
        const std::string alone(1, static_cast<char>(first));
        EXPECT_EQ(Widened(alone), fake::Widen(alone, CP_ACP)) << "byte " << first;
        const std::string amid = "ab" + alone + "cd";
        EXPECT_EQ(Widened(amid), fake::Widen(amid, CP_ACP)) << "byte " << first;
        EXPECT_EQ(Text::ToWide(amid), fake::Widen(amid, CP_ACP)) << "byte " << first;
    }
}

TEST(Text, SevenBitCharactersAreThemselvesInEveryAnsiCodePage) {
    for (const UINT codePage : ansiCodePages) {
        for (int character = 0; character < 128; ++character) {
            const std::string narrow(1, static_cast<char>(character));
            const std::wstring wide(1, static_cast<wchar_t>(character));
            EXPECT_EQ(fake::Widen(narrow, codePage), wide) << codePage << " " << character;
            EXPECT_EQ(Text::ToNarrow(wide, codePage), narrow) << codePage << " " << character;
        }
    }
}

TEST(Text, ComesBackFromEveryCharacterOfTheAnsiCodePage) {
    for (wchar_t character = 0; character < 256; ++character) {
        const std::string text = "x" + fake::ToAnsi(std::wstring(1, character));
        const BSTR bstr = Text::ToBstr(text);
        EXPECT_EQ(Text::FromBstr(bstr), text) << "character " << static_cast<int>(character);
        SysFreeString(bstr);
    }
}

TEST(Text, KeepsEmbeddedZeros) {
    const std::wstring text(L"a\0b\u00E9\0", 5);
    EXPECT_EQ(Widened(fake::ToAnsi(text)), text);
    const BSTR bstr = SysAllocStringLen(L"a\0b", 3);
    EXPECT_EQ(Text::FromBstr(bstr), std::string("a\0b", 3));
    SysFreeString(bstr);
}

TEST(Text, NullBstrIsEmpty) {
    EXPECT_EQ(Text::FromBstr(nullptr), "");
}

TEST(Text, WritesUtf8WhereAsked) {
    EXPECT_EQ(Text::ToNarrow(L"\u00E9\u20AC", CP_UTF8), "\xC3\xA9\xE2\x82\xAC");
}

#ifdef _WIN32
TEST(Text, CharactersOutsideTheCodePageAreReplaced) {
    EXPECT_EQ(Text::ToNarrow(L"a\u4E2Db", 1252), "a?b");
}
#endif

TEST(Text, PathsAreNotTheFileLibrarysGuess) {
    const UINT codePage = AreFileApisANSI() ? CP_ACP : CP_OEMCP;
    const std::string narrow = fake::Narrow(L"C:/\u00E9.txt", codePage);
    EXPECT_EQ(Text::OfPath(Text::ToFileSystemPath(narrow)), L"C:/\u00E9.txt");
    EXPECT_EQ(Text::ToFileSystemPath(narrow).u8string(), "C:/\xC3\xA9.txt");
    EXPECT_EQ(Text::OfPath(Text::ToPath(L"\u03A9/\u20AC")), L"\u03A9/\u20AC");
}

TEST(Text, FixedHasSixDecimals) {
    EXPECT_EQ(Text::Fixed(0.1), "0.100000");
    EXPECT_EQ(Text::Fixed(-1.5707963267948966), "-1.570796");
    EXPECT_EQ(Text::Fixed(-0.0), "-0.000000");
    EXPECT_EQ(Text::Fixed(4e-7), "0.000000");
    EXPECT_EQ(Text::Fixed(0.5e-6), "0.000000"); // the double lies below the half, as printf sees it
    EXPECT_EQ(Text::Fixed(1.5e-6), "0.000002");
    EXPECT_EQ(Text::Fixed(123456789.0), "123456789.000000");
    EXPECT_EQ(Text::Fixed(std::numeric_limits<double>::infinity()), "inf");
    EXPECT_EQ(Text::Fixed(-std::numeric_limits<double>::infinity()), "-inf");
    EXPECT_EQ(Text::Fixed(std::numeric_limits<double>::quiet_NaN()), "nan");
    EXPECT_EQ(Text::Fixed(std::numeric_limits<double>::denorm_min()), "0.000000");
}

TEST(Text, FixedHoldsTheLargestNumbers) {
    const std::string longest = Text::Fixed(-std::numeric_limits<double>::max());
    EXPECT_EQ(longest.size(), 1u + 309u + 7u);
    EXPECT_EQ(longest.substr(0, 6), "-17976");
    EXPECT_EQ(Text::Fixed(1e300).size(), 301u + 7u);
}

TEST(Text, GeneralHasSixDigitsAndShortExponents) {
    EXPECT_EQ(General(0.0), "0");
    EXPECT_EQ(General(-0.0), "-0");
    EXPECT_EQ(General(0.01), "0.01");
    EXPECT_EQ(General(1.0 / 3.0), "0.333333");
    EXPECT_EQ(General(123456.0), "123456");
    EXPECT_EQ(General(1234567.0), "1.23457e+06");
    EXPECT_EQ(General(0.0001), "0.0001");
    EXPECT_EQ(General(0.00001), "1e-05");
    EXPECT_EQ(General(1e300), "1e+300");
    EXPECT_EQ(General(std::numeric_limits<double>::infinity()), "inf");
}

TEST(Text, NumbersAreReadAsCReadsThem) {
    EXPECT_EQ(Text::ToNumber("-890000"), -890000.0);
    EXPECT_EQ(Text::ToNumber("0.5"), 0.5);
    EXPECT_EQ(Text::ToNumber("-.5e-3"), -0.0005);
    EXPECT_EQ(Text::ToNumber(" \t\n\v\f\r+2.5A_per_meter"), 2.5);
    EXPECT_EQ(Text::ToNumber("1e"), 1.0);
    for (const char* const none : {"", " ", "+", "-", ".", "+-1", "- 1", "x1", "e5"}) {
        EXPECT_EQ(Text::ToNumber(none), 0.0) << none;
    }
    EXPECT_TRUE(std::signbit(Text::ToNumber("-0")));
}

TEST(Text, NumbersBeyondTheRangeAreInfiniteOrZero) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(Text::ToNumber("1e400"), infinity);
    EXPECT_EQ(Text::ToNumber("-1E400 and more"), -infinity);
    EXPECT_EQ(Text::ToNumber("1e-400"), 0.0);
    EXPECT_TRUE(std::signbit(Text::ToNumber("-1E-400")));
    EXPECT_EQ(Text::ToNumber("1.7976931348623157e308"), std::numeric_limits<double>::max());
}

TEST(Text, NumbersIgnoreTheHostsLocale) {
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new DecimalComma));
    EXPECT_EQ(Text::Fixed(1234.5), "1234.500000");
    EXPECT_EQ(General(1234.5), "1234.5");
    EXPECT_EQ(Text::ToNumber("1234.5"), 1234.5);
    EXPECT_EQ(Text::ToNumber("1234,5"), 1234.0);
    std::locale::global(before);
}
