// The smallest host: its forces, and what it says when an operation fails.
#include "programs/Environment.h"
#include "tests/endtoend/SmallHosts.h"

#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <regex>

namespace endtoend {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class MinimalHost : public testing::Test {
protected:
    void SetUp() override { kinora::programs::SetEnvironmentValue("KINORA_VELTRIX_VTDK_VERSION", "Simulator"); }

    static Outcome Run(const std::vector<std::string>& arguments) {
        return RunProgram(ProgramBeside("minimal-host"), arguments);
    }

    Outcome RunWith(const std::filesystem::path& geometry) const {
        return Run({(m_folder / "pull.vtdk").u8string(), geometry.u8string()});
    }

    ScratchFolder m_folder;
    const std::filesystem::path m_cubes = Examples() / "cube-magnets" / "cube-magnets.obj";
};

TEST_F(MinimalHost, PrintsTheForceOfEveryStep) {
    ExpectForcesOfFiveSteps(RunWith(m_cubes));
}

TEST_F(MinimalHost, SaysHowItIsUsed) {
    const Outcome outcome = Run({});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.output, StartsWith("usage: minimal-host PROJECT GEOMETRY\n  PROJECT   the project file"));
}

TEST_F(MinimalHost, SaysThatTheProjectIsThereAlready) {
    std::ofstream(m_folder / "pull.vtdk") << "mine";
    const Outcome outcome = RunWith(m_cubes);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "CreateProject failed; is PROJECT there already, or GEOMETRY not readable?\n"
                              "QuitApplication failed: PROJECT is not saved, and the desktop stays open\n");
    EXPECT_EQ(Content(m_folder / "pull.vtdk"), "mine");
}

TEST_F(MinimalHost, GivesTheDesktopsWordsWithTheirSeverity) {
    std::ofstream(m_folder / "broken.obj") << "o broken\nv 0 0\n";
    const Outcome unreadable = RunWith(m_folder / "broken.obj");
    EXPECT_EQ(unreadable.exitCode, 1);
    EXPECT_THAT(unreadable.output, StartsWith("CreateProject failed"));
    EXPECT_THAT(unreadable.output, HasSubstr("\n  desktop, error: Import: 0x"));
    EXPECT_THAT(unreadable.output, HasSubstr("broken.obj"));
}

TEST_F(MinimalHost, NamesTheOperationThatMissesAnObject) {
    const std::string text = Content(m_cubes);
    std::ofstream(m_folder / "other.obj", std::ios::binary)
        << std::regex_replace(text, std::regex("upper_magnet"), "another_magnet");
    const Outcome outcome = RunWith(m_folder / "other.obj");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.output,
                StartsWith("InitMagneticObjects failed; has GEOMETRY the objects lower_magnet and upper_magnet?\n"));
    EXPECT_THAT(outcome.output, HasSubstr("\n  desktop, error: "));
    EXPECT_THAT(outcome.output, HasSubstr("upper_magnet"));
}

} // namespace
} // namespace endtoend
