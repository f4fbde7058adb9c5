// What the host says and answers when something is wrong.
#include "tests/endtoend/CubeMagnets.h"

#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace endtoend {
namespace {

using testing::HasSubstr;
using testing::Not;

using HostFailure = CubeMagnets;

TEST_F(HostFailure, BadCommandLinesAreBadInput) {
    EXPECT_EQ(RunHost({}).exitCode, 2);
    EXPECT_EQ(RunHost({"scenario.json", "--unknown"}).exitCode, 2);
    EXPECT_EQ(RunHost({"scenario.json", "--resume", "--overwrite"}).exitCode, 2);
    EXPECT_EQ(RunHost({"scenario.json", "--steps", "0"}).exitCode, 2);
    const Outcome missing = RunHost({(m_folder / "none.json").u8string()});
    EXPECT_EQ(missing.exitCode, 2);
    EXPECT_THAT(missing.output, HasSubstr("none.json: cannot be read"));
    EXPECT_EQ(RunHost({"--help"}).exitCode, 0);
}

TEST_F(HostFailure, BadScenariosAreBadInputAndStartNothing) {
    Replace("\"name\": \"lower\"", "\"name\": \"../lower\"");
    const Outcome outcome = Run();
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.output, HasSubstr("scenario.json:14: /bodies/0/name: \"../lower\" holds a character"));
    EXPECT_FALSE(std::filesystem::exists(m_folder / "output"));
}

TEST_F(HostFailure, DryRunStartsNothing) {
    const Outcome outcome = Run({"--dry-run"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.output, HasSubstr("slider \"lift\" along (0, 0, 1), moves upper"));
    EXPECT_FALSE(std::filesystem::exists(m_folder / "output"));
}

TEST_F(HostFailure, DryRunRefusesMaterialsThatMissTheirObject) {
    Replace("\"lower_magnet\":", "\"lower_magnt\":");
    const Outcome outcome = Run({"--dry-run"});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.output, HasSubstr("/materials/lower_magnt: there is no object \"lower_magnt\" in "
                                          "cube-magnets.obj, which has \"lower_magnet\", \"upper_magnet\". Did you "
                                          "mean \"lower_magnet\"?"));
}

TEST_F(HostFailure, DryRunWarnsOfObjectsWithoutAMaterial) {
    Replace("\"lower_magnet\": {", "// {");
    const Outcome outcome = Run({"--dry-run"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    EXPECT_THAT(outcome.output, HasSubstr("warning: "));
    EXPECT_THAT(outcome.output, HasSubstr("the object \"lower_magnet\" has no material and feels no force"));
}

TEST_F(HostFailure, AMissingDesktopIsNamedWithWhatToTry) {
    const Outcome outcome = Run({"--desktop", "NoSuchVersion"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.output,
                HasSubstr("LaunchDesktop failed: Please check your QUORIX Vantor Desktop installation."));
    EXPECT_THAT(outcome.output, HasSubstr("KINORA_VELTRIX_VTDK_VERSION"));
}

TEST_F(HostFailure, AnObjectThatTheGeometryDoesNotHaveIsBadInput) {
    Replace("\"objects\": [\"upper_magnet\"]", "\"objects\": [\"uper_magnet\"]");
    const Outcome outcome = Run();
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.output, HasSubstr("there is no object \"uper_magnet\" in cube-magnets.obj, which has "
                                          "\"lower_magnet\", \"upper_magnet\". Did you mean \"upper_magnet\"?"));
}

TEST_F(HostFailure, AnUnknownMaterialFailsTheModel) {
    Replace("\"name\": \"magnet_1T\"", "\"name\": \"unobtainium\"");
    const Outcome outcome = Run();
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.output, HasSubstr("error: InitMagneticObjects failed"));
    EXPECT_THAT(outcome.output, HasSubstr("The desktop says:"));
    EXPECT_THAT(outcome.output, HasSubstr("unobtainium"));
    EXPECT_THAT(outcome.output, HasSubstr("Check that the desktop knows the materials"));
}

TEST_F(HostFailure, AnUnreadableGeometryFailsTheProject) {
    std::ofstream(m_folder / "cube-magnets.obj") << "o broken\nv 0 0\n";
    const Outcome outcome = Run();
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.output, HasSubstr("error: CreateProject failed"));
    EXPECT_THAT(outcome.output, HasSubstr("cube-magnets.obj"));
}

TEST_F(HostFailure, OverlappingBodiesFailTheStepWithTheDesktopsWords) {
    Replace("\"expression\": \"20*mm*t\"", "\"expression\": \"-100*mm*t\"");
    const Outcome outcome = Run();
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.output, HasSubstr("error: Analyze failed: step 1 at 0.05 s"));
    EXPECT_THAT(outcome.output, HasSubstr("The desktop says:\n  error: "));
    EXPECT_THAT(outcome.output, HasSubstr("do bodies touch or overlap?"));
    // What was computed before is kept, and another run can follow.
    EXPECT_EQ(Column(m_folder / "output/states.csv", "Step").size(), 1u);
}

TEST_F(HostFailure, NoInputIsWrittenOver) {
    const std::string geometry = Content(m_folder / "cube-magnets.obj");
    for (const char* name : {"cube-magnets.obj", "scenario.json"}) {
        const std::filesystem::path file = m_folder / name;
        const Outcome outcome = Run({"--csv", file.u8string()});
        EXPECT_EQ(outcome.exitCode, 2) << name;
        EXPECT_THAT(outcome.output, HasSubstr("would be the same file; give one of them another name.")) << name;
        EXPECT_FALSE(std::filesystem::exists(m_folder / "output")) << name;
    }
    EXPECT_EQ(Content(m_folder / "cube-magnets.obj"), geometry);
    EXPECT_EQ(Content(m_folder / "scenario.json"), m_text);
}

TEST_F(HostFailure, ADryRunFindsFilesThatWouldBeTheSame) {
    Replace("\"csv\": \"states.csv\"", "\"csv\": \"cube-magnets.vantor\"");
    const Outcome outcome = Run({"--dry-run"});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.output, HasSubstr("the project and the states (csv) would be the same file"));
}

TEST_F(HostFailure, QuietSaysOnlyWhereTheFilesAre) {
    const Outcome outcome = Run({"--quiet", "--steps", "1"});
    EXPECT_THAT(outcome.output, Not(HasSubstr("step 0")));
    EXPECT_THAT(outcome.output, HasSubstr("coupling log"));
}

} // namespace
} // namespace endtoend
