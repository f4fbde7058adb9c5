// Design variables, the parametric history, reports, data tables and field plots.

#include "comutils/ComUtils.h"
#include "tests/support/CouplingSession.h"
#include "tests/support/Transcript.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace fake;
using testing::ElementsAre;
using testing::IsEmpty;

class Reports : public testing::Test, protected CouplingSession {
protected:
    Reports() {
        for (Object* const object : Held()) {
            object->AddRef();
        }
    }
    ~Reports() override {
        for (Object* const object : Held()) {
            object->Release();
        }
    }
    std::vector<Object*> Held() { return {&fake.design, &fake.reportModule, &fake.fieldsModule, &fake.desktop}; }
    Value Argument(std::size_t call, std::size_t index) { return fake.world.Entries().at(call).arguments.at(index); }
};

/// The tree of a VARIANT that the library made for its caller.
std::string TreeOf(VARIANT variant) {
    const std::string tree = Print(Read(variant));
    VariantClear(&variant);
    return tree;
}

// Design variables.

TEST_F(Reports, NewVariableCarriesItsKindAndAFlag) {
    VARIANT argument = CComUtils::GetChangePropertyArgument("Rotor_X", "0.500000Meter", true);
    EXPECT_TREE(argument, R"(
        ["NAME:AllTabs",
            ["NAME:LocalVariableTab",
                ["NAME:PropServers", "LocalVariables"],
                ["NAME:NewProps",
                    ["NAME:Rotor_X",
                        "PropType:=", "VariableProp",
                        "UserDef:=", true,
                        "Value:=", "0.500000Meter"]]]]
    )");
    VariantClear(&argument);
}

TEST_F(Reports, ChangedVariableIsAPlainList) {
    VARIANT argument = CComUtils::GetChangePropertyArgument("Rotor_X", " 12.5mm ", false);
    EXPECT_TREE(argument, R"(
        ["NAME:AllTabs",
            ["NAME:LocalVariableTab",
                ["NAME:PropServers", "LocalVariables"],
                ["NAME:ChangedProps", ["NAME:Rotor_X", "Value:=", " 12.5mm "]]]]
    )");
    VariantClear(&argument);
}

TEST_F(Reports, FlagOfANewVariableIsNoText) {
    VARIANT argument = CComUtils::GetChangePropertyArgument("a", "true", true);
    const Value entry = Read(argument).items[1].items[2].items[1];
    VariantClear(&argument);
    ASSERT_EQ(entry.items.size(), 7U);
    EXPECT_EQ(entry.items[4].type, VT_BOOL);
    EXPECT_EQ(entry.items[4].integer, VARIANT_TRUE);
    EXPECT_EQ(entry.items[6].text, L"true");
}

TEST_F(Reports, EmptyNameGivesTheBareHeader) {
    EXPECT_EQ(TreeOf(CComUtils::GetChangePropertyArgument("", "", false)),
              R"(["NAME:AllTabs", ["NAME:LocalVariableTab", ["NAME:PropServers", "LocalVariables"], )"
              R"(["NAME:ChangedProps", ["NAME:", "Value:=", ""]]]])");
}

TEST_F(Reports, SetVariableSendsOneArgumentToTheActiveDesign) {
    Create();
    EXPECT_TRUE(coupling.SetVariableValue("SimTime", "0s", true));
    EXPECT_TRUE(coupling.SetVariableValue("SimTime", "1s", false));
    EXPECT_TRANSCRIPT(fake.world, R"(
        design.ChangeProperty(
            ["NAME:AllTabs",
                ["NAME:LocalVariableTab",
                    ["NAME:PropServers", "LocalVariables"],
                    ["NAME:NewProps",
                        ["NAME:SimTime", "PropType:=", "VariableProp", "UserDef:=", true, "Value:=", "0s"]]]])
        design.ChangeProperty(
            ["NAME:AllTabs",
                ["NAME:LocalVariableTab",
                    ["NAME:PropServers", "LocalVariables"],
                    ["NAME:ChangedProps", ["NAME:SimTime", "Value:=", "1s"]]]])
    )");
    fake.design.On("ChangeProperty", Fails());
    EXPECT_FALSE(coupling.SetVariableValue("SimTime", "0s", true));
    fake.design.Forget("ChangeProperty");
    EXPECT_FALSE(coupling.SetVariableValue("SimTime", "0s", true));
}

TEST_F(Reports, ManyVariablesTravelInOneCommandInTheOrderOfTheirNames) {
    EXPECT_TRUE(CComUtils::UpdateVariables(&fake.design, {{"b", "2s"}, {"a", "1mm"}, {"B", "3"}}));
    EXPECT_TRANSCRIPT(fake.world, R"(
        design.ChangeProperty(
            ["NAME:AllTabs",
                ["NAME:LocalVariableTab",
                    ["NAME:PropServers", "LocalVariables"],
                    ["NAME:ChangedProps",
                        ["NAME:B", "Value:=", "3"],
                        ["NAME:a", "Value:=", "1mm"],
                        ["NAME:b", "Value:=", "2s"]]]])
    )");
}

TEST_F(Reports, UpdateOfNothingStillCalls) {
    EXPECT_TRUE(CComUtils::UpdateVariables(&fake.design, {}));
    EXPECT_TRANSCRIPT(fake.world, R"(
        design.ChangeProperty(
            ["NAME:AllTabs",
                ["NAME:LocalVariableTab", ["NAME:PropServers", "LocalVariables"], ["NAME:ChangedProps"]]])
    )");
    EXPECT_FALSE(CComUtils::UpdateVariables(nullptr, {}));
}

// The parametric history.

TEST_F(Reports, HistoryOfOneRowHasItsStartAndNoOperations) {
    VARIANT argument = CComUtils::GetParavantArgument({"SimTime"}, {{"0s"}});
    EXPECT_TREE(argument, R"(
        ["NAME:KinoraHistory",
            "IsEnabled:=", true,
            ["NAME:ProdOptiSetupDataV2",
                "SaveFields:=", true, "CopyMesh:=", true, "SolveWithCopiedMeshOnly:=", true],
            ["NAME:StartingPoint"],
            "Sim. Setups:=", ["Setup1"],
            ["NAME:Sweeps",
                ["NAME:SweepDefinition", "Variable:=", "SimTime", "Data:=", "0s",
                    "OffsetF1:=", false, "Synchronize:=", 0.0]],
            ["NAME:Sweep Operations"],
            ["NAME:Goals"]]
    )");
    EXPECT_EQ(Read(argument).items.size(), 10U);
    VariantClear(&argument);
}

TEST_F(Reports, LaterRowsOfTheHistoryAreAddedPoints) {
    VARIANT argument =
        CComUtils::GetParavantArgument({"SimTime", "R_X"}, {{"0s", "1Meter", "ignored"}, {"1s", "2Meter"}, {"2s"}});
    const Value history = Read(argument);
    VariantClear(&argument);
    EXPECT_EQ(Print(history.items[7]),
              R"(["NAME:Sweeps", )"
              R"(["NAME:SweepDefinition", "Variable:=", "SimTime", "Data:=", "0s", "OffsetF1:=", false, )"
              R"("Synchronize:=", 0.0], )"
              R"(["NAME:SweepDefinition", "Variable:=", "R_X", "Data:=", "1Meter", "OffsetF1:=", false, )"
              R"("Synchronize:=", 0.0]])");
    EXPECT_EQ(Print(history.items[8]), R"(["NAME:Sweep Operations", "add:=", ["1s", "2Meter"], "add:=", ["2s"]])")
        << "rows are sent as long as they are";
}

TEST_F(Reports, UnusableHistoryIsEmpty) {
    EXPECT_EQ(TreeOf(CComUtils::GetParavantArgument({}, {})), "empty");
    EXPECT_EQ(TreeOf(CComUtils::GetParavantArgument({"SimTime"}, {})), "empty");
    EXPECT_EQ(TreeOf(CComUtils::GetParavantArgument({"SimTime", "R_X"}, {{"0s"}, {"1s", "2Meter"}})), "empty");
}

TEST_F(Reports, HistoryWithoutVariablesHasNoSweeps) {
    VARIANT argument = CComUtils::GetParavantArgument({}, {{}});
    EXPECT_EQ(Print(Read(argument).items[7]), R"(["NAME:Sweeps"])");
    VariantClear(&argument);
}

TEST_F(Reports, FirstHistoryIsInserted) {
    Create();
    for (const bool replace : {false, true}) {
        fake.histories = {L"kinorahistory", L"KinoraHistory2"};
        fake.world.ClearJournal();
        EXPECT_TRUE(coupling.AddParametricSetup(replace));
        EXPECT_TRANSCRIPT(fake.world, R"(
            design.GetChildObject("Paravant")
            Paravant.GetChildNames()
            Paravant.InsertSetup("OptiParametric", empty)    # no steps are recorded yet: the desktop decides
        )");
    }
}

TEST_F(Reports, ExistingHistoryIsEdited) {
    Create();
    fake.histories = {L"KinoraHistory"};
    EXPECT_TRUE(coupling.AddParametricSetup(false));
    EXPECT_TRANSCRIPT(fake.world, R"(
        design.GetChildObject("Paravant")
        Paravant.GetChildNames()
        Paravant.EditSetup("KinoraHistory", empty)
    )");
    fake.paravant.On("EditSetup", Fails());
    EXPECT_FALSE(coupling.AddParametricSetup(false));
}

TEST_F(Reports, ReplacedHistoryIsDeletedAndInserted) {
    Create();
    fake.histories = {L"Other", L"KinoraHistory"};
    EXPECT_TRUE(coupling.AddParametricSetup(true));
    EXPECT_TRANSCRIPT(fake.world, R"(
        design.GetChildObject("Paravant")
        Paravant.GetChildNames()
        Paravant.DeleteSetups(["KinoraHistory"])
        Paravant.InsertSetup("OptiParametric", empty)
    )");
}

TEST_F(Reports, FailedDeleteOrInsertFailsTheHistory) {
    Create();
    fake.histories = {L"KinoraHistory"};
    fake.paravant.On("DeleteSetups", Fails());
    EXPECT_FALSE(coupling.AddParametricSetup(true));
    EXPECT_EQ(fake.world.Count("InsertSetup"), 0U);
    fake.histories.clear();
    fake.paravant.On("InsertSetup", Fails());
    EXPECT_FALSE(coupling.AddParametricSetup(true));
}

TEST_F(Reports, HistoryNeedsItsFolderInTheDesign) {
    Create();
    fake.design.On("GetChildObject", Fails());
    EXPECT_FALSE(coupling.AddParametricSetup(false));
    EXPECT_FALSE(coupling.AddParametricSetup(true));
    EXPECT_EQ(fake.world.Entries().size(), 2U);
}

// Reports.

TEST_F(Reports, ReportNamesAreTheChildrenOfResults) {
    fake.reports = {L"b", L"a", L"b"};
    EXPECT_THAT(CComUtils::GetReportNames(&fake.design), ElementsAre("a", "b"));
    EXPECT_TRANSCRIPT(fake.world, R"(
        design.GetChildObject("Results")
        Results.GetChildNames()
    )");
}

TEST_F(Reports, DesignWithoutResultsHasNoReports) {
    fake.design.On("GetChildObject", Fails());
    EXPECT_THAT(CComUtils::GetReportNames(&fake.design), IsEmpty());
    EXPECT_THAT(CComUtils::GetReportNames(nullptr), IsEmpty());
}

TEST_F(Reports, EmptyReportSweepsTheFirstVariableOnly) {
    EXPECT_TRUE(
        CComUtils::CreateEmptyReport(&fake.reportModule, "Force_Rotor", "Setup1", {"SimTime", "Rotor_X", "Rotor_Phi"}));
    EXPECT_TRANSCRIPT(fake.world, R"(
        ReportSetup.CreateReport(
            "Force_Rotor",
            "Magnetostatic",
            "Rectangular Plot",
            "Setup1 : LastAdaptive",
            empty,                                             # no context
            ["SimTime:=", ["All"], "Rotor_X:=", ["Nominal"], "Rotor_Phi:=", ["Nominal"]],
            ["X Component:=", "SimTime", "Y Component:=", []]) # no traces: the data is imported later
    )");
}

TEST_F(Reports, EmptyReportOverOneVariableHasOneFamily) {
    EXPECT_TRUE(CComUtils::CreateEmptyReport(&fake.reportModule, "R", "S", {"SimTime"}));
    EXPECT_EQ(Print(Argument(0, 5)), R"(["SimTime:=", ["All"]])");
}

TEST_F(Reports, ReportAndTableNeedAVariable) {
    EXPECT_FALSE(CComUtils::CreateEmptyReport(&fake.reportModule, "R", "S", {}));
    EXPECT_FALSE(CComUtils::CreateDataTable(&fake.reportModule, "R", "S", {}));
    EXPECT_TRANSCRIPT(fake.world, "");
}

TEST_F(Reports, ImportIntoAReportWithoutTracesDeletesNothing) {
    EXPECT_TRUE(CComUtils::ClearAndImportReport(&fake.reportModule, "Force_Rotor", "C:\\work\\Force_Rotor.csv"));
    EXPECT_TRANSCRIPT(fake.world, R"(
        ReportSetup.GetReportTraceNames("Force_Rotor")
        ReportSetup.ImportIntoReport("Force_Rotor", "C:\\work\\Force_Rotor.csv")
    )");
}

TEST_F(Reports, TracesAreDeletedBeforeTheImport) {
    fake.reportModule.On("GetReportTraceNames", Items({Text(L"b"), Long(1), Text(L"a")}));
    EXPECT_TRUE(CComUtils::ClearAndImportReport(&fake.reportModule, "Force_Rotor", "f.csv"));
    EXPECT_TRANSCRIPT(fake.world, R"(
        ReportSetup.GetReportTraceNames("Force_Rotor")
        ReportSetup.DeleteTraces(["Force_Rotor:=", ["b", "a"]])
        ReportSetup.ImportIntoReport("Force_Rotor", "f.csv")
    )");
}

TEST_F(Reports, FailedDeletionImportsNothing) {
    fake.traces[L"R"] = {L"a"};
    fake.reportModule.On("DeleteTraces", Fails());
    EXPECT_FALSE(CComUtils::ClearAndImportReport(&fake.reportModule, "R", "f.csv"));
    EXPECT_EQ(fake.world.Count("ImportIntoReport"), 0U);
}

TEST_F(Reports, FailedTraceNamesOrImportFail) {
    fake.reportModule.On("ImportIntoReport", Fails());
    EXPECT_FALSE(CComUtils::ClearAndImportReport(&fake.reportModule, "R", "f.csv"));
    fake.reportModule.On("GetReportTraceNames", FailsWith(Texts({L"a"})));
    fake.world.ClearJournal();
    EXPECT_FALSE(CComUtils::ClearAndImportReport(&fake.reportModule, "R", "f.csv"));
    EXPECT_EQ(fake.world.Entries().size(), 1U);
}

TEST_F(Reports, TraceNamesOfAnyOtherTypeAreNone) {
    for (const Answer& answer : {Nothing(), Text(L"a"), TextArray({L"a"}), Items({Long(1)})}) {
        fake.reportModule.On("GetReportTraceNames", answer);
        EXPECT_TRUE(CComUtils::ClearAndImportReport(&fake.reportModule, "R", "f.csv"));
    }
    EXPECT_EQ(fake.world.Count("DeleteTraces"), 0U);
}

TEST_F(Reports, DataTableShowsTheOutputVariablesOfABody) {
    EXPECT_TRUE(CComUtils::CreateDataTable(&fake.reportModule, "Rotor", "Setup1", {"SimTime", "Rotor_X", "Rotor_Y"}));
    EXPECT_TRANSCRIPT(fake.world, R"(
        ReportSetup.CreateReport(
            "Output Variables for Rotor",
            "Magnetostatic",
            "Data Table",
            "Setup1 : LastAdaptive",
            empty,
            ["SimTime:=", ["All"], "Rotor_X:=", ["Nominal"], "Rotor_Y:=", ["Nominal"]],
            ["X Component:=", "SimTime",
             "Y Component:=", ["Force_Rotor_X", "Force_Rotor_Y", "Force_Rotor_Z",
                               "Torque_Rotor_X", "Torque_Rotor_Y", "Torque_Rotor_Z"]])
    )");
}

TEST_F(Reports, DataTableTakesItsComponentFromTheFirstVariable) {
    EXPECT_TRUE(CComUtils::CreateDataTable(&fake.reportModule, "R", "S", {"Rotor_X"}));
    EXPECT_EQ(Argument(0, 6).items[1].text, L"Rotor_X");
}

TEST_F(Reports, DesktopSettingIsReadAsText) {
    fake.updateReports = L"On Completion";
    EXPECT_EQ(CComUtils::CallGetRegistryString(&fake.desktop, "Desktop\\Settings\\A B"), "On Completion");
    EXPECT_TRANSCRIPT(fake.world, R"(desktop.GetRegistryString("Desktop\\Settings\\A B"))");
    fake.updateReports = L"caf\x00E9";
    EXPECT_EQ(CComUtils::CallGetRegistryString(&fake.desktop, "k"), ToAnsi(L"caf\x00E9"));
    for (const Answer& answer : {Fails(), Long(1), Nothing(), FailsWith(Text(L"Never"))}) {
        fake.desktop.On("GetRegistryString", answer);
        EXPECT_EQ(CComUtils::CallGetRegistryString(&fake.desktop, "k"), "");
    }
    EXPECT_EQ(CComUtils::CallGetRegistryString(nullptr, "k"), "");
}

// Field plots.

TEST_F(Reports, FieldPlotShowsAQuantityInTheVolumesOfObjects) {
    EXPECT_TRUE(CComUtils::CreateFieldPlot(&fake.fieldsModule, "H_VectorPlot", "H", "Setup1", "H_Vector",
                                           {"Magnet", "Core", "Yoke"}));
    EXPECT_TRANSCRIPT(fake.world, R"(
        FieldsReporter.CreateFieldPlot(
            ["NAME:H_VectorPlot",
                "SolutionName:=", "Setup1 : LastAdaptive",
                "UserSpecifyName:=", 0.0,
                "UserSpecifyFolder:=", 0.0,
                "QuantityName:=", "H_Vector",
                "PlotFolder:=", "H",
                "StreamlinePlot:=", false,
                "AdjacentSidePlot:=", false,
                "FullModelPlot:=", false,
                "IntrinsicVar:=", "",
                "EnableGaussianSmoothing:=", false,
                "PlotGeomInfo:=", [1.0, "Volume", "ObjList", 3.0, "Magnet", "Core", "Yoke"],
                "FilterBoxes:=", [0.0],
                ["NAME:PlotOnVolumeSettings",
                    "PlotIsoSurface:=", true,
                    "PointSize:=", 1.0,
                    "Refinement:=", 0.0,
                    "CloudSpacing:=", 0.5,
                    "CloudMinSpacing:=", -1.0,
                    "CloudMaxSpacing:=", -1.0,
                    "ShadingType:=", 0.0,
                    ["NAME:Arrow3DSpacingSettings",
                        "ArrowUniform:=", true,
                        "ArrowSpacing:=", 0.0,
                        "MinArrowSpacing:=", 0.0,
                        "MaxArrowSpacing:=", 0.0]],
                "EnableGaussianSmoothing:=", false,      # for the second time
                "SurfaceOnly:=", false],
            "Field")
    )");
    const Value plot = Argument(0, 0);
    EXPECT_EQ(plot.items.size(), 30U);
    EXPECT_EQ(plot.items[25].items.size(), 16U);
    EXPECT_EQ(plot.items[25].items[15].items.size(), 9U);
    EXPECT_EQ(plot.items[22].items.size(), 7U);
}

TEST_F(Reports, FieldPlotOfNothingIsMadeAllTheSame) {
    EXPECT_TRUE(CComUtils::CreateFieldPlot(&fake.fieldsModule, "P", "H", "S", "H_Vector", {}));
    EXPECT_EQ(Print(Argument(0, 0).items[22]), R"([1.0, "Volume", "ObjList", 0.0])");
    EXPECT_EQ(Print(Argument(0, 1)), R"("Field")");
}

} // namespace
