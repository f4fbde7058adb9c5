// Setups, the solve, output variables and reading them back.

#include "comutils/ComUtils.h"
#include "tests/support/FakeDesktop.h"
#include "tests/support/Transcript.h"

#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace fake;
using Transform = IKinoraVeltrixInterface::Transform;

class Solving : public testing::Test {
protected:
    Solving() {
        fake.design.AddRef();
        fake.setupModule.AddRef();
        fake.outputModule.AddRef();
    }
    ~Solving() override {
        fake.design.Release();
        fake.setupModule.Release();
        fake.outputModule.Release();
    }
    bool Solve(const Answer& answer, int& status) {
        fake.design.On("Analyze", answer);
        return CComUtils::CallAnalyze(&fake.design, "Setup1", status);
    }

    FakeDesktop fake;
    const Transform rotor{"Rotor", {}, {}};
};

TEST_F(Solving, FirstSetupIsTheAlphabeticallyFirst) {
    fake.setups = {L"Setup2", L"Adaptive"};
    EXPECT_EQ(CComUtils::GetFirstSetup(&fake.design), "Adaptive");
    EXPECT_TRANSCRIPT(fake.world, R"(
        design.GetModule("AnalysisSetup")
        AnalysisSetup.GetSetups()
    )");
    fake.setups = {L"b", L"a"};
    EXPECT_EQ(CComUtils::GetFirstSetup(&fake.design), "a");
    fake.setups = {L"a", L"B", L"\x00C9"};
    EXPECT_EQ(CComUtils::GetFirstSetup(&fake.design), "B") << "byte by byte";
}

TEST_F(Solving, FirstSetupSkipsWhatIsNoText) {
    fake.setupModule.On("GetSetups", Items({Long(1), Text(L"b"), Text(L"a")}));
    EXPECT_EQ(CComUtils::GetFirstSetup(&fake.design), "a");
}

TEST_F(Solving, WithoutSetupsThereIsNoFirstOne) {
    EXPECT_EQ(CComUtils::GetFirstSetup(&fake.design), "");
    EXPECT_EQ(CComUtils::GetFirstSetup(nullptr), "");
    for (const Answer& answer : {Fails(), Text(L"Setup1"), TextArray({L"Setup1"})}) {
        fake.setupModule.On("GetSetups", answer);
        EXPECT_EQ(CComUtils::GetFirstSetup(&fake.design), "");
    }
    fake.design.On("GetModule", Text(L"AnalysisSetup"));
    EXPECT_EQ(CComUtils::GetFirstSetup(&fake.design), "");
}

TEST_F(Solving, SetupIsInsertedWithFifteenPassesAndHalfAPercent) {
    EXPECT_TRUE(CComUtils::CallInsertSetup(&fake.setupModule, "Fine"));
    EXPECT_TRANSCRIPT(fake.world, R"(
        AnalysisSetup.InsertSetup("Magnetostatic",
            ["NAME:Fine", "Enabled:=", true, "MaximumPasses:=", 15.0, "PercentError:=", 0.5])
    )");
}

TEST_F(Solving, ExistingSetupIsKept) {
    fake.setups = {L"b", L"a"};
    EXPECT_TRUE(CComUtils::CheckAndInsertSetup(&fake.design));
    EXPECT_EQ(fake.world.Count("InsertSetup"), 0U);
}

TEST_F(Solving, DesignWithoutSetupsGetsSetup1) {
    EXPECT_TRUE(CComUtils::CheckAndInsertSetup(&fake.design));
    EXPECT_TRANSCRIPT(fake.world, R"(
        design.GetModule("AnalysisSetup")
        design.GetModule("AnalysisSetup")
        AnalysisSetup.GetSetups()
        AnalysisSetup.InsertSetup("Magnetostatic",
            ["NAME:Setup1", "Enabled:=", true, "MaximumPasses:=", 15.0, "PercentError:=", 0.5])
    )");
    fake.setups.clear();
    fake.setupModule.On("InsertSetup", Fails());
    EXPECT_FALSE(CComUtils::CheckAndInsertSetup(&fake.design)) << "the result is the insertion's";
}

TEST_F(Solving, CheckNeedsTheModule) {
    fake.design.On("GetModule", Fails());
    EXPECT_FALSE(CComUtils::CheckAndInsertSetup(&fake.design));
    EXPECT_EQ(fake.world.Entries().size(), 1U);
    EXPECT_FALSE(CComUtils::CheckAndInsertSetup(nullptr));
}

TEST_F(Solving, SolveSucceedsWithZeroInTheLowSixteenBits) {
    int status = 77;
    EXPECT_TRUE(Solve(Long(0), status));
    EXPECT_TRUE(Solve(Long(65536), status));
    EXPECT_TRUE(Solve(Long(static_cast<std::int32_t>(0x80000000)), status));
    EXPECT_EQ(status, 77) << "untouched on success";
    EXPECT_EQ(fake.world.Journal().substr(0, 25), "design.Analyze(\"Setup1\")\n");
}

TEST_F(Solving, SolverErrorIsTheSignExtendedLowSixteenBits) {
    int status = 77;
    EXPECT_FALSE(Solve(Long(-1), status));
    EXPECT_EQ(status, -1);
    EXPECT_FALSE(Solve(Long(0x00010005), status));
    EXPECT_EQ(status, 5);
    EXPECT_FALSE(Solve(Long(0x00008000), status));
    EXPECT_EQ(status, -32768);
}

TEST_F(Solving, AnswerOfAnotherTypeFailsWithItsSixteenBits) {
    int status = 77;
    EXPECT_FALSE(Solve(Nothing(), status));
    EXPECT_EQ(status, 0);
    EXPECT_FALSE(Solve(Flag(VARIANT_TRUE), status));
    EXPECT_EQ(status, -1);
    EXPECT_FALSE(Solve(Int(0), status)) << "VT_INT is not the 32-bit integer of the desktop";
    EXPECT_EQ(status, 0);
    EXPECT_FALSE(Solve(Raw(VT_I2, 7), status));
    EXPECT_EQ(status, 7);
}

TEST_F(Solving, CallThatFailsLeavesTheStatus) {
    int status = 77;
    EXPECT_FALSE(Solve(FailsWith(Long(5)), status));
    fake.design.Forget("Analyze");
    EXPECT_FALSE(CComUtils::CallAnalyze(&fake.design, "Setup1", status));
    EXPECT_FALSE(CComUtils::CallAnalyze(nullptr, "Setup1", status));
    EXPECT_EQ(status, 77);
}

TEST_F(Solving, ExpressionCacheHoldsTheSixOutputVariables) {
    fake.setups = {L"Setup1"};
    EXPECT_TRUE(CComUtils::InsertExpressionCaches(&fake.design, rotor));
    EXPECT_TRANSCRIPT(fake.world, R"(
        design.GetModule("AnalysisSetup")
        design.GetModule("AnalysisSetup")
        AnalysisSetup.GetSetups()
        AnalysisSetup.EditSetup("Setup1",
            ["NAME:Setup1", "Enabled:=", true,
                ["NAME:ExpressionCache",
                    ["NAME:CacheItem", "Title:=", "Force_Rotor_X", "Expression:=", "Force_Rotor.Force_x/1Newton",
                        "ReportType:=", "Magnetostatic", ["NAME:ExpressionContext"]],
                    ["NAME:CacheItem", "Title:=", "Force_Rotor_Y", "Expression:=", "Force_Rotor.Force_y/1Newton",
                        "ReportType:=", "Magnetostatic", ["NAME:ExpressionContext"]],
                    ["NAME:CacheItem", "Title:=", "Force_Rotor_Z", "Expression:=", "Force_Rotor.Force_z/1Newton",
                        "ReportType:=", "Magnetostatic", ["NAME:ExpressionContext"]],
                    ["NAME:CacheItem", "Title:=", "Torque_Rotor_X",
                        "Expression:=", "Torque_Rotor_X.Torque/1mNewtonMeter",
                        "ReportType:=", "Magnetostatic", ["NAME:ExpressionContext"]],
                    ["NAME:CacheItem", "Title:=", "Torque_Rotor_Y",
                        "Expression:=", "Torque_Rotor_Y.Torque/1mNewtonMeter",
                        "ReportType:=", "Magnetostatic", ["NAME:ExpressionContext"]],
                    ["NAME:CacheItem", "Title:=", "Torque_Rotor_Z",
                        "Expression:=", "Torque_Rotor_Z.Torque/1mNewtonMeter",
                        "ReportType:=", "Magnetostatic", ["NAME:ExpressionContext"]]]])
    )");
}

TEST_F(Solving, ExpressionCacheNeedsModuleSetupAndEdit) {
    EXPECT_FALSE(CComUtils::InsertExpressionCaches(&fake.design, rotor)) << "no setup";
    EXPECT_EQ(fake.world.Count("EditSetup"), 0U);
    fake.setups = {L"Setup1"};
    fake.setupModule.On("EditSetup", Fails());
    EXPECT_FALSE(CComUtils::InsertExpressionCaches(&fake.design, rotor));
    fake.design.On("GetModule", Fails());
    EXPECT_FALSE(CComUtils::InsertExpressionCaches(&fake.design, rotor));
    EXPECT_FALSE(CComUtils::InsertExpressionCaches(nullptr, rotor));
}

TEST_F(Solving, OutputVariablesAreForcesInNewtonsAndTorquesInMillinewtonMetres) {
    EXPECT_TRUE(CComUtils::CreateOutputVariables(&fake.design, rotor, "Setup1"));
    EXPECT_TRANSCRIPT(fake.world, R"(
        design.GetModule("OutputVariable")
        OutputVariable.CreateOutputVariable(
            "Force_Rotor_X", "Force_Rotor.Force_x/1Newton", "Setup1 : LastAdaptive", "Magnetostatic", [])
        OutputVariable.CreateOutputVariable(
            "Force_Rotor_Y", "Force_Rotor.Force_y/1Newton", "Setup1 : LastAdaptive", "Magnetostatic", [])
        OutputVariable.CreateOutputVariable(
            "Force_Rotor_Z", "Force_Rotor.Force_z/1Newton", "Setup1 : LastAdaptive", "Magnetostatic", [])
        OutputVariable.CreateOutputVariable(
            "Torque_Rotor_X", "Torque_Rotor_X.Torque/1mNewtonMeter", "Setup1 : LastAdaptive", "Magnetostatic", [])
        OutputVariable.CreateOutputVariable(
            "Torque_Rotor_Y", "Torque_Rotor_Y.Torque/1mNewtonMeter", "Setup1 : LastAdaptive", "Magnetostatic", [])
        OutputVariable.CreateOutputVariable(
            "Torque_Rotor_Z", "Torque_Rotor_Z.Torque/1mNewtonMeter", "Setup1 : LastAdaptive", "Magnetostatic", [])
    )");
}

TEST_F(Solving, SecondCreationFailsAtItsFirstVariable) {
    ASSERT_TRUE(CComUtils::CreateOutputVariables(&fake.design, rotor, "Setup1"));
    fake.world.ClearJournal();
    EXPECT_FALSE(CComUtils::CreateOutputVariables(&fake.design, rotor, "Setup1"));
    EXPECT_EQ(fake.world.Count("CreateOutputVariable"), 1U);
}

TEST_F(Solving, CreationStopsAtTheFirstFailureAndNeedsTheModule) {
    fake.outputModule.OnCall("CreateOutputVariable", 4, Fails());
    EXPECT_FALSE(CComUtils::CreateOutputVariables(&fake.design, rotor, "Setup1"));
    EXPECT_EQ(fake.outputVariables.size(), 3U) << "those before it stay";
    fake.design.On("GetModule", NoObject());
    EXPECT_FALSE(CComUtils::CreateOutputVariables(&fake.design, rotor, "Setup1"));
    EXPECT_FALSE(CComUtils::CreateOutputVariables(nullptr, rotor, "Setup1"));
}

TEST_F(Solving, OutputVariableIsReadFromTheLastAdaptiveSolution) {
    fake.outputModule.On("GetOutputVariableValue", Real(-1.5));
    double value = 0.0;
    EXPECT_TRUE(CComUtils::CallGetOutputVariableValue(&fake.outputModule, "Force_Rotor_X", "Setup1", value));
    EXPECT_EQ(value, -1.5);
    EXPECT_TRANSCRIPT(fake.world, R"(
        OutputVariable.GetOutputVariableValue("Force_Rotor_X", "", "Setup1 : LastAdaptive", "Magnetostatic", [])
    )");
}

TEST_F(Solving, ValueOfAnotherTypeIsItsEightBytes) {
    double value = 0.0;
    fake.outputModule.On("GetOutputVariableValue", Raw(VT_I4, 0x4045000000000000));
    EXPECT_TRUE(CComUtils::CallGetOutputVariableValue(&fake.outputModule, "a", "S", value));
    EXPECT_EQ(value, 42.0);
    fake.outputModule.On("GetOutputVariableValue", Nothing());
    EXPECT_TRUE(CComUtils::CallGetOutputVariableValue(&fake.outputModule, "a", "S", value));
    EXPECT_EQ(value, 0.0) << "the result went in zeroed";
    fake.outputModule.On("GetOutputVariableValue", Text(L"5"));
    EXPECT_TRUE(CComUtils::CallGetOutputVariableValue(&fake.outputModule, "a", "S", value)) << "and the text is freed";
}

TEST_F(Solving, FailedReadLeavesTheValue) {
    double value = 77.0;
    fake.outputModule.On("GetOutputVariableValue", FailsWith(Real(1.0)));
    EXPECT_FALSE(CComUtils::CallGetOutputVariableValue(&fake.outputModule, "a", "S", value));
    EXPECT_FALSE(CComUtils::CallGetOutputVariableValue(nullptr, "a", "S", value));
    EXPECT_EQ(value, 77.0);
}

TEST_F(Solving, SixValuesAreReadInTheOrderOfTheResult) {
    double next = 0.0;
    fake.outputModule.On("GetOutputVariableValue", [&](const Arguments&) { return Real(++next); });
    IKinoraVeltrixInterface::Result result;
    EXPECT_TRUE(CComUtils::ExtractOutputData(&fake.design, "Rotor", "Setup1", result));
    EXPECT_THAT(result.force, testing::ElementsAre(1.0, 2.0, 3.0));
    EXPECT_THAT(result.torque, testing::ElementsAre(4.0, 5.0, 6.0));
    EXPECT_TRANSCRIPT(fake.world, R"(
        design.GetModule("OutputVariable")
        OutputVariable.GetOutputVariableValue("Force_Rotor_X", "", "Setup1 : LastAdaptive", "Magnetostatic", [])
        OutputVariable.GetOutputVariableValue("Force_Rotor_Y", "", "Setup1 : LastAdaptive", "Magnetostatic", [])
        OutputVariable.GetOutputVariableValue("Force_Rotor_Z", "", "Setup1 : LastAdaptive", "Magnetostatic", [])
        OutputVariable.GetOutputVariableValue("Torque_Rotor_X", "", "Setup1 : LastAdaptive", "Magnetostatic", [])
        OutputVariable.GetOutputVariableValue("Torque_Rotor_Y", "", "Setup1 : LastAdaptive", "Magnetostatic", [])
        OutputVariable.GetOutputVariableValue("Torque_Rotor_Z", "", "Setup1 : LastAdaptive", "Magnetostatic", [])
    )");
}

TEST_F(Solving, BodyWithoutOutputVariablesFailsAtTheFirst) {
    IKinoraVeltrixInterface::Result result;
    EXPECT_FALSE(CComUtils::ExtractOutputData(&fake.design, "Rotor", "Setup1", result));
    EXPECT_EQ(fake.world.Count("GetOutputVariableValue"), 1U);
    EXPECT_EQ(fake.world.Entries().back().arguments[0].text, L"Force_Rotor_X");
}

TEST_F(Solving, FailedReadKeepsTheComponentsBeforeIt) {
    fake.outputModule.On("GetOutputVariableValue", Real(9.0)).OnCall("GetOutputVariableValue", 5, Fails());
    IKinoraVeltrixInterface::Result result;
    EXPECT_FALSE(CComUtils::ExtractOutputData(&fake.design, "Rotor", "Setup1", result));
    EXPECT_THAT(result.force, testing::ElementsAre(9.0, 9.0, 9.0));
    EXPECT_THAT(result.torque, testing::ElementsAre(9.0, 0.0, 0.0));
    fake.design.On("GetModule", Fails());
    IKinoraVeltrixInterface::Result untouched;
    EXPECT_FALSE(CComUtils::ExtractOutputData(&fake.design, "Rotor", "Setup1", untouched));
    EXPECT_THAT(untouched.force, testing::Each(0.0));
}

} // namespace
