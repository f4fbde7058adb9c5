// The host in C: its forces, and what it says when it cannot work.
#include "programs/Environment.h"
#include "tests/endtoend/Programs.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace endtoend {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class CHost : public testing::Test {
protected:
    void SetUp() override { kinora::programs::SetEnvironmentValue("KINORA_VELTRIX_VTDK_VERSION", KINORA_DESKTOP); }

    Outcome RunWith(const std::filesystem::path& geometry) const {
        return RunProgram(ProgramBeside("c-host"), {(m_folder / "pull.vtdk").u8string(), geometry.u8string()});
    }

    ScratchFolder m_folder;
};

TEST_F(CHost, PrintsTheForceOfEveryStep) {
    const Outcome outcome = RunWith(Examples() / "cube-magnets" / "cube-magnets.obj");
    EXPECT_EQ(outcome.exitCode, 0);
    const std::vector<std::string> lines = Lines(outcome.output);
    ASSERT_EQ(lines.size(), 5U) << outcome.output;
    const std::vector<double> expected =
        Column(Examples() / "cube-magnets" / "scenario.expected.csv", "upper.Force_z [N]");
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_THAT(lines[i], StartsWith("z = " + std::to_string(12 + i) + " mm: "));
        EXPECT_NEAR(std::stod(lines[i].substr(lines[i].find(':') + 1)), expected[i], 1e-4 * std::fabs(expected[0]));
    }
    EXPECT_TRUE(std::filesystem::exists(m_folder / "pull.vtdk")) << "the project is saved";
}

TEST_F(CHost, PassesOnWhyTheGeometryIsNotRead) {
    const Outcome outcome = RunWith(m_folder / "missing.obj");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.output, HasSubstr("missing.obj"));
}

TEST_F(CHost, SaysHowItIsUsed) {
    const Outcome outcome = RunProgram(ProgramBeside("c-host"), {});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.output, StartsWith("usage: c-host PROJECT GEOMETRY\n"));
}

} // namespace
} // namespace endtoend
