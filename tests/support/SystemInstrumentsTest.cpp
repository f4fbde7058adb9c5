// The instruments that ask Windows, tested themselves.

#include "tests/support/OpenHandles.h"
#include "tests/support/ThisProgram.h"

#include <windows.h>

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>

namespace {

using namespace fake;

TEST(MemoryGuard, SeesAByteWrittenBehindABlockWhenTheHeapIsChecked) {
    const char* const checks = std::getenv("WINEDEBUG");
    if (!checks || !std::strstr(checks, "+heap")) {
        GTEST_SKIP() << "the heap is checked in the tests of the preset mingw-debug only";
    }
    auto* const block = static_cast<volatile char*>(HeapAlloc(GetProcessHeap(), 0, 13));
    const char behind = block[13];
    block[13] = static_cast<char>(~behind);
    EXPECT_FALSE(HeapValidate(GetProcessHeap(), 0, nullptr));
    block[13] = behind;
    EXPECT_TRUE(HeapFree(GetProcessHeap(), 0, const_cast<char*>(block)));
}

TEST(OpenHandles, CountsAnEventWhileItIsOpen) {
    const std::size_t before = OpenHandles(ThisProcess());
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    EXPECT_EQ(OpenHandles(ThisProcess()), before + 1);
    CloseHandle(event);
    EXPECT_EQ(OpenHandles(ThisProcess()), before);
}

} // namespace
