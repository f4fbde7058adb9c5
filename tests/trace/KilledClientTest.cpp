// A client that ends in the middle of a call.
#include "trace/core/Session.h"
#include "trace/server/CallRecord.h"
#include "trace/server/Tracer.h"

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace {

using namespace kinora::trace;

TEST(KilledClientDeathTest, LeavesTheCallThatItWasIn) {
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / "trace-killed";
    std::filesystem::remove_all(folder);
    EXPECT_EXIT(
        {
            Tracer tracer(RecorderSettings{folder.wstring(), 1 << 20});
            CallRecord::Create(tracer, L"Pellux.VantorDesktop");
            TerminateProcess(GetCurrentProcess(), 9);
        },
        testing::ExitedWithCode(9), "");
    const std::filesystem::path file = std::filesystem::directory_iterator(folder)->path();
    Session session;
    {
        std::ifstream stream(file, std::ios::binary);
        ReadTrace(stream, "trace", session);
    }
    ASSERT_EQ(session.records.size(), 1U);
    EXPECT_TRUE(session.records[0].isOpen);
    EXPECT_EQ(session.records[0].method, "Pellux.VantorDesktop");
    std::filesystem::remove_all(folder);
}

} // namespace
