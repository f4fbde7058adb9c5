#include "simulator/analysis/FieldExport.h"
#include "simulator/model/DesktopError.h"
#include "simulator/model/Files.h"
#include "tests/simulator/automation/Desk.h"
#include "tests/simulator/model/Shapes.h"

#include <cmath>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace desk;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

/// Two 10 mm cubes along x, their axes in line.
std::string Pair() {
    return shapes::CubeObj("Stator", "magnet_1T", 0, 10) + shapes::CubeObj("Rotor", "magnet_1T", 30, 10);
}

/// Two magnets far apart, as dipoles: F = 3 mu0 m1 m2 / (2 pi r^4) on the axis (J. D. Jackson, 1998).
double DipoleForce(double distance) {
    const double moment = 795774.71545947669 * 1e-6;
    return 3.0 * 4e-7 * moment * moment / (2.0 * std::pow(distance, 4));
}

} // namespace

TEST(Session, SolvesTwoMagnetsAndMovesOne) {
    Desk desk;
    desk.Create(Pair());
    desk.CreateRegion();
    desk.AddBody("Base", "Stator", "magnet_1T", 0.0);
    desk.AddBody("Rotor", "Rotor", "magnet_1T", 0.03);
    EXPECT_EQ(desk.design->Call("Analyze", {"Setup1"}).AsInteger()->value, 0);
    // Magnetised alike in line: they attract, the rotor towards minus x.
    const double near = desk.Output("Force_Rotor_X");
    EXPECT_LT(near, 0.0);
    EXPECT_NEAR(desk.Output("Force_Base_X"), -near, 1e-9);
    EXPECT_NEAR(desk.Output("Force_Rotor_Y"), 0.0, 1e-9);
    desk.ChangeVariable("Rotor_X", "0.300000Meter");
    EXPECT_EQ(desk.design->Call("Analyze", {"Setup1"}).AsInteger()->value, 0);
    EXPECT_NEAR(desk.Output("Force_Rotor_X"), -DipoleForce(0.3), 0.005 * DipoleForce(0.3));
    EXPECT_THAT(desk.Messages(1), IsEmpty());
    EXPECT_THAT(desk.Messages(0), testing::Contains(HasSubstr("Analyze: Setup1, pass 1: error ")));
}

/// The torque is about the origin of the body's frame, in its axes: with the origin at the lower corner of the rotor,
/// the axial force through its centre (5, 5, 5) mm turns about y and z.
TEST(Session, GivesTorqueAboutTheFramesOrigin) {
    Desk desk;
    desk.Create(Pair());
    desk.AddBody("Base", "Stator", "magnet_1T", 0.0);
    desk.AddBody("Rotor", "Rotor", "magnet_1T", 0.03);
    desk.design->Call("Analyze", {"Setup1"});
    const double force = desk.Output("Force_Rotor_X");
    EXPECT_NEAR(desk.Output("Torque_Rotor_X"), 0.0, 1e-6);
    EXPECT_NEAR(desk.Output("Torque_Rotor_Y"), 5.0 * force, 1e-3 * std::abs(force));
    EXPECT_NEAR(desk.Output("Torque_Rotor_Z"), -5.0 * force, 1e-3 * std::abs(force));
}

TEST(Session, TurnsComponentsIntoTheBodysAxes) {
    Desk desk;
    desk.Create(Pair());
    desk.AddBody("Base", "Stator", "magnet_1T", 0.0);
    desk.AddBody("Rotor", "Rotor", "magnet_1T", 0.03);
    // A quarter turn about x through the rotor's own origin moves its centre off the axis: a force across appears, in
    // the stator's axes and, turned, in the rotor's.
    desk.ChangeVariable("Rotor_Psi", "1.5707963267948966Rad");
    desk.design->Call("Analyze", {"Setup1"});
    EXPECT_NEAR(desk.Output("Force_Rotor_X"), -desk.Output("Force_Base_X"), 1e-9);
    // Frame of the rotor: y axis (0, 0, -1), z axis (0, 1, 0).
    EXPECT_NEAR(desk.Output("Force_Rotor_Y"), desk.Output("Force_Base_Z"), 1e-9);
    EXPECT_NEAR(desk.Output("Force_Rotor_Z"), -desk.Output("Force_Base_Y"), 1e-9);
    EXPECT_GT(std::abs(desk.Output("Force_Rotor_Z")) + std::abs(desk.Output("Force_Rotor_Y")), 1e-3);
}

TEST(Session, MagnetisationFollowsClonesAndTheirComponents) {
    Desk desk;
    desk.Create(Pair());
    desk.AddBody("Base", "Stator", "magnet_1T", 0.0);
    desk.AddBody("Rotor", "Rotor", "magnet_1T", 0.03);
    desk.design->Call("Analyze", {"Setup1"});
    const double attracting = desk.Output("Force_Rotor_X");
    const auto manager = ObjectOf(desk.project->Call("GetDefinitionManager"));
    EXPECT_TRUE(*manager->Call("CloneMaterial", {"magnet_1T", "magnet_1T_1"}).AsFlag());
    const auto clone = ObjectOf(
        ObjectOf(desk.project->Call("GetChildObject", {"Materials"}))->Call("GetChildObject", {"magnet_1T_1"}));
    EXPECT_EQ(*clone->Call("GetPropValue", {"Magnetic Coercivity Components/Component1"}).AsText(), "1");
    clone->Call("SetPropValue", {"Magnetic Coercivity Components/Component1", -1.0});
    EXPECT_EQ(*clone->Call("GetPropValue", {"Magnetic Coercivity Components/Component1"}).AsText(), "-1");
    const auto rotor = ObjectOf(desk.editor->Call("GetChildObject", {"Rotor"}));
    rotor->Call("SetPropValue", {"Material", "\"magnet_1T_1\""});
    EXPECT_EQ(*rotor->Call("GetPropValue", {"Material"}).AsText(), "\"magnet_1T_1\"");
    EXPECT_THAT(Complaint([&] { desk.Output("Force_Rotor_X"); }), HasSubstr("0x021B: Solution error"));
    desk.design->Call("Analyze", {"Setup1"});
    EXPECT_NEAR(desk.Output("Force_Rotor_X"), -attracting, 1e-9);
}

TEST(Session, SavesAndOpensToTheLastBit) {
    Desk desk;
    desk.Create(Pair());
    desk.CreateRegion();
    desk.AddBody("Base", "Stator", "magnet_1T", 0.0);
    desk.AddBody("Rotor", "Rotor", "magnet_1T", 0.03);
    desk.design->Call("Analyze", {"Setup1"});
    const double force = desk.Output("Force_Rotor_X");
    desk.project->Call("Save");
    desk.project->Call("Close");
    EXPECT_THAT(Complaint([&] { desk.project->Call("GetName"); }), HasSubstr("0x000D: The referenced object"));
    desk.project = ObjectOf(desk.desktop->Call("OpenProject", {desk.File("pair.vtdk")}));
    EXPECT_EQ(*desk.project->Call("GetName").AsText(), "pair");
    EXPECT_THAT(TextsOf(desk.project->Call("GetChildNames")), ElementsAre("Veltrix3DDesign1"));
    desk.design = ObjectOf(desk.project->Call("SetActiveDesign", {"Veltrix3DDesign1"}));
    EXPECT_EQ(desk.Output("Force_Rotor_X"), force);
    desk.design->Call("Analyze", {"Setup1"});
    EXPECT_EQ(desk.Output("Force_Rotor_X"), force);
}

TEST(Session, TellsOfALongImport) {
    Desk desk;
    desk.Create(Pair());
    EXPECT_THAT(desk.Messages(0), IsEmpty());
    desk.world->longImport = std::chrono::seconds(0);
    desk.WriteFile("cube.stl", shapes::CubeStl("Cube", 60, 10));
    for (const char* name : {"geometry.obj", "cube.stl"}) {
        desk.editor->Call("Import", {List{"NAME:NativeBodyParameters", "ImportMaterialNames:=", false,
                                          "SourceFile:=", desk.File(name)}});
    }
    EXPECT_THAT(
        desk.Messages(0),
        ElementsAre(HasSubstr("stay as they are"),
                    testing::MatchesRegex("Import: \".*/geometry.obj\" took [0-9.]+ s: 24 triangles in 2 objects"),
                    testing::MatchesRegex("Import: \".*/cube.stl\" took [0-9.]+ s: 12 triangles in 1 object")));
}

TEST(Session, LetsAnOpenedProjectBeInitialisedAgain) {
    Desk desk;
    desk.Create(Pair());
    desk.CreateRegion();
    desk.AddBody("Rotor", "Rotor", "magnet_1T", 0.03);
    const auto plots = ObjectOf(desk.design->Call("GetModule", {"FieldsReporter"}));
    plots->Call("CreateFieldPlot", {FieldPlotArgument({"Rotor"}), "Field"});
    const auto manager = ObjectOf(desk.project->Call("GetDefinitionManager"));
    manager->Call("CloneMaterial", {"magnet_1T", "magnet_1T_1"});
    desk.editor->Call("Import", {List{"NAME:NativeBodyParameters", "ImportMaterialNames:=", true,
                                      "SourceFile:=", desk.File("geometry.obj")}});
    desk.editor->Call("CreateRegion", {RegionParameters(), RegionAttributes()});
    EXPECT_TRUE(*manager->Call("CloneMaterial", {"magnet_1T", "magnet_1T_1"}).AsFlag());
    plots->Call("CreateFieldPlot", {FieldPlotArgument({"Rotor", "Stator"}), "Field"});
    EXPECT_THAT(desk.Messages(0),
                ElementsAre(HasSubstr("stay as they are: \"Stator\", \"Rotor\""), HasSubstr("has been replaced"),
                            HasSubstr("\"magnet_1T_1\" has been replaced"), HasSubstr("has been replaced")));
    EXPECT_EQ(
        *ObjectOf(desk.editor->Call("GetChildObject", {"Rotor"}))->Call("GetPropValue", {"Coordinate System"}).AsText(),
        "Obj_CS_Rotor");
}

TEST(Session, SaysWhatItDoesNotSolve) {
    Desk desk;
    desk.Create(shapes::CubeObj("Yoke", "steel_soft", 0, 10) + shapes::CubeObj("Rotor", "NdFeB_N35", 30, 10) +
                shapes::CubeObj("Case", "paint", 60, 10));
    EXPECT_THAT(desk.Messages(1), ElementsAre("Import: object \"Case\" keeps its material \"paint\", which the library "
                                              "does not know"));
    desk.desktop->Call("ClearMessages", {"pair", "Veltrix3DDesign1", Value::Int(0)});
    desk.AddBody("Rotor", "Rotor", "NdFeB_N35", 0.03);
    EXPECT_EQ(desk.design->Call("Analyze", {"Setup1"}).AsInteger()->value, 0);
    EXPECT_THAT(desk.Messages(1), ElementsAre(HasSubstr("unknown materials are taken as non-magnetic: \"paint\"")));
}

TEST(Session, FailsToSolveAPermeabilityThatNothingHas) {
    Desk desk;
    desk.world->library["odd"] = {"odd", 0.5, std::nullopt};
    desk.Create(Pair() + shapes::CubeObj("Case", "odd", 60, 10));
    EXPECT_NE(desk.design->Call("Analyze", {"Setup1"}).AsInteger()->value, 0);
    EXPECT_THAT(desk.Messages(2),
                ElementsAre("Analyze: Setup1 cannot be solved: the material \"odd\" of the object \"Case\" has the "
                            "relative permeability 0.5, which must be finite and 0.9 or more; give the object another "
                            "material"));
}

TEST(Session, ShowsTheInitialPermeabilityOfACurve) {
    Desk desk;
    desk.Create(shapes::CubeObj("Yoke", "steel_soft", 0, 10));
    ObjectOf(desk.project->Call("GetDefinitionManager"))->Call("CloneMaterial", {"steel_soft", "clone"});
    const auto& materials = desk.world->projects[0]->materials;
    EXPECT_EQ(materials.at("clone").bhCurve, desk.world->library.at("steel_soft").bhCurve);
    const auto clone =
        ObjectOf(ObjectOf(desk.project->Call("GetChildObject", {"Materials"}))->Call("GetChildObject", {"clone"}));
    EXPECT_THAT(TextsOf(clone->Call("GetPropNames")), ElementsAre("Name", "Relative Permeability"));
    const double shown = std::stod(*clone->Call("GetPropValue", {"Relative Permeability"}).AsText());
    // 1 T at 342 A/m.
    EXPECT_NEAR(shown, 1.0 / (342.0 * 4e-7 * std::acos(-1.0)), 1e-6);
}

TEST(Session, FailsToSolveOverlappingBodiesWithAMessage) {
    Desk desk;
    desk.Create(Pair());
    desk.AddBody("Base", "Stator", "magnet_1T", 0.0);
    desk.AddBody("Rotor", "Rotor", "magnet_1T", 0.03);
    desk.ChangeVariable("Rotor_X", "0.005Meter");
    const Value status = desk.design->Call("Analyze", {"Setup1"});
    ASSERT_EQ(status.AsInteger()->type, Value::Integer::Type::Long);
    EXPECT_EQ(status.AsInteger()->value & 0xFFFF, 0x021B);
    EXPECT_THAT(desk.Messages(2), ElementsAre(HasSubstr("Analyze: Setup1 cannot be solved: ")));
    EXPECT_THAT(Complaint([&] { desk.Output("Force_Rotor_X"); }), HasSubstr("has not been solved"));
}

TEST(Session, WarnsWhenTheErrorIsNotReached) {
    Desk desk;
    desk.Create(Pair());
    desk.AddBody("Base", "Stator", "magnet_1T", 0.0);
    desk.AddBody("Rotor", "Rotor", "magnet_1T", 0.03);
    ObjectOf(desk.design->Call("GetModule", {"AnalysisSetup"}))
        ->Call("EditSetup",
               {"Setup1", List{"NAME:Setup1", "Enabled:=", true, "MaximumPasses:=", 1.0, "PercentError:=", 1e-6}});
    EXPECT_EQ(desk.design->Call("Analyze", {"Setup1"}).AsInteger()->value, 0);
    EXPECT_THAT(desk.Messages(1), ElementsAre(HasSubstr("did not reach an error of 1e-06 % within 1 passes")));
}

TEST(Session, RefillsReports) {
    Desk desk;
    desk.Create(Pair());
    desk.AddVariable("SimTime", "0s");
    desk.WriteFile("f.csv", "SimTime [s],Force_B.Force_x [Newton]\r\n0,1\r\n0.1,2\r\n");
    const auto reports = ObjectOf(desk.design->Call("GetModule", {"ReportSetup"}));
    const auto create = [&](const char* display) {
        reports->Call("CreateReport",
                      {"Force_B", "Magnetostatic", display, "Setup1 : LastAdaptive", Value(),
                       List{"SimTime:=", List{"All"}}, List{"X Component:=", "SimTime", "Y Component:=", List{}}});
    };
    create("Rectangular Plot");
    EXPECT_THAT(TextsOf(ObjectOf(desk.design->Call("GetChildObject", {"Results"}))->Call("GetChildNames")),
                ElementsAre("Force_B"));
    reports->Call("ImportIntoReport", {"Force_B", desk.File("f.csv")});
    EXPECT_THAT(TextsOf(reports->Call("GetReportTraceNames", {"Force_B"})), ElementsAre("Force_B.Force_x"));
    EXPECT_THAT(Complaint([&] {
                    reports->Call("ImportIntoReport", {"Force_B", desk.File("f.csv")});
                }),
                HasSubstr("has a trace \"Force_B.Force_x\" already"));
    create("Rectangular Plot");
    EXPECT_THAT(Complaint([&] { create("Data Table"); }), HasSubstr("exists already and is defined otherwise"));
    reports->Call("DeleteTraces", {List{"Force_B:=", List{"Force_B.Force_x"}}});
    EXPECT_THAT(TextsOf(reports->Call("GetReportTraceNames", {"Force_B"})), IsEmpty());
    reports->Call("ImportIntoReport", {"Force_B", desk.File("f.csv")});
    EXPECT_EQ(desk.world->projects[0]->designs[0]->reports[0].traces[0].y.size(), 2U);
}

TEST(Session, KeepsTheHistory) {
    Desk desk;
    desk.Create(Pair());
    desk.AddVariable("SimTime", "0s");
    const auto history = ObjectOf(desk.design->Call("GetChildObject", {"Paravant"}));
    history->Call("InsertSetup", {"OptiParametric", HistoryArgument({"SimTime"}, {{"0s"}})});
    history->Call("EditSetup", {"KinoraHistory", HistoryArgument({"SimTime"}, {{"0s"}, {"0.1s"}, {"0.2s"}})});
    EXPECT_THAT(TextsOf(history->Call("GetChildNames")), ElementsAre("KinoraHistory"));
    EXPECT_EQ(desk.world->projects[0]->designs[0]->parametricSetups[0].addedRows.size(), 2U);
    history->Call("DeleteSetups", {List{"KinoraHistory"}});
    EXPECT_THAT(TextsOf(history->Call("GetChildNames")), IsEmpty());
}

TEST(Session, ExportsTheFieldOfTheSolvedState) {
    Desk desk;
    desk.Create(Pair());
    desk.AddBody("Base", "Stator", "magnet_1T", 0.0);
    const auto& project = *desk.world->projects[0];
    EXPECT_THROW(vantor::analysis::ExportFields(project, desk.world->library, *project.designs[0]),
                 vantor::model::DesktopError);
    desk.design->Call("Analyze", {"Setup1"});
    const std::string vtu = vantor::analysis::ExportFields(project, desk.world->library, *project.designs[0]);
    EXPECT_THAT(vtu, HasSubstr("<VTKFile type=\"UnstructuredGrid\""));
    EXPECT_THAT(vtu, HasSubstr("Name=\"H\" NumberOfComponents=\"3\""));
    EXPECT_THAT(vtu, HasSubstr("</VTKFile>"));
}

TEST(Clients, ShareProjectsExceptThoseThatAnotherOneIsChanging) {
    Desk desk;
    desk.Create(Pair());
    const auto other = desk.NewClient();
    const auto count = [](const Value::Object& desktop) {
        return ObjectOf(desktop->Call("GetProjects"))->Call("Count").AsInteger()->value;
    };
    EXPECT_EQ(count(desk.desktop), 1);
    EXPECT_EQ(count(other), 0);
    EXPECT_THAT(Complaint([&] { other->Call("OpenProject", {desk.File("pair.vtdk")}); }),
                HasSubstr("0x022A: The access is not permitted: another client is changing the project \"pair\""));
    desk.project->Call("Save");
    EXPECT_EQ(count(other), 1);
    const auto shared = ObjectOf(other->Call("OpenProject", {desk.File("pair.vtdk")}));
    EXPECT_EQ(*shared->Call("GetName").AsText(), "pair");
    EXPECT_EQ(desk.world->projects.size(), 1U);
}

TEST(Clients, MayTakeOverWhatAnotherOneLeftBehind) {
    Desk desk;
    desk.Create(Pair());
    desk.editor = desk.design = desk.project = desk.desktop = nullptr;
    const auto other = desk.NewClient();
    const auto project = ObjectOf(ObjectOf(other->Call("GetProjects"))->Call("Item", {Value::Int(0)}));
    EXPECT_EQ(*project->Call("GetName").AsText(), "pair");
}
