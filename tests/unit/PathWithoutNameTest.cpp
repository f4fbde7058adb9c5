// What only Windows has: files of which the system cannot tell what they are called.

#include "coupling/CanonicalPath.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <string>

TEST(CanonicalPath, IsTheAbsoluteOneWhereTheSystemKnowsNoOther) {
    const std::wstring name = L"\\\\.\\pipe\\kinora-" + std::to_wstring(GetCurrentProcessId());
    const HANDLE pipe = CreateNamedPipeW(name.c_str(), PIPE_ACCESS_DUPLEX, 0, 1, 16, 16, 0, nullptr);
    ASSERT_NE(pipe, INVALID_HANDLE_VALUE);
    EXPECT_EQ(CanonicalPath(name), name);
    CloseHandle(pipe);
}
