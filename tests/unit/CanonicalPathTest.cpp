#include "coupling/CanonicalPath.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <system_error>

TEST(CanonicalPath, IsWrittenAsUsersWriteIt) {
    EXPECT_EQ(WithoutPathMark(L"\\\\?\\C:\\a\\b.vtdk"), L"C:\\a\\b.vtdk");
    EXPECT_EQ(WithoutPathMark(L"\\\\?\\C:\\"), L"C:\\");
    EXPECT_EQ(WithoutPathMark(L"\\\\?\\UNC\\server\\share\\b.vtdk"), L"\\\\server\\share\\b.vtdk");
    EXPECT_EQ(WithoutPathMark(L"\\\\?\\Volume{0}\\b.vtdk"), L"\\\\?\\Volume{0}\\b.vtdk") << "which has no other form";
    EXPECT_EQ(WithoutPathMark(L"C:\\a"), L"C:\\a");
    EXPECT_EQ(WithoutPathMark(L""), L"");
}

TEST(CanonicalPath, MissingPathsThrow) {
    for (const wchar_t* const path : {L"", L"no such file", L"a?b", L"/no such folder/file"}) {
        EXPECT_THROW(CanonicalPath(path), std::filesystem::filesystem_error) << std::filesystem::path(path);
    }
    try {
        CanonicalPath(L"no such file");
        FAIL() << "a missing file must throw";
    } catch (const std::filesystem::filesystem_error& error) {
        EXPECT_TRUE(error.code() == std::errc::no_such_file_or_directory) << error.what();
        EXPECT_EQ(error.path1(), L"no such file");
    }
}
