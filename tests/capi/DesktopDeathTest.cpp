// The desktop's process ends under a handle of the C interface: the next call says so, and a new desktop can be
// launched.
//
// Needs vantor-sim.exe beside it, and under Wine a prefix of its own (tests/support/Processes.h).

#include "tests/capi/Handle.h"
#include "tests/support/Processes.h"
#include "tests/support/Registration.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Texts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace capi {
namespace {

using namespace fake;

class DeathUnderAHandle : public testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_EQ(RunProgram(L"\"" + SimulatorServer::Path() + L"\" /RegServer"), 0UL); }
    static void TearDownTestSuite() { RunProgram(L"\"" + SimulatorServer::Path() + L"\" /UnregServer"); }

    std::string File(const wchar_t* name) const { return ToUtf8(m_folder / name); }

    const VersionVariable m_version{"Simulator"};
    const TestFolder m_folder;
};

TEST_F(DeathUnderAHandle, IsToldAndFollowedByANewDesktop) {
    WriteFileBytes(m_folder / L"tip.obj",
                   "o tip\nv 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 1\nf 1 3 2\nf 1 2 4\nf 1 4 3\nf 2 3 4\n");
    const Handle handle;
    {
        SimulatorServer first;
        ASSERT_EQ(kv_launch(handle, nullptr), KV_OK) << ErrorText(handle);
        ASSERT_EQ(kv_create_project(handle, File(L"a.vantor").c_str(), File(L"tip.obj").c_str(), "mm"), KV_OK)
            << ErrorText(handle);
        ASSERT_EQ(kv_save_project(handle), KV_OK) << ErrorText(handle);
        first.Kill();
        EXPECT_EQ(kv_save_project(handle), KV_FAILED);
        EXPECT_THAT(ErrorText(handle), testing::HasSubstr("the desktop has ended"));
        kv_texts* messages = nullptr;
        EXPECT_EQ(kv_get_messages(handle, 0, &messages), KV_FAILED);
        EXPECT_EQ(kv_quit(handle), KV_FAILED) << "it cannot save any more";
        EXPECT_EQ(kv_release(handle), KV_OK);
    }
    SimulatorServer second;
    EXPECT_EQ(kv_open_project(handle, File(L"a.vantor").c_str(), "Veltrix3DDesign1"), KV_OK) << ErrorText(handle);
    EXPECT_EQ(kv_quit(handle), KV_OK) << ErrorText(handle);
}

} // namespace
} // namespace capi
