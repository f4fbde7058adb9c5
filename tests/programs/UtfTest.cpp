// Texts between wide text, UTF-8 and the system's code page.
#include "programs/Utf.h"

#include <gtest/gtest.h>

namespace {

using namespace kinora::programs;

TEST(Utf, KeepsEveryCharacter) {
    const std::wstring wide = std::wstring(L"a\0", 2) + L"\u00fc\u20ac\U0001F600";
    const std::string utf8("a\0\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80", 11);
    EXPECT_EQ(Utf8FromWide(wide), utf8);
    EXPECT_EQ(WideFromUtf8(utf8), wide);
    EXPECT_EQ(Utf8FromWide({}), "");
    EXPECT_EQ(WideFromUtf8({}), L"");
}

TEST(Utf, TakesTextsOfAnyLength) {
    for (const std::size_t length : {127U, 128U, 129U, 5000U}) {
        std::string expected;
        for (std::size_t i = 0; i < length; ++i) {
            expected += "\xE2\x82\xAC";
        }
        EXPECT_EQ(Utf8FromWide(std::wstring(length, L'\u20ac')), expected) << length;
    }
    // Of the longest characters, as many as fit in half as many places.
    for (const std::size_t length : {63U, 64U, 65U, 127U, 128U, 129U}) {
        std::wstring wide;
        std::string expected;
        for (std::size_t i = 0; i < length; ++i) {
            wide += L"\U0001F9F2";
            expected += "\xF0\x9F\xA7\xB2";
        }
        EXPECT_EQ(Utf8FromWide(wide), expected) << length;
    }
}

TEST(Utf, ReplacesWhatIsNoCharacter) {
    EXPECT_EQ(Utf8FromWide(L"a\xd83d"
                           L"b"),
              "a\xEF\xBF\xBD"
              "b");
    EXPECT_EQ(Utf8FromWide(L"\xde00"), "\xEF\xBF\xBD");
    EXPECT_NE(WideFromUtf8("a\xFF").find(L'\xFFFD'), std::wstring::npos);
}

TEST(Utf, ShowsOnTheWayBackWhatTheCodePageLacks) {
    EXPECT_EQ(WideFromAnsi(AnsiFromWide(L"C:/rotor 5")), L"C:/rotor 5");
    const std::wstring magnet = L"\U0001F9F2";
#ifdef _WIN32
    // Outside every ANSI code page.
    EXPECT_NE(WideFromAnsi(AnsiFromWide(magnet)), magnet);
#else
    EXPECT_EQ(AnsiFromWide(magnet), "\xF0\x9F\xA7\xB2");
    EXPECT_EQ(WideFromAnsi("\xF0\x9F\xA7\xB2"), magnet);
#endif
}

} // namespace
