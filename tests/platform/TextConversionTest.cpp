// Conversion between wide and narrow texts, in UTF-8, which every platform has. A wide character has 16 bits on one and
// 32 on the other, so that the length of characters outside the basic plane differs.

#include <windows.h>

#include <gtest/gtest.h>
#include <string>

namespace {

const std::string magnetUtf8 = "\xF0\x9F\xA7\xB2";
const std::wstring magnetWide = L"\U0001F9F2";

int WideLength(const std::string& text) {
    return MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
}

std::wstring Wide(const std::string& text) {
    std::wstring wide(static_cast<std::size_t>(WideLength(text)), L'?');
    const int length = static_cast<int>(wide.size());
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), wide.data(), length), length);
    return wide;
}

int NarrowLength(const std::wstring& text) {
    const int length = static_cast<int>(text.size());
    return WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
}

std::string Narrow(const std::wstring& text) {
    std::string narrow(static_cast<std::size_t>(NarrowLength(text)), '?');
    const int size = static_cast<int>(narrow.size());
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), narrow.data(), size, nullptr,
                                  nullptr),
              size);
    return narrow;
}

TEST(Conversion, OfOneToFourBytesGoesBothWays) {
    const struct {
        std::string narrow;
        std::wstring wide;
    } table[] = {{"Rotor", L"Rotor"},
                 {"\xC3\xA4", L"\u00E4"},
                 {"\xE7\xA3\x81", L"\u78C1"},
                 {magnetUtf8, magnetWide},
                 {"a" + magnetUtf8 + "\xC3\xA4", L"a" + magnetWide + L"\u00E4"},
                 {std::string("a\0b", 3), std::wstring(L"a\0b", 3)},
                 {"\x7F", L"\u007F"},
                 {"\xEF\xBF\xBF", L"\uFFFF"},
                 {"\xF4\x8F\xBF\xBF", L"\U0010FFFF"}};
    for (const auto& row : table) {
        EXPECT_EQ(Wide(row.narrow), row.wide) << row.narrow;
        EXPECT_EQ(Narrow(row.wide), row.narrow);
    }
}

TEST(Conversion, CountsOutsideTheBasicPlaneByTheWidthOfACharacter) {
    EXPECT_EQ(WideLength(magnetUtf8), static_cast<int>(4 / sizeof(wchar_t)));
    EXPECT_EQ(NarrowLength(magnetWide), 4);
}

TEST(Conversion, OfALengthWritesNoZero) {
    wchar_t wide[] = L"xxxx";
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "abcd", 2, wide, 4), 2);
    EXPECT_EQ(std::wstring(wide), L"abxx");
    char narrow[] = "xxxx";
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, L"abcd", 2, narrow, 4, nullptr, nullptr), 2);
    EXPECT_EQ(std::string(narrow), "abxx");
}

TEST(Conversion, UpToTheZeroCountsAndWritesIt) {
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "ab", -1, nullptr, 0), 3);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, L"ab", -1, nullptr, 0, nullptr, nullptr), 3);
    wchar_t wide[] = L"xxxx";
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "ab", -1, wide, 4), 3);
    EXPECT_EQ(std::wstring(wide), L"ab");
    char narrow[] = "xxxx";
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, L"ab", -1, narrow, 4, nullptr, nullptr), 3);
    EXPECT_EQ(std::string(narrow), "ab");
}

TEST(Conversion, WithoutRoomFails) {
    wchar_t wide[2];
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "abc", 3, wide, 2), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
    char narrow[3];
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, magnetWide.data(), static_cast<int>(magnetWide.size()), narrow, 3,
                                  nullptr, nullptr),
              0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
}

TEST(Conversion, OfNothingIsAnError) {
    wchar_t wide[2];
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "", 0, wide, 2), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    char narrow[2];
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, L"", 0, narrow, 2, nullptr, nullptr), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
}

TEST(Conversion, ReplacesWhatIsNoUtf8) {
    EXPECT_EQ(Wide("a\xFF"
                   "b"),
              L"a\uFFFDb");
    EXPECT_EQ(Wide("\x80"), L"\uFFFD");
    EXPECT_EQ(Wide("\xFE\xFF"), L"\uFFFD\uFFFD");
}

TEST(Conversion, ReplacesHalfASurrogatePair) {
    EXPECT_EQ(Narrow(std::wstring(1, static_cast<wchar_t>(0xD83E))), "\xEF\xBF\xBD");
    EXPECT_EQ(Narrow(L"a" + std::wstring(1, static_cast<wchar_t>(0xDDF2)) + L"b"), "a\xEF\xBF\xBD"
                                                                                   "b");
}

TEST(Conversion, OfPlainLettersIsTheSameInTheSystemsCodePage) {
    wchar_t wide[6] = {};
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "Rotor", -1, wide, 6), 6);
    EXPECT_EQ(std::wstring(wide), L"Rotor");
    char narrow[6] = {};
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"Rotor", -1, narrow, 6, nullptr, nullptr), 6);
    EXPECT_EQ(std::string(narrow), "Rotor");
}

} // namespace
