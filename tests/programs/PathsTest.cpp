#include "programs/Paths.h"

#include <gtest/gtest.h>
#include <string>

namespace kinora::programs {
namespace {

std::filesystem::path Here(const char* name) {
    return std::filesystem::current_path() / name;
}

TEST(Paths, BeginAtTheRoot) {
    EXPECT_EQ(AbsolutePath("run.json"), Here("run.json"));
    EXPECT_EQ(NormalPath("a/./b/../run.json"), Here("a").append("run.json").make_preferred());
    EXPECT_EQ(Joined("folder", "run.json"), std::filesystem::path("folder") / "run.json");
    EXPECT_EQ(Joined("folder", Here("run.json")), Here("run.json"));
    EXPECT_EQ(Joined({}, "run.json"), "run.json");
}

#ifdef _WIN32

std::wstring Text(const std::filesystem::path& path) {
    return path.native();
}

TEST(Paths, OfANetworkStayThere) {
    EXPECT_EQ(Text(AbsolutePath(L"\\\\server\\share\\run.json")), L"\\\\server\\share\\run.json");
    EXPECT_EQ(Text(AbsolutePath(L"//server/share/run.json")), L"\\\\server\\share\\run.json");
    EXPECT_EQ(Text(NormalPath(L"\\\\server\\share\\a\\.\\b\\..\\run.json")), L"\\\\server\\share\\a\\run.json");
    EXPECT_EQ(Text(NormalPath(L"\\\\server\\share\\..\\..\\..\\run.json")), L"\\\\server\\share\\run.json");
    EXPECT_EQ(Text(Joined(L"C:\\folder", L"\\\\server\\share\\a.obj")), L"\\\\server\\share\\a.obj");
    EXPECT_EQ(Text(Joined(L"\\\\server\\share", L"a.obj")), L"\\\\server\\share\\a.obj");
}

TEST(Paths, LoseTheMarkOfThoseThatAreNotLookedInto) {
    EXPECT_EQ(Text(AbsolutePath(L"\\\\?\\C:\\folder\\run.json")), L"C:\\folder\\run.json");
    EXPECT_EQ(Text(NormalPath(L"\\\\?\\UNC\\server\\share\\run.json")), L"\\\\server\\share\\run.json");
    EXPECT_EQ(Text(Joined({}, L"\\\\?\\C:\\folder")), L"C:\\folder");
    EXPECT_EQ(Text(Joined(L"D:\\", L"\\\\?\\C:\\folder")), L"C:\\folder");
}

#endif

} // namespace
} // namespace kinora::programs
