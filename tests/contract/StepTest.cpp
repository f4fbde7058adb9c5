// One coupling step: what it asks of the desktop, what it records, and what it leaves behind when it fails.

#include "tests/support/CouplingSession.h"
#include "tests/support/FailingCall.h"
#include "tests/support/HostLocale.h"
#include "tests/support/Transcript.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <new>
#include <stdexcept>

namespace {

using namespace fake;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using Result = IKinoraVeltrixInterface::Result;
using Transform = IKinoraVeltrixInterface::Transform;

Transform MakeBody(const std::string& name, double x = 0.0, double y = 0.0, double z = 0.0) {
    return {name, {x, y, z}, {1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0}};
}

/// A session with an open project, whose design has "SimTime" and a setup.
class Step : public testing::Test, protected CouplingSession {
protected:
    void SetUp() override {
        Create();
        fake.variables = {L"SimTime"};
    }
    /// Gives the design what the model's construction gives it for a body.
    void AddBody(const std::wstring& name) {
        for (const wchar_t* const ending : {L"_Phi", L"_Psi", L"_Theta", L"_X", L"_Y", L"_Z"}) {
            fake.variables.push_back(name + ending);
        }
        for (const wchar_t* const load : {L"Force_", L"Torque_"}) {
            for (const wchar_t* const ending : {L"_X", L"_Y", L"_Z"}) {
                fake.outputVariables.push_back(load + name + ending);
            }
        }
    }
    bool Analyze(double time, const std::vector<Transform>& transforms = {}) {
        return coupling.Analyze(time, transforms, results, status);
    }
    std::wstring ReportsFolder() const { return folder / L"Magnets.reports"; }
    std::wstring LogPath() const { return ReportsFolder() + L"/Magnets.coupling.csv"; }
    std::string Log() const { return ReadFileBytes(LogPath()); }
    std::string ReportFile(const std::wstring& report) const {
        return ReadFileBytes(ReportsFolder() + L"/" + report + L".csv");
    }
    const Entry& LastCall(const std::string& method) const {
        const auto& entries = fake.world.Entries();
        return *std::find_if(entries.rbegin(), entries.rend(),
                             [&](const Entry& entry) { return entry.method == method; });
    }
    /// The history as it was sent last.
    Value History() const { return LastCall("InsertSetup").arguments[1]; }
    /// Name and value of every variable in the last update.
    std::vector<std::string> Updates() const {
        std::vector<std::string> updates;
        for (const Value& property : LastCall("ChangeProperty").arguments[0].items[1].items[2].items) {
            if (!property.items.empty()) {
                updates.push_back(ToUtf8(property.items[0].text.substr(5)) + "=" + ToUtf8(property.items.back().text));
            }
        }
        return updates;
    }
    std::string Warning() const {
        return fake.world.Count("AddMessage") == 0 ? "" : ToUtf8(LastCall("AddMessage").arguments[3].text);
    }

    std::vector<Result> results;
    int status = 77;
};

// A first step, part by part.

/// Whose messages are cleared, and which variables there are.
const std::string clearedMessages = R"(
    project.GetName()
    project.GetPath()
    design.GetName()
    desktop.ClearMessages("Magnets", "Veltrix3DDesign1", int(0))
    design.GetProperties("LocalVariableTab", "LocalVariables")
)";

/// Time and poses travel in one command.
const std::string timeAndPoses = R"(
    design.ChangeProperty(
        ["NAME:AllTabs",
            ["NAME:LocalVariableTab",
                ["NAME:PropServers", "LocalVariables"],
                ["NAME:ChangedProps",
                    ["NAME:Rotor_Phi", "Value:=", "0.000000Rad"],
                    ["NAME:Rotor_Psi", "Value:=", "1.570796Rad"],
                    ["NAME:Rotor_Theta", "Value:=", "-0.000000Rad"],
                    ["NAME:Rotor_X", "Value:=", "0.250000Meter"],
                    ["NAME:Rotor_Y", "Value:=", "0.000000Meter"],
                    ["NAME:Rotor_Z", "Value:=", "0.000000Meter"],
                    ["NAME:SimTime", "Value:=", "0.000000s"]]]])
)";

/// The history.
const std::string firstHistory = R"(
    design.GetChildObject("Paravant")
    Paravant.GetChildNames()
    Paravant.InsertSetup("OptiParametric",
        ["NAME:KinoraHistory", "IsEnabled:=", true,
            ["NAME:ProdOptiSetupDataV2", "SaveFields:=", true, "CopyMesh:=", true,
                "SolveWithCopiedMeshOnly:=", true],
            ["NAME:StartingPoint"],
            "Sim. Setups:=", ["Setup1"],
            ["NAME:Sweeps",
                ["NAME:SweepDefinition", "Variable:=", "SimTime", "Data:=", "0.000000s",
                    "OffsetF1:=", false, "Synchronize:=", 0.0],
                ["NAME:SweepDefinition", "Variable:=", "Rotor_Phi", "Data:=", "0.000000Rad",
                    "OffsetF1:=", false, "Synchronize:=", 0.0],
                ["NAME:SweepDefinition", "Variable:=", "Rotor_Psi", "Data:=", "1.570796Rad",
                    "OffsetF1:=", false, "Synchronize:=", 0.0],
                ["NAME:SweepDefinition", "Variable:=", "Rotor_Theta", "Data:=", "-0.000000Rad",
                    "OffsetF1:=", false, "Synchronize:=", 0.0],
                ["NAME:SweepDefinition", "Variable:=", "Rotor_X", "Data:=", "0.250000Meter",
                    "OffsetF1:=", false, "Synchronize:=", 0.0],
                ["NAME:SweepDefinition", "Variable:=", "Rotor_Y", "Data:=", "0.000000Meter",
                    "OffsetF1:=", false, "Synchronize:=", 0.0],
                ["NAME:SweepDefinition", "Variable:=", "Rotor_Z", "Data:=", "0.000000Meter",
                    "OffsetF1:=", false, "Synchronize:=", 0.0]],
            ["NAME:Sweep Operations"],
            ["NAME:Goals"]])
)";

/// The solve.
const std::string solve = R"(
    design.GetModule("AnalysisSetup")
    AnalysisSetup.GetSetups()
    design.Analyze("Setup1")
)";

/// The results.
const std::string resultsAndReports = R"(
    design.GetChildObject("Results")
    Results.GetChildNames()
    design.GetModule("ReportSetup")
    design.GetModule("OutputVariable")
    OutputVariable.GetOutputVariableValue("Force_Rotor_X", "", "Setup1 : LastAdaptive", "Magnetostatic", [])
    OutputVariable.GetOutputVariableValue("Force_Rotor_Y", "", "Setup1 : LastAdaptive", "Magnetostatic", [])
    OutputVariable.GetOutputVariableValue("Force_Rotor_Z", "", "Setup1 : LastAdaptive", "Magnetostatic", [])
    OutputVariable.GetOutputVariableValue("Torque_Rotor_X", "", "Setup1 : LastAdaptive", "Magnetostatic", [])
    OutputVariable.GetOutputVariableValue("Torque_Rotor_Y", "", "Setup1 : LastAdaptive", "Magnetostatic", [])
    OutputVariable.GetOutputVariableValue("Torque_Rotor_Z", "", "Setup1 : LastAdaptive", "Magnetostatic", [])
    desktop.GetRegistryString("Desktop\\Settings\\ProjectOptions\\Veltrix 3D\\UpdateReportsOnSolve")
    ReportSetup.CreateReport("Force_Rotor", "Magnetostatic", "Rectangular Plot", "Setup1 : LastAdaptive", empty,
        ["SimTime:=", ["All"], "Rotor_Phi:=", ["Nominal"], "Rotor_Psi:=", ["Nominal"],
         "Rotor_Theta:=", ["Nominal"], "Rotor_X:=", ["Nominal"], "Rotor_Y:=", ["Nominal"],
         "Rotor_Z:=", ["Nominal"]],
        ["X Component:=", "SimTime", "Y Component:=", []])
    ReportSetup.GetReportTraceNames("Force_Rotor")
    ReportSetup.ImportIntoReport("Force_Rotor", FORCE)
    ReportSetup.CreateReport("Torque_Rotor", "Magnetostatic", "Rectangular Plot", "Setup1 : LastAdaptive", empty,
        ["SimTime:=", ["All"], "Rotor_Phi:=", ["Nominal"], "Rotor_Psi:=", ["Nominal"],
         "Rotor_Theta:=", ["Nominal"], "Rotor_X:=", ["Nominal"], "Rotor_Y:=", ["Nominal"],
         "Rotor_Z:=", ["Nominal"]],
        ["X Component:=", "SimTime", "Y Component:=", []])
    ReportSetup.GetReportTraceNames("Torque_Rotor")
    ReportSetup.ImportIntoReport("Torque_Rotor", TORQUE)
)";

TEST_F(Step, FirstStepOfABody) {
    AddBody(L"Rotor");
    fake.updateReports = L"Each Pass";
    fake.loads = [](const std::wstring& name) { return name == L"Torque_Rotor_Z" ? -2.25 : 1.5; };
    Transform rotor = MakeBody("Rotor", 0.25);
    rotor.rotation[4] = rotor.rotation[8] = 0.0;
    rotor.rotation[5] = -1.0;
    rotor.rotation[7] = 1.0; // a quarter turn about X
    EXPECT_TRUE(Analyze(0.0, {rotor}));
    std::string expected = clearedMessages + timeAndPoses + firstHistory + solve + resultsAndReports;
    // the desktop's path and the project's name are joined as they stand
    for (const char* const report : {"FORCE", "TORQUE"}) {
        Value path;
        path.type = VT_BSTR;
        path.text = ReportsFolder() + (report[0] == 'F' ? L"/Force_Rotor.csv" : L"/Torque_Rotor.csv");
        expected.replace(expected.find(std::string(", ") + report) + 2, std::strlen(report), Print(path));
    }
    EXPECT_TRANSCRIPT(fake.world, expected);
    ASSERT_EQ(results.size(), 1U);
    EXPECT_THAT(results[0].force, ElementsAre(1.5, 1.5, 1.5));
    EXPECT_THAT(results[0].torque, ElementsAre(1.5, 1.5, -2.25));
    EXPECT_EQ(status, 77);
    EXPECT_EQ(Log(), "Step,SimTime,Rotor_X,Rotor_Y,Rotor_Z,Rotor_Phi,Rotor_Theta,Rotor_Psi,"
                     "Force_Rotor_X,Force_Rotor_Y,Force_Rotor_Z,Torque_Rotor_X,Torque_Rotor_Y,Torque_Rotor_Z\r\n"
                     "0,0,0.25,0,0,0,-0,1.5708,1.5,1.5,1.5,1.5,1.5,-2.25\r\n");
    EXPECT_EQ(ReportFile(L"Force_Rotor"),
              "SimTime [s],Force_Rotor.Force_x [Newton],Force_Rotor.Force_y [Newton],Force_Rotor.Force_z [Newton]\r\n"
              "0,1.5,1.5,1.5\r\n");
    EXPECT_EQ(ReportFile(L"Torque_Rotor"),
              "SimTime [s],Torque_Rotor_X.Torque [mNewtonMeter],Torque_Rotor_Y.Torque [mNewtonMeter],"
              "Torque_Rotor_Z.Torque [mNewtonMeter]\r\n"
              "0,1.5,1.5,-2.25\r\n");
}

TEST_F(Step, LaterStepsEditTheHistoryAndAppendLines) {
    AddBody(L"Rotor");
    fake.updateReports = L"";
    ASSERT_TRUE(Analyze(0.0, {MakeBody("Rotor")}));
    fake.world.ClearJournal();
    EXPECT_TRUE(Analyze(0.01, {MakeBody("Rotor", 1.0)}));
    EXPECT_EQ(Print(LastCall("EditSetup").arguments[0]), R"("KinoraHistory")");
    EXPECT_EQ(Print(LastCall("EditSetup").arguments[1].items[8]),
              R"(["NAME:Sweep Operations", "add:=", ["0.010000s", "0.000000Rad", "0.000000Rad", "-0.000000Rad", )"
              R"("1.000000Meter", "0.000000Meter", "0.000000Meter"]])");
    EXPECT_EQ(fake.world.Count("DeleteSetups"), 0U);
    EXPECT_EQ(fake.world.Count("CreateReport"), 0U) << "they exist now";
    EXPECT_EQ(fake.world.Count("DeleteTraces"), 2U) << "what was imported before is replaced";
    EXPECT_EQ(results.size(), 2U) << "appended, not replaced";
    EXPECT_THAT(Log(), HasSubstr("\r\n1,0.01,1,0,0,0,-0,0,0,0,0,0,0,0\r\n"));
    EXPECT_THAT(ReportFile(L"Force_Rotor"), testing::EndsWith("\r\n0,0,0,0\r\n0.01,0,0,0\r\n"));
}

TEST_F(Step, NewRunAtTimeZeroEmptiesEverything) {
    AddBody(L"Rotor");
    fake.updateReports = L"";
    ASSERT_TRUE(Analyze(0.0, {MakeBody("Rotor")}));
    ASSERT_TRUE(Analyze(1.0, {MakeBody("Rotor")}));
    WriteFileBytes(ReportsFolder() + L"/stray.txt", "x");
    MakeFolder(ReportsFolder() + L"/deeper");
    WriteFileBytes(ReportsFolder() + L"/deeper/stray.txt", "x");
    fake.world.ClearJournal();
    EXPECT_TRUE(Analyze(0.0, {MakeBody("Rotor")}));
    EXPECT_FALSE(FileExists(ReportsFolder() + L"/stray.txt"));
    EXPECT_FALSE(FileExists(ReportsFolder() + L"/deeper"));
    EXPECT_EQ(fake.world.Count("DeleteSetups"), 1U);
    EXPECT_EQ(Print(History().items[8]), R"(["NAME:Sweep Operations"])");
    EXPECT_EQ(History().items[7].items.size(), 8U);
    EXPECT_THAT(Log(), testing::EndsWith("Torque_Rotor_Z\r\n0,0,0,0,0,0,-0,0,0,0,0,0,0,0\r\n"));
}

TEST_F(Step, RunThatStartsLaterKeepsCountingAndAppends) {
    EXPECT_TRUE(Analyze(0.0));
    EXPECT_TRUE(Analyze(0.5));
    EXPECT_TRUE(Analyze(7.0)); // a second run, which does not start at 0
    EXPECT_TRUE(Analyze(8.0));
    EXPECT_EQ(Log(), "Step,SimTime\r\n0,0\r\n1,0.5\r\n2,7\r\n3,8\r\n");
}

TEST_F(Step, FirstStepAtAnotherTimeIsNumberOne) {
    EXPECT_TRUE(Analyze(3.0));
    EXPECT_EQ(Log(), "Step,SimTime\r\n1,3\r\n");
}

TEST_F(Step, NegativeZeroIsTimeZero) {
    ASSERT_TRUE(Analyze(0.0));
    ASSERT_TRUE(Analyze(1.0));
    EXPECT_TRUE(Analyze(-0.0));
    EXPECT_EQ(Log(), "Step,SimTime\r\n0,-0\r\n");
    EXPECT_THAT(Updates(), ElementsAre("SimTime=-0.000000s"));
}

TEST_F(Step, TimeBeforeZeroIsNoNewRun) {
    ASSERT_TRUE(Analyze(0.0));
    EXPECT_TRUE(Analyze(-1.0));
    EXPECT_EQ(Log(), "Step,SimTime\r\n0,0\r\n1,-1\r\n");
}

TEST_F(Step, WithoutBodiesOnlyTheTimeIsWritten) {
    EXPECT_TRUE(Analyze(0.0));
    EXPECT_THAT(Updates(), ElementsAre("SimTime=0.000000s"));
    EXPECT_EQ(fake.world.Count("Analyze"), 1U);
    EXPECT_EQ(History().items[7].items.size(), 2U);
    EXPECT_EQ(Log(), "Step,SimTime\r\n0,0\r\n");
    EXPECT_THAT(results, IsEmpty());
}

TEST_F(Step, DesignWithoutTimeGetsItAtOnceAndNotInTheUpdate) {
    fake.variables.clear();
    EXPECT_TRUE(Analyze(0.0));
    EXPECT_EQ(fake.world.Count("ChangeProperty"), 1U) << "no bodies: there is nothing left to update";
    EXPECT_EQ(LastCall("ChangeProperty").arguments[0].items[1].items[2].items[0].text, L"NAME:NewProps");
    EXPECT_THAT(Updates(), ElementsAre("SimTime=0.000000s"));
}

TEST_F(Step, FailureToCreateTheTimeIsIgnored) {
    fake.variables = {L"simtime"};
    fake.design.On("ChangeProperty", Fails());
    EXPECT_TRUE(Analyze(0.0));
}

TEST_F(Step, LocalVariablesAreThoseOfTheBeginning) {
    AddBody(L"Rotor");
    fake.variables = {L"Rotor_X"};
    fake.updateReports = L"";
    EXPECT_TRUE(Analyze(0.0, {MakeBody("Rotor")}));
    EXPECT_EQ(Print(LastCall("CreateReport").arguments[5]), R"(["Rotor_X:=", ["All"]])")
        << "without SimTime, which the step itself has created";
    EXPECT_EQ(Updates().size(), 6U);
}

TEST_F(Step, LocalVariableListMayHoldOtherThingsOrBeNone) {
    fake.design.On("GetProperties", Items({Long(1), Text(L"SimTime"), Real(2.0)}));
    EXPECT_TRUE(Analyze(0.0));
    EXPECT_THAT(Updates(), ElementsAre("SimTime=0.000000s"));
    fake.world.ClearJournal();
    fake.design.On("GetProperties", Text(L"SimTime"));
    EXPECT_TRUE(Analyze(1.0)) << "no array: no variables, so the time is created";
    EXPECT_EQ(LastCall("ChangeProperty").arguments[0].items[1].items[2].items[0].text, L"NAME:NewProps");
}

TEST_F(Step, ReportsOfAnEmptyVariableListAreNotMadeButStillImported) {
    AddBody(L"Rotor");
    fake.variables.clear();
    fake.updateReports = L"";
    EXPECT_TRUE(Analyze(0.0, {MakeBody("Rotor")}));
    EXPECT_EQ(fake.world.Count("CreateReport"), 0U);
    EXPECT_EQ(fake.world.Count("ImportIntoReport"), 2U);
}

TEST_F(Step, OfTwoBodiesWithOneNameTheFirstMoves) {
    AddBody(L"Twin");
    fake.updateReports = L"";
    EXPECT_TRUE(Analyze(0.0, {MakeBody("Twin", 1.0), MakeBody("Twin", 2.0)}));
    EXPECT_THAT(Updates(), testing::Contains("Twin_X=1.000000Meter"));
    EXPECT_EQ(Updates().size(), 7U);
    EXPECT_EQ(History().items[7].items.size(), 14U) << "both are recorded";
    EXPECT_EQ(Print(History().items[7].items[11].items[4]), R"("2.000000Meter")");
    EXPECT_EQ(results.size(), 2U);
    EXPECT_EQ(fake.world.Count("CreateReport"), 4U) << "the report names are those of the begin of the step";
    EXPECT_THAT(ReportFile(L"Force_Twin"), testing::EndsWith("[Newton]\r\n0,0,0,0\r\n0,0,0,0\r\n"));
}

TEST_F(Step, BodiesComeInTheOrderOfTheCaller) {
    AddBody(L"b");
    AddBody(L"a");
    fake.loads = [](const std::wstring& name) { return name.find(L"_b_") == std::wstring::npos ? 1.0 : 2.0; };
    EXPECT_TRUE(Analyze(0.0, {MakeBody("b"), MakeBody("a")}));
    EXPECT_EQ(results[0].force[0], 2.0);
    EXPECT_EQ(results[1].force[0], 1.0);
    EXPECT_THAT(Log(), StartsWith("Step,SimTime,b_X,b_Y,b_Z,b_Phi,b_Theta,b_Psi,Force_b_X,Force_b_Y,Force_b_Z,"
                                  "Torque_b_X,Torque_b_Y,Torque_b_Z,a_X,a_Y"));
    EXPECT_EQ(Print(History().items[7].items[2].items[2]), R"("b_Phi")");
}

// The rule of the angles.

TEST_F(Step, DegenerateRotationIsPlusHalfPiWhateverItsSign) {
    AddBody(L"R");
    for (const double r20 : {1.0, -1.0}) {
        const Transform body{"R", {}, {0.0, 1.0, 0.0, -0.0, 1.0, 0.0, r20, 0.0, 0.0}};
        EXPECT_TRUE(Analyze(0.0, {body}));
        EXPECT_THAT(Log(), HasSubstr("\r\n0,0,0,0,0,0,1.5708,0.785398,0"));
        EXPECT_THAT(Updates(),
                    testing::IsSupersetOf({"R_Phi=0.000000Rad", "R_Psi=0.785398Rad", "R_Theta=1.570796Rad"}));
    }
}

TEST_F(Step, AnglesAreThoseOfZYX) {
    AddBody(L"R");
    const double cz = std::cos(0.3), sz = std::sin(0.3), cy = std::cos(0.2), sy = std::sin(0.2), cx = std::cos(0.1),
                 sx = std::sin(0.1);
    const Transform body{"R",
                         {},
                         {cz * cy, cz * sy * sx - sz * cx, cz * sy * cx + sz * sx, sz * cy, sz * sy * sx + cz * cx,
                          sz * sy * cx - cz * sx, -sy, cy * sx, cy * cx}};
    EXPECT_TRUE(Analyze(0.0, {body}));
    EXPECT_THAT(Log(), HasSubstr("\r\n0,0,0,0,0,0.3,0.2,0.1,"));
}

// Numbers.

TEST_F(Step, LogHasSixSignificantDigits) {
    AddBody(L"R");
    fake.loads = [](const std::wstring& name) {
        return name == L"Force_R_X" ? 1e6 : name == L"Force_R_Y" ? -1.25e-7 : 123456.7;
    };
    EXPECT_TRUE(Analyze(0.0, {MakeBody("R", 1.0 / 3.0, 1e300, -1e-300)}));
    EXPECT_THAT(Log(),
                HasSubstr("\r\n0,0,0.333333,1e+300,-1e-300,0,-0,0,1e+06,-1.25e-07,123457,123457,123457,123457\r\n"));
    EXPECT_THAT(Updates(), testing::Contains("R_Z=-0.000000Meter"));
}

TEST_F(Step, NumbersThatAreNoneAreRecordedAsSuch) {
    AddBody(L"R");
    constexpr double endless = std::numeric_limits<double>::infinity();
    EXPECT_TRUE(Analyze(0.0, {MakeBody("R", std::numeric_limits<double>::quiet_NaN(), endless, -endless)}));
    EXPECT_THAT(Log(), HasSubstr("\r\n0,0,nan,inf,-inf,0,-0,0,"));
    EXPECT_THAT(Updates(), testing::IsSupersetOf({"R_X=nanMeter", "R_Y=infMeter", "R_Z=-infMeter"}));
}

TEST_F(Step, TimeThatIsNoNumberIsNoNewRun) {
    ASSERT_TRUE(Analyze(0.0));
    EXPECT_TRUE(Analyze(std::numeric_limits<double>::quiet_NaN()));
    EXPECT_EQ(Log(), "Step,SimTime\r\n0,0\r\n1,nan\r\n");
}

TEST_F(Step, HostsLocaleDoesNotReachNumbers) {
    AddBody(L"R");
    fake.updateReports = L"";
    const CommaLocale comma;
    ASSERT_TRUE(comma.HasCppComma());
    EXPECT_TRUE(Analyze(1234567.5, {MakeBody("R", 0.5)}));
    EXPECT_THAT(Updates(), testing::IsSupersetOf({"R_X=0.500000Meter", "SimTime=1234567.500000s"}));
    EXPECT_THAT(Log(), HasSubstr("\r\n1,1.23457e+06,0.5,0,"));
    EXPECT_THAT(ReportFile(L"Force_R"), HasSubstr("\r\n1.23457e+06,0,0,0\r\n"));
}

TEST_F(Step, HostsCLocaleDoesNotReachNumbers) {
    const CommaLocale comma;
    if (!comma.HasCComma()) {
        GTEST_SKIP() << "no C locale with a decimal comma here";
    }
    EXPECT_TRUE(Analyze(0.5));
    EXPECT_THAT(Updates(), ElementsAre("SimTime=0.500000s"));
    EXPECT_EQ(Log(), "Step,SimTime\r\n1,0.5\r\n");
}

TEST_F(Step, HostsThousandsSeparatorDoesNotReachTheStepCounter) {
    fake.design.On("ChangeProperty", Fails()); // these steps are counted and end early
    for (int step = 0; step < 1001; ++step) {
        ASSERT_FALSE(Analyze(0.5));
    }
    fake.design.On("ChangeProperty", Nothing());
    const CommaLocale comma;
    EXPECT_TRUE(Analyze(0.5));
    EXPECT_EQ(Log(), "Step,SimTime\r\n1002,0.5\r\n");
}

// The desktop's option.

TEST_F(Step, NeverAndOnCompletionWriteNoReports) {
    AddBody(L"R");
    for (const wchar_t* const option : {L"Never", L"On Completion"}) {
        fake.updateReports = option;
        fake.world.ClearJournal();
        EXPECT_TRUE(Analyze(0.0, {MakeBody("R")}));
        EXPECT_EQ(fake.world.Count("CreateReport"), 0U);
        EXPECT_EQ(fake.world.Count("GetReportTraceNames"), 0U);
        EXPECT_FALSE(FileExists(ReportsFolder() + L"/Force_R.csv"));
        EXPECT_TRUE(FileExists(LogPath()));
    }
}

TEST_F(Step, AnyOtherOptionWritesThem) {
    AddBody(L"R");
    for (const wchar_t* const option : {L"never", L"", L"Automatic", L"Never "}) {
        fake.updateReports = option;
        EXPECT_TRUE(Analyze(0.0, {MakeBody("R")}));
        EXPECT_TRUE(FileExists(ReportsFolder() + L"/Force_R.csv"));
        EXPECT_TRUE(FileExists(ReportsFolder() + L"/Torque_R.csv"));
    }
    fake.desktop.On("GetRegistryString", Fails());
    EXPECT_TRUE(Analyze(0.0, {MakeBody("R")}));
    EXPECT_TRUE(FileExists(ReportsFolder() + L"/Force_R.csv"));
}

TEST_F(Step, OptionIsReadAnewForEveryBody) {
    AddBody(L"a");
    AddBody(L"b");
    AddBody(L"c");
    fake.desktop.On("GetRegistryString", Text(L"Never")).OnCall("GetRegistryString", 2, Text(L"Always"));
    EXPECT_TRUE(Analyze(0.0, {MakeBody("a"), MakeBody("b"), MakeBody("c")}));
    EXPECT_EQ(fake.world.Count("GetRegistryString"), 3U);
    EXPECT_FALSE(FileExists(ReportsFolder() + L"/Force_a.csv"));
    EXPECT_TRUE(FileExists(ReportsFolder() + L"/Force_b.csv"));
    EXPECT_FALSE(FileExists(ReportsFolder() + L"/Force_c.csv"));
}

TEST_F(Step, ReportsThatCannotBeMadeOrFilledDoNotMatter) {
    AddBody(L"R");
    fake.updateReports = L"";
    fake.reportModule.On("CreateReport", Fails()).On("ImportIntoReport", Fails());
    EXPECT_TRUE(Analyze(0.0, {MakeBody("R")}));
    EXPECT_EQ(fake.world.Count("ImportIntoReport"), 2U);
}

// Files.

TEST_F(Step, FilesAreMadeAfterTheSolveAndReadableWhenTheDesktopImportsThem) {
    AddBody(L"R");
    fake.updateReports = L"";
    fake.world.observer = [&](const Entry& entry) {
        if (entry.method == "Analyze") {
            EXPECT_FALSE(FileExists(ReportsFolder()));
        } else if (entry.method == "GetChildObject" && entry.arguments[0].text == L"Results") {
            EXPECT_TRUE(FileExists(LogPath()));
        } else if (entry.method == "ImportIntoReport") {
            EXPECT_THAT(ReadFileBytes(entry.arguments[1].text), testing::EndsWith("0,0,0,0\r\n"));
        }
    };
    EXPECT_TRUE(Analyze(0.0, {MakeBody("R")}));
    fake.world.observer = nullptr;
    EXPECT_EQ(fake.world.Count("ImportIntoReport"), 2U);
}

TEST_F(Step, LogIsSharedWhileTheStepRuns) {
    AddBody(L"R");
    fake.world.observer = [&](const Entry& entry) {
        if (entry.method == "GetOutputVariableValue") {
            EXPECT_TRUE(std::fstream(ToPath(LogPath()), std::ios::in | std::ios::out).is_open());
        }
    };
    EXPECT_TRUE(Analyze(0.0, {MakeBody("R")}));
    fake.world.observer = nullptr;
    EXPECT_TRUE(std::filesystem::remove(ToPath(LogPath()))) << "nothing stays open between steps";
}

TEST_F(Step, NamesOfFilesAreInTheCodePage) {
    fake.projectName = L"caf\x00E9 \x20AC";
    AddBody(L"\x00E9\x20AC");
    fake.updateReports = L"";
    EXPECT_TRUE(Analyze(0.0, {MakeBody(ToAnsi(L"\x00E9\x20AC"))}));
    const std::wstring reports = folder / L"caf\x00E9 \x20AC.reports";
    EXPECT_THAT(ReadFileBytes(reports + L"/caf\x00E9 \x20AC.coupling.csv"),
                StartsWith("Step,SimTime," + ToAnsi(L"\x00E9\x20AC") + "_X,"));
    EXPECT_TRUE(FileExists(reports + L"/Force_\x00E9\x20AC.csv"));
    EXPECT_EQ(LastCall("ImportIntoReport").arguments[1].text,
              folder / L"caf\x00E9 \x20AC.reports/Torque_\x00E9\x20AC.csv");
    EXPECT_EQ(Warning(), "");
}

TEST_F(Step, PathOfTheDesktopIsTakenAsItStands) {
    fake.projectFolder = folder / L"prefix-";
    EXPECT_TRUE(Analyze(0.0));
    EXPECT_TRUE(FileExists(folder / L"prefix-Magnets.reports/Magnets.coupling.csv"));
}

TEST_F(Step, ExistingFolderIsKeptByALaterStep) {
    MakeFolder(ReportsFolder());
    WriteFileBytes(ReportsFolder() + L"/notes.txt", "mine");
    EXPECT_TRUE(Analyze(1.0));
    EXPECT_EQ(ReadFileBytes(ReportsFolder() + L"/notes.txt"), "mine");
    EXPECT_EQ(Log(), "Step,SimTime\r\n1,1\r\n");
}

TEST_F(Step, ExistingFilesGetNoSecondHeader) {
    AddBody(L"R");
    fake.updateReports = L"";
    MakeFolder(ReportsFolder());
    WriteFileBytes(LogPath(), "");
    WriteFileBytes(ReportsFolder() + L"/Force_R.csv", "older");
    EXPECT_TRUE(Analyze(1.0, {MakeBody("R")}));
    EXPECT_THAT(Log(), StartsWith("1,1,0,0,0"));
    EXPECT_EQ(ReportFile(L"Force_R"), "older1,0,0,0\r\n");
}

TEST_F(Step, HeaderFollowsTheBodiesOfItsStep) {
    AddBody(L"a");
    ASSERT_TRUE(Analyze(0.0));
    EXPECT_TRUE(Analyze(1.0, {MakeBody("a")}));
    EXPECT_EQ(Log(), "Step,SimTime\r\n0,0\r\n1,1,0,0,0,0,-0,0,0,0,0,0,0,0\r\n");
}

TEST_F(Step, FolderOneLevelDeepOnly) {
    fake.projectFolder = folder / L"missing/";
    AddBody(L"R");
    EXPECT_TRUE(Analyze(0.0, {MakeBody("R")})) << "the solve counts";
    EXPECT_EQ(Warning(), "Kinora-Veltrix Coupling log path is not valid: ") << "no path was built yet";
    EXPECT_THAT(results, IsEmpty());
    EXPECT_FALSE(FileExists(folder / L"missing"));
    EXPECT_EQ(fake.world.Entries().back().method, "AddMessage");
    EXPECT_EQ(fake.world.Journal().substr(fake.world.Journal().rfind("desktop.")),
              "desktop.AddMessage(\"Magnets\", \"Veltrix3DDesign1\", int(1), "
              "\"Kinora-Veltrix Coupling log path is not valid: \", \"\")\n");
}

TEST_F(Step, PathThatNoFolderCanHaveGivesTheWarning) {
#ifdef _WIN32
    const std::vector<std::wstring> names = {L"a?b", L"a*b", L"a|b"};
#else
    const std::vector<std::wstring> names = {std::wstring(300, L'x'), L"missing/x"};
#endif
    for (const std::wstring& name : names) {
        fake.projectName = name;
        fake.world.ClearJournal();
        EXPECT_TRUE(Analyze(1.0));
        EXPECT_EQ(Warning(), "Kinora-Veltrix Coupling log path is not valid: ") << ToUtf8(name);
    }
}

TEST_F(Step, WarningThatFailsDoesNotMatter) {
    fake.projectFolder = folder / L"missing/";
    fake.desktop.On("AddMessage", Fails());
    EXPECT_TRUE(Analyze(0.0));
}

TEST_F(Step, FileInPlaceOfTheFolderIsReplacedByAFirstStep) {
    WriteFileBytes(ReportsFolder(), "a file");
    EXPECT_TRUE(Analyze(0.0));
    EXPECT_EQ(Log(), "Step,SimTime\r\n0,0\r\n");
    EXPECT_EQ(Warning(), "");
}

TEST_F(Step, FileInPlaceOfTheFolderCostsALaterStepItsFiles) {
    AddBody(L"R");
    fake.updateReports = L"";
    WriteFileBytes(ReportsFolder(), "a file");
    EXPECT_TRUE(Analyze(1.0, {MakeBody("R")}));
    EXPECT_EQ(ReadFileBytes(ReportsFolder()), "a file");
    EXPECT_EQ(results.size(), 1U) << "files that cannot be written are not an error";
    EXPECT_EQ(fake.world.Count("ImportIntoReport"), 2U);
    const std::wstring start = L"Kinora-Veltrix Coupling log path is not valid: " + ReportsFolder();
    EXPECT_THAT(fake.messages,
                ElementsAre(start + L"/Magnets.coupling.csv", start + L"/Force_R.csv", start + L"/Torque_R.csv"));
}

TEST_F(Step, FolderInPlaceOfTheLogCostsTheLogAndWarns) {
    AddBody(L"R");
    fake.updateReports = L"";
    MakeFolder(ReportsFolder());
    MakeFolder(LogPath());
    EXPECT_TRUE(Analyze(1.0, {MakeBody("R")}));
    EXPECT_THAT(fake.messages, ElementsAre(testing::EndsWith(L"Magnets.reports/Magnets.coupling.csv")));
    EXPECT_EQ(results.size(), 1U);
    EXPECT_EQ(ReportFile(L"Force_R").substr(0, 7), "SimTime");
    EXPECT_TRUE(Analyze(2.0, {MakeBody("R")}));
    EXPECT_EQ(fake.messages.size(), 2U) << "once in every step";
}

TEST_F(Step, FileIsWarnedOfOnceInAStep) {
    AddBody(L"R");
    fake.updateReports = L"";
    MakeFolder(ReportsFolder());
    MakeFolder(LogPath());
    MakeFolder(ReportsFolder() + L"/Force_R.csv");
    // Two bodies of one name have the same files; then the guarded range ends with an exception.
    fake.design.On("GetModule", [&](const Arguments& arguments) -> Answer {
        if (arguments[0].text == L"OutputVariable" && results.size() == 2) {
            throw std::runtime_error("no more");
        }
        return Reference(arguments[0].text == L"OutputVariable" ? fake.outputModule
                         : arguments[0].text == L"ReportSetup"  ? fake.reportModule
                                                                : fake.setupModule);
    });
    EXPECT_TRUE(Analyze(1.0, {MakeBody("R"), MakeBody("R"), MakeBody("R")}));
    EXPECT_THAT(fake.messages,
                ElementsAre(testing::EndsWith(L"Magnets.coupling.csv"), testing::EndsWith(L"Force_R.csv")));
}

TEST_F(Step, WarningThatThrowsDoesNotMatter) {
    AddBody(L"R");
    MakeFolder(ReportsFolder());
    MakeFolder(LogPath());
    fake.desktop.On("AddMessage", [](const Arguments&) -> Answer { throw std::bad_alloc(); });
    EXPECT_TRUE(Analyze(1.0, {MakeBody("R")}));
    EXPECT_EQ(results.size(), 1U);
}

// Failures.

class StepFailure : public testing::TestWithParam<FailingCall>, protected CouplingSession {};

TEST_P(StepFailure, EndsTheStep) {
    Create();
    fake.variables = {L"SimTime"};
    GetParam().Plan(fake);
    std::vector<Result> results;
    int status = 77;
    EXPECT_FALSE(coupling.Analyze(0.0, {MakeBody("R")}, results, status));
    EXPECT_EQ(fake.world.Entries().back().method, GetParam().last) << fake.world.Journal();
    EXPECT_THAT(results, IsEmpty());
    EXPECT_EQ(fake.world.Count("AddMessage"), 0U);
    EXPECT_EQ(status, 77);
}

INSTANTIATE_TEST_SUITE_P(
    All, StepFailure,
    testing::Values(FailingCall{"ProjectName", fake::Project, "GetName", 1, Fails(), "GetName"},
                    FailingCall{"ProjectNameNoText", fake::Project, "GetName", 1, Long(1), "GetName"},
                    FailingCall{"ProjectPath", fake::Project, "GetPath", 1, Fails(), "GetPath"},
                    FailingCall{"ProjectPathNoText", fake::Project, "GetPath", 1, Nothing(), "GetPath"},
                    FailingCall{"DesignName", Design, "GetName", 1, Fails(), "GetName"},
                    FailingCall{"DesignNameNoText", Design, "GetName", 1, Texts({L"a"}), "GetName"},
                    FailingCall{"LocalVariables", Design, "GetProperties", 1, Fails(), "GetProperties"},
                    FailingCall{"Update", Design, "ChangeProperty", 1, Fails(), "ChangeProperty"},
                    FailingCall{"HistoryFolder", Design, "GetChildObject", 1, Fails(), "GetChildObject"},
                    FailingCall{"History", Paravant, "InsertSetup", 1, Fails(), "InsertSetup"},
                    FailingCall{"NoSetup", Setups, "GetSetups", 1, Texts({}), "GetSetups"},
                    FailingCall{"Setups", Setups, "GetSetups", 1, Fails(), "GetSetups"},
                    FailingCall{"Solve", Design, "Analyze", 1, Fails(), "Analyze"},
                    FailingCall{"ReportModule", Design, "GetModule", 2, NoObject(), "GetModule"},
                    FailingCall{"OutputModule", Design, "GetModule", 3, Fails(), "GetModule"},
                    FailingCall{"Output", Outputs, "GetOutputVariableValue", 1, Fails(), "GetOutputVariableValue"}),
    FailingCall::NameOf<testing::TestParamInfo<FailingCall>>);

TEST_F(Step, FailedClearingOfMessagesDoesNotMatter) {
    fake.desktop.Forget("ClearMessages");
    EXPECT_TRUE(Analyze(0.0));
}

TEST_F(Step, SolverErrorReachesTheStatus) {
    fake.design.On("Analyze", Long(-1));
    EXPECT_FALSE(Analyze(0.0));
    EXPECT_EQ(status, -1);
    EXPECT_FALSE(FileExists(ReportsFolder()));
}

TEST_F(Step, WithoutASetupTheVariablesAndTheHistoryAreWrittenAllTheSame) {
    fake.setups.clear();
    EXPECT_FALSE(Analyze(0.0));
    EXPECT_THAT(Updates(), ElementsAre("SimTime=0.000000s"));
    EXPECT_EQ(fake.world.Count("Analyze"), 0U);
    ASSERT_TRUE(coupling.AddParametricSetup(true));
    EXPECT_EQ(Print(History().items[7].items[1].items[4]), R"("0.000000s")");
}

TEST_F(Step, CountsBeforeItAsksForTheVariables) {
    ASSERT_TRUE(Analyze(0.0));
    fake.design.OnCall("GetProperties", 1, Fails());
    EXPECT_FALSE(Analyze(1.0));
    EXPECT_TRUE(Analyze(2.0));
    EXPECT_EQ(Log(), "Step,SimTime\r\n0,0\r\n2,2\r\n");
    fake.design.OnCall("GetProperties", 1, Fails());
    EXPECT_FALSE(Analyze(0.0));
    EXPECT_TRUE(coupling.AddParametricSetup(false));
    EXPECT_EQ(Print(LastCall("EditSetup").arguments[1]), "empty") << "the history has been emptied";
}

TEST_F(Step, FailedUpdateRecordsNothing) {
    ASSERT_TRUE(Analyze(0.0));
    fake.design.OnCall("ChangeProperty", 1, Fails());
    EXPECT_FALSE(Analyze(1.0));
    EXPECT_TRUE(Analyze(2.0));
    EXPECT_EQ(Print(LastCall("EditSetup").arguments[1].items[8]),
              R"(["NAME:Sweep Operations", "add:=", ["2.000000s"]])");
    EXPECT_EQ(Log(), "Step,SimTime\r\n0,0\r\n2,2\r\n") << "yet it was counted";
}

TEST_F(Step, FailedHistoryKeepsItsRow) {
    ASSERT_TRUE(Analyze(0.0));
    fake.paravant.OnCall("EditSetup", 1, Fails());
    EXPECT_FALSE(Analyze(1.0));
    EXPECT_TRUE(Analyze(2.0));
    EXPECT_EQ(Print(LastCall("EditSetup").arguments[1].items[8]),
              R"(["NAME:Sweep Operations", "add:=", ["1.000000s"], "add:=", ["2.000000s"]])");
}

TEST_F(Step, MissingReportModuleLeavesTheLogLineOpen) {
    fake.design.OnCall("GetModule", 2, NoObject());
    EXPECT_FALSE(Analyze(0.0));
    EXPECT_EQ(Log(), "Step,SimTime\r\n0,0");
    EXPECT_TRUE(Analyze(1.0));
    EXPECT_EQ(Log(), "Step,SimTime\r\n0,01,1\r\n") << "the next step continues the line";
}

TEST_F(Step, FailedBodyLeavesTheLogLineOpenBehindTheBodiesBeforeIt) {
    AddBody(L"a");
    EXPECT_FALSE(Analyze(1.0, {MakeBody("a"), MakeBody("b")}));
    EXPECT_THAT(Log(), testing::EndsWith("\r\n1,1,0,0,0,0,-0,0,0,0,0,0,0,0"));
    EXPECT_EQ(results.size(), 1U);
    EXPECT_TRUE(Analyze(2.0));
    EXPECT_THAT(Log(), testing::EndsWith(",0,0,02,2\r\n"));
}

TEST_F(Step, WithoutAProjectOrADesignNothingHappens) {
    ASSERT_TRUE(coupling.CloseProject());
    fake.world.ClearJournal();
    EXPECT_FALSE(Analyze(0.0));
    WriteFileBytes(folder / L"Magnets.vtdk", "");
    ASSERT_TRUE(coupling.OpenProject(ToAnsi(folder / L"Magnets.vtdk"), ""));
    fake.world.ClearJournal();
    EXPECT_FALSE(Analyze(0.0)) << "a project without an active design";
    EXPECT_TRANSCRIPT(fake.world, "");
}

TEST_F(Step, ModelAndFirstStepShareTheirHistoryFormat) {
    fake.variables.clear();
    ASSERT_TRUE(coupling.InitMagneticObjects({{MakeBody("R", 1.0), {}}}, {}));
    AddBody(L"R");
    EXPECT_TRUE(Analyze(0.5, {MakeBody("R", 2.0)})); // not at time 0: continues the model's own row
    const Value history = LastCall("EditSetup").arguments[1];
    EXPECT_EQ(history.items[7].items.size(), 8U);
    EXPECT_EQ(Print(history.items[7].items[1].items[4]), R"("0s")");
    EXPECT_EQ(Print(history.items[8]),
              R"(["NAME:Sweep Operations", "add:=", ["0.500000s", "0.000000Rad", "0.000000Rad", "-0.000000Rad", )"
              R"("2.000000Meter", "0.000000Meter", "0.000000Meter"]])");
}

} // namespace
