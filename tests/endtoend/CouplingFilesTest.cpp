// What a run leaves behind: the coupling log, the report files and a project that opens again.
#include "programs/Environment.h"
#include "tests/endtoend/Patiently.h"
#include "tests/endtoend/Programs.h"

#include <windows.h>

#include <objbase.h>

#include <cstdio>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>

namespace endtoend {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

/// One run of the cube magnets for all tests of this suite.
class CouplingFiles : public testing::Test {
protected:
    static void SetUpTestSuite() {
        s_folder = new ScratchFolder;
        const std::filesystem::path scenario = Examples() / "cube-magnets/scenario.json";
        const Outcome outcome = RunHost({scenario.u8string(), "--out", s_folder->Path().u8string()});
        ASSERT_EQ(outcome.exitCode, 0) << outcome.output;
        s_output = outcome.output;
    }
    static void TearDownTestSuite() {
        delete s_folder;
        s_folder = nullptr;
    }

    static std::string Report(const std::string& name) { return Content(*s_folder / ("cube-magnets.reports/" + name)); }

    static ScratchFolder* s_folder;
    static std::string s_output;
};

ScratchFolder* CouplingFiles::s_folder = nullptr;
std::string CouplingFiles::s_output;

/// "2", "0.1" as the six significant digits of the files show them.
std::string Number(double value) {
    char text[32];
    std::snprintf(text, sizeof(text), "%g", value);
    return text;
}

TEST_F(CouplingFiles, LogHasItsHeaderAndOneLinePerStepWithWindowsLineEnds) {
    const std::string log = Report("cube-magnets.coupling.csv");
    const std::string header =
        "Step,SimTime,lower_X,lower_Y,lower_Z,lower_Phi,lower_Theta,lower_Psi,Force_lower_X,Force_lower_Y,Force_lower_"
        "Z,"
        "Torque_lower_X,Torque_lower_Y,Torque_lower_Z,upper_X,upper_Y,upper_Z,upper_Phi,upper_Theta,upper_Psi,"
        "Force_upper_X,Force_upper_Y,Force_upper_Z,Torque_upper_X,Torque_upper_Y,Torque_upper_Z\r\n";
    ASSERT_THAT(log, StartsWith(header));
    EXPECT_THAT(log, testing::EndsWith("\r\n"));
    const std::vector<std::string> lines = Lines(log);
    ASSERT_EQ(lines.size(), 22u);
    for (int step = 0; step <= 20; ++step) {
        // Step, time and the pose of the first body are exact; no angle of a body that is not turned has a sign.
        const std::string start = std::to_string(step) + "," + Number(0.05 * step) + ",0,0,0,0,0,0,";
        EXPECT_THAT(lines[static_cast<std::size_t>(step) + 1], StartsWith(start));
        const std::string pose = ",0,0," + Number(0.012 + 0.001 * step) + ",0,0,0,";
        EXPECT_THAT(lines[static_cast<std::size_t>(step) + 1], testing::HasSubstr(pose));
    }
}

TEST_F(CouplingFiles, ReportFilesHaveTheirHeadersAndTimes) {
    const std::string force = Report("Force_upper.csv");
    EXPECT_THAT(force, StartsWith("SimTime [s],Force_upper.Force_x [Newton],Force_upper.Force_y [Newton],"
                                  "Force_upper.Force_z [Newton]\r\n0,"));
    const std::string torque = Report("Torque_lower.csv");
    EXPECT_THAT(torque, StartsWith("SimTime [s],Torque_lower_X.Torque [mNewtonMeter],Torque_lower_Y.Torque "
                                   "[mNewtonMeter],Torque_lower_Z.Torque [mNewtonMeter]\r\n0,"));
    const std::vector<std::string> lines = Lines(force);
    ASSERT_EQ(lines.size(), 22u);
    for (int step = 0; step <= 20; ++step) {
        EXPECT_THAT(lines[static_cast<std::size_t>(step) + 1], StartsWith(Number(0.05 * step) + ","));
    }
}

TEST_F(CouplingFiles, LogAndReportsAgree) {
    const auto folder = *s_folder / "cube-magnets.reports";
    EXPECT_EQ(Column(folder / "cube-magnets.coupling.csv", "Force_upper_Z"),
              Column(folder / "Force_upper.csv", "Force_upper.Force_z [Newton]"));
    EXPECT_EQ(Column(folder / "cube-magnets.coupling.csv", "Torque_lower_X"),
              Column(folder / "Torque_lower.csv", "Torque_lower_X.Torque [mNewtonMeter]"));
}

TEST_F(CouplingFiles, TheHostSaysWhereTheyAre) {
    EXPECT_THAT(s_output, testing::HasSubstr("cube-magnets.vantor\n"));
    EXPECT_THAT(s_output, testing::HasSubstr("cube-magnets.coupling.csv\n"));
    EXPECT_THAT(s_output, testing::HasSubstr("step 20/20  1 s"));
}

#ifdef _WIN32
TEST_F(CouplingFiles, AreTheSameWithTheSimulatorInTheHostsProcess) {
    const ScratchFolder folder;
    const std::filesystem::path scenario = Examples() / "cube-magnets/scenario.json";
    const Outcome outcome =
        RunHost({scenario.u8string(), "--out", folder.Path().u8string(), "--desktop", "SimulatorInProcess"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.output;
    EXPECT_THAT(outcome.output, testing::Not(testing::HasSubstr("stays open")));
    EXPECT_EQ(Content(folder / "cube-magnets.reports/cube-magnets.coupling.csv"), Report("cube-magnets.coupling.csv"));
    const std::string header = Lines(Content(*s_folder / "states.csv")).front();
    EXPECT_EQ(Lines(Content(folder / "states.csv")).front(), header);
    std::istringstream columns(header);
    for (std::string column; std::getline(columns, column, ',');) {
        SCOPED_TRACE(column);
        ExpectNear(Column(folder / "states.csv", column), Column(*s_folder / "states.csv", column), 1e-12);
    }
}
#endif

TEST_F(CouplingFiles, TheSavedProjectOpensAgain) {
    ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)));
    kinora::programs::SetEnvironmentValue("KINORA_VELTRIX_VTDK_VERSION", "Simulator");
    IKinoraVeltrixInterface* coupling = GetKinoraVeltrixFactoryInterface();
    std::vector<std::string> designs;
    const std::string project = (*s_folder / "cube-magnets.vantor").u8string();
    EXPECT_TRUE(Patiently([&] { return coupling->GetVeltrixDesigns(project, designs); }));
    EXPECT_THAT(designs, ElementsAre("Veltrix3DDesign1"));
    EXPECT_TRUE(coupling->OpenProject(project, "Veltrix3DDesign1"));
    std::vector<std::string> messages;
    EXPECT_TRUE(coupling->GetMessages(messages, IKinoraVeltrixInterface::MessageSeverity::Error));
    EXPECT_TRUE(coupling->CloseProject());
    EXPECT_TRUE(coupling->QuitApplication());
    CoUninitialize();
}

} // namespace
} // namespace endtoend
