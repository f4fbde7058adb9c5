// The host in C: its forces, and what it says when it cannot work.
#include "programs/Environment.h"
#include "tests/endtoend/SmallHosts.h"

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
    ExpectForcesOfFiveSteps(RunWith(Examples() / "cube-magnets" / "cube-magnets.obj"));
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
