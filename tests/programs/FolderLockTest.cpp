#include "programs/FolderLock.h"

#include "programs/Errors.h"

#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#ifdef _WIN32
#include <process.h>
#else
#include <unistd.h>
#endif

namespace {

using namespace kinora::programs;
using testing::HasSubstr;

long ThisProcess() {
#ifdef _WIN32
    return _getpid();
#else
    return getpid();
#endif
}

class FolderLockTest : public testing::Test {
protected:
    void SetUp() override {
        m_folder = std::filesystem::temp_directory_path() / ("kinora-lock-" + std::to_string(ThisProcess()));
        std::filesystem::create_directories(m_folder);
    }
    void TearDown() override { std::filesystem::remove_all(m_folder); }

    std::string Refusal(const std::filesystem::path& file) {
        try {
            const FolderLock lock(file);
        } catch (const InputError& error) {
            return error.what();
        }
        return {};
    }

    std::filesystem::path m_folder;
};

TEST_F(FolderLockTest, TellsWhoHasTheFolder) {
    const FolderLock first(m_folder / "run.lock");
    const std::string refusal = Refusal(m_folder / "run.lock");
    EXPECT_THAT(refusal, HasSubstr(m_folder.u8string() + ": another run works in this folder (process " +
                                   std::to_string(ThisProcess()) + ")"));
    EXPECT_THAT(refusal, HasSubstr("--out"));
}

TEST_F(FolderLockTest, LeavesNothingBehind) {
    { const FolderLock lock(m_folder / "run.lock"); }
    EXPECT_TRUE(std::filesystem::is_empty(m_folder));
    EXPECT_EQ(Refusal(m_folder / "run.lock"), "");
}

TEST_F(FolderLockTest, TakesWhatADeadProcessLeft) {
    std::ofstream(m_folder / "run.lock") << "4711";
    EXPECT_EQ(Refusal(m_folder / "run.lock"), "");
}

TEST_F(FolderLockTest, SaysWhatCannotBeWritten) {
    EXPECT_THAT(Refusal(m_folder / "missing" / "run.lock"), HasSubstr("run.lock: cannot be written ("));
}

} // namespace
