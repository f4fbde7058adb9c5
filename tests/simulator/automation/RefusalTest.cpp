#include "simulator/model/DesktopError.h"
#include "tests/simulator/automation/Desk.h"
#include "tests/simulator/model/Shapes.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

using namespace desk;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

/// A design with one body, and every module at hand.
class Refusal : public testing::Test {
protected:
    void SetUp() override {
        desk.Create(shapes::CubeObj("Rotor", "magnet_1T", 0, 10));
        desk.CreateRegion();
        desk.AddVariable("SimTime", "0s");
        desk.AddBody("Rotor", "Rotor", "magnet_1T", 0.0);
    }

    Value::Object Module(const char* name) { return ObjectOf(desk.design->Call("GetModule", {name})); }

    /// A command with arguments that it takes, however often it runs.
    struct Case {
        Value::Object object;
        const char* method;
        std::vector<Value> arguments;
    };

    /// (A list alone is told to be one value: compilers differ about a list in braces that would be its copy.)
    std::vector<Case> CommandsThatMayRunTwice() {
        const List selections = {"NAME:Selections", "Selections:=", "Rotor", "NewPartsModelFlag:=", "Model"};
        return {
            {desk.design,
             "SetDesignSettings",
             {List{"NAME:Design Settings Data", "Allow Material Override:=", true},
              List{"NAME:Model Validation Settings"}}},
            {desk.editor, "SetModelUnits", {Value(List{"NAME:Units Parameter", "Units:=", "mm", "Rescale:=", false})}},
            {desk.editor, "CreateRegion", {RegionParameters(), RegionAttributes()}},
            {desk.editor,
             "SetWCS",
             {Value(List{"NAME:SetWCS Parameter", "Working Coordinate System:=", "Global", "RegionDepCSOk:=", true})}},
            {desk.editor,
             "Rotate",
             {selections, List{"NAME:RotateParameters", "RotateAxis:=", "X", "RotateAngle:=", "0.100000"}}},
            {desk.editor,
             "Move",
             {selections, List{"NAME:TranslateParameters", "TranslateVectorX:=", "1mm", "TranslateVectorY:=", "1mm",
                               "TranslateVectorZ:=", "1mm"}}},
            {desk.editor,
             "AssignMaterial",
             {List{"NAME:Selections", "Selections:=", "Rotor", "AllowRegionDependentPartSelectionForPMLCreation:=",
                   true, "AllowRegionSelectionForPMLCreation:=", true},
              AssignMaterialAttributes("magnet_1T")}},
            {Module("AnalysisSetup"),
             "EditSetup",
             {"Setup1", List{"NAME:Setup1", "Enabled:=", true,
                             List{"NAME:ExpressionCache",
                                  List{"NAME:CacheItem", "Title:=", "t", "Expression:=", "Force_Rotor.Force_x/1Newton",
                                       "ReportType:=", "Magnetostatic", List{"NAME:ExpressionContext"}}}}}},
            {Module("FieldsReporter"), "CreateFieldPlot", {FieldPlotArgument({"Rotor"}), "Field"}},
        };
    }

    Desk desk;
};

/// Every array that differs from a good one by one element left out, one of another type, one added, or another key.
std::vector<std::pair<std::string, List>> Spoiled(const List& good) {
    std::vector<std::pair<std::string, List>> spoiled;
    for (std::size_t i = 0; i < good.size(); ++i) {
        const std::string place = "element " + std::to_string(i);
        List shorter = good;
        shorter.erase(shorter.begin() + static_cast<std::ptrdiff_t>(i));
        spoiled.emplace_back(place + " left out", shorter);
        List other = good;
        other[i] = Value(Value::Foreign{7});
        spoiled.emplace_back(place + " is a date", other);
        if (const std::string* text = good[i].AsText();
            text && text->size() > 2 && text->substr(text->size() - 2) == ":=") {
            List renamed = good;
            renamed[i] = "x" + *text;
            spoiled.emplace_back(place + " is another key", renamed);
        }
        if (const List* nested = good[i].AsList(); nested != nullptr) {
            for (const auto& [inner, list] : Spoiled(*nested)) {
                List outer = good;
                outer[i] = list;
                spoiled.emplace_back(place + ", " + inner, outer);
            }
        }
    }
    List longer = good;
    longer.push_back("Extra:=");
    spoiled.emplace_back("one element more", longer);
    return spoiled;
}

} // namespace

TEST_F(Refusal, RefusesEverySpoiledArray) {
    for (const auto& good : CommandsThatMayRunTwice()) {
        ASSERT_EQ(Complaint([&] { good.object->Call(good.method, good.arguments); }), "none") << good.method;
        for (std::size_t i = 0; i < good.arguments.size(); ++i) {
            if (!good.arguments[i].AsList()) {
                continue;
            }
            for (const auto& [what, list] : Spoiled(*good.arguments[i].AsList())) {
                // An array without its last, optional block is still a good one.
                if (std::string(good.method) == "EditSetup" &&
                    (what == "element 3 left out" || what == "element 3, element 1 left out")) {
                    continue;
                }
                std::vector<Value> arguments = good.arguments;
                arguments[i] = list;
                EXPECT_THAT(Complaint([&] { good.object->Call(good.method, arguments); }),
                            testing::StartsWith(std::string(good.method) + ": 0x"))
                    << good.method << ", argument " << i + 1 << ", " << what;
            }
        }
    }
}

/// Such commands are spoiled without a good run first.
TEST_F(Refusal, RefusesEverySpoiledArrayOfCommandsThatMayNotRunTwice) {
    const auto loads = Module("VeltrixParameterSetup");
    List force = ForceArgument("New", "Rotor"), torque = TorqueArgument("New", "X", "Rotor");
    force[2] = torque[2] = "Obj_CS_Rotor";
    for (const auto& [what, list] : Spoiled(force)) {
        EXPECT_NE(Complaint([&, &spoiled = list] { loads->Call("AssignForce", {spoiled}); }), "none") << what;
    }
    for (const auto& [what, list] : Spoiled(torque)) {
        EXPECT_NE(Complaint([&, &spoiled = list] { loads->Call("AssignTorque", {spoiled}); }), "none") << what;
    }
    for (const auto& [what, list] : Spoiled(NewVariableArgument("fresh", "1mm"))) {
        if (what != "element 1, element 2, element 1 left out") { // no variable at all is allowed
            EXPECT_NE(Complaint([&, &spoiled = list] { desk.design->Call("ChangeProperty", {spoiled}); }), "none")
                << what;
        }
    }
}

TEST_F(Refusal, NamesCommandCodeKeyAndValue) {
    const auto loads = Module("VeltrixParameterSetup");
    List argument = ForceArgument("New", "Rotor");
    argument[2] = "Obj_CS_Nowhere";
    EXPECT_EQ(Complaint([&] { loads->Call("AssignForce", {argument}); }),
              "AssignForce: 0x0202: Bad argument value: \"Reference CS:=\" of \"NAME:Force_New\": there is no "
              "coordinate system \"Obj_CS_Nowhere\"");
    argument[2] = "Obj_CS_Rotor";
    argument[4] = Value(Value::Integer{1, Value::Integer::Type::Long});
    EXPECT_EQ(
        Complaint([&] { loads->Call("AssignForce", {argument}); }),
        "AssignForce: 0x0006: Unsupported argument type: \"Is Virtual:=\" of \"NAME:Force_New\": a flag (VT_BOOL) "
        "is needed, not a whole number (VT_I4)");
    argument[0] = "Force_New";
    EXPECT_EQ(Complaint([&] { loads->Call("AssignForce", {argument}); }),
              "AssignForce: 0x0002: Missing script argument: argument 1: the array must begin with \"NAME:\", but here "
              "stands \"Force_New\"");
    argument[0] = "NAME:Force_New";
    argument[1] = "Coordinate System:=";
    EXPECT_EQ(Complaint([&] { loads->Call("AssignForce", {argument}); }),
              "AssignForce: 0x0001: Invalid script argument: \"NAME:Force_New\", element 2: \"Reference CS:=\" is "
              "needed, here stands \"Coordinate System:=\"");
    argument.resize(2);
    argument[1] = "Reference CS:=";
    EXPECT_EQ(Complaint([&] { loads->Call("AssignForce", {argument}); }),
              "AssignForce: 0x000A: Incomplete array argument: \"Reference CS:=\" of \"NAME:Force_New\": the value is "
              "missing");
    EXPECT_EQ(Complaint([&] { loads->Call("AssignForce", {}); }),
              "AssignForce: 0x0002: Missing script argument: argument 1 is missing");
    EXPECT_EQ(Complaint([&] { loads->Call("AssignForce", {Value()}); }),
              "AssignForce: 0x0002: Missing script argument: argument 1: an array (VT_ARRAY|VT_VARIANT) is needed, not "
              "nothing (VT_EMPTY)");
    EXPECT_THAT(desk.Messages(2).back(), HasSubstr("AssignForce: 0x0002: Missing script argument"));
}

TEST_F(Refusal, RefusesNumbersOfAnotherType) {
    const auto setups = Module("AnalysisSetup");
    const auto insert = [&](const Value& passes, const Value& percent) {
        return Complaint([&] {
            setups->Call("InsertSetup", {"Magnetostatic", List{"NAME:S", "Enabled:=", true, "MaximumPasses:=", passes,
                                                               "PercentError:=", percent}});
        });
    };
    EXPECT_THAT(insert(Value::Long(15), 0.5), HasSubstr("0x0005: Non numeric argument: \"MaximumPasses:=\""));
    EXPECT_THAT(insert("15", 0.5), HasSubstr("0x0005"));
    EXPECT_THAT(insert(15.5, 0.5), HasSubstr("must be a whole number from 1 to 1000, not 15.5"));
    EXPECT_THAT(insert(0.0, 0.5), HasSubstr("whole number"));
    EXPECT_THAT(insert(15.0, 0.0), HasSubstr("must be more than 0"));
    EXPECT_THAT(insert(15.0, std::numeric_limits<double>::quiet_NaN()), HasSubstr("not finite"));
    EXPECT_EQ(insert(Value(Value::Integer{15, Value::Integer::Type::Short}), 0.5), "none");
    const auto projects = ObjectOf(desk.desktop->Call("GetProjects"));
    EXPECT_THAT(Complaint([&] { projects->Call("Item", {Value::Long(0)}); }), HasSubstr("0x0005"));
    EXPECT_THAT(Complaint([&] { projects->Call("Item", {Value::Int(1)}); }), HasSubstr("no project number 1 among 1"));
}

TEST_F(Refusal, RefusesWhatIsThereAlready) {
    EXPECT_THAT(Complaint([&] { desk.AddVariable("SimTime", "1s"); }), HasSubstr("exists already"));
    EXPECT_THAT(
        Complaint([&] { Module("VeltrixParameterSetup")->Call("AssignForce", {ForceArgument("Rotor", "Rotor")}); }),
        HasSubstr("exists already"));
    EXPECT_THAT(Complaint([&] {
                    Module("OutputVariable")
                        ->Call("CreateOutputVariable", {"Force_Rotor_X", "Force_Rotor.Force_x/1Newton",
                                                        "Setup1 : LastAdaptive", "Magnetostatic", List{}});
                }),
                HasSubstr("exists already"));
    EXPECT_THAT(Complaint([&] {
                    desk.project->Call("InsertDesign", {"Veltrix 3D", "Veltrix3DDesign1", "Magnetostatic", ""});
                }),
                HasSubstr("0x000B: Design name collision"));
    EXPECT_THAT(Complaint([&] {
                    desk.editor->Call("CreateRelativeCS",
                                      {FrameParameters("Rotor"), List{"NAME:Attributes", "Name:=", "Obj_CS_Rotor"}});
                }),
                HasSubstr("exists already"));
    EXPECT_THAT(Complaint([&] { desk.project->Call("AddMaterial", {List{"NAME:magnet_1T"}}); }),
                HasSubstr("has a material \"magnet_1T\" already"));
    EXPECT_THAT(Complaint([&] {
                    Module("AnalysisSetup")
                        ->Call("InsertSetup", {"Magnetostatic", List{"NAME:Setup1", "Enabled:=", true,
                                                                     "MaximumPasses:=", 1.0, "PercentError:=", 1.0}});
                }),
                HasSubstr("exists already"));
}

TEST_F(Refusal, RefusesWhatIsNotThere) {
    EXPECT_THAT(Complaint([&] { desk.project->Call("GetDesign", {"Other"}); }), HasSubstr("0x020D"));
    EXPECT_THAT(Complaint([&] { desk.design->Call("GetModule", {"Other"}); }), HasSubstr("0x0218"));
    EXPECT_THAT(Complaint([&] { desk.design->Call("Analyze", {"Setup2"}); }),
                HasSubstr("there is no setup \"Setup2\"; the setups are: \"Setup1\""));
    EXPECT_THAT(Complaint([&] { desk.editor->Call("GetChildObject", {"Other"}); }), HasSubstr("0x0229"));
    EXPECT_THAT(Complaint([&] { desk.ChangeVariable("Other", "1"); }), HasSubstr("no variable \"Other\" to change"));
    EXPECT_THAT(Complaint([&] { desk.Output("Other"); }), HasSubstr("no output variable \"Other\""));
    EXPECT_THAT(Complaint([&] {
                    desk.project->Call("InsertDesign", {"Circuit", "C", "Transient", ""});
                }),
                HasSubstr("0x000C: Unsupported design type"));
    EXPECT_THAT(Complaint([&] { desk.desktop->Call("GetRegistryString", {"Desktop\\Other"}); }),
                HasSubstr("no option"));
    EXPECT_FALSE(desk.design->FindMethod("analyze"));
    EXPECT_FALSE(desk.design->FindMethod("Quit"));
}

TEST_F(Refusal, RefusesFilesThatCannotBe) {
    const auto saveAs = [&](const std::string& path, bool overwrite) {
        return Complaint([&] { desk.project->Call("SaveAs", {path, overwrite}); });
    };
    EXPECT_THAT(saveAs(desk.File("pair.vtdk"), false), HasSubstr("0x020E: The project already exists"));
    EXPECT_THAT(saveAs(desk.File("none/pair.vtdk"), false), HasSubstr("0x0224: The directory is invalid"));
    EXPECT_EQ(saveAs(desk.File("pair.vtdk"), true), "none");
    desk.WriteFile("bad.vtdk", "{}");
    EXPECT_THAT(Complaint([&] { desk.desktop->Call("OpenProject", {desk.File("bad.vtdk")}); }),
                HasSubstr("0x020B: Cannot open the project: "));
    const auto unsaved = ObjectOf(desk.desktop->Call("NewProject"));
    EXPECT_EQ(*unsaved->Call("GetName").AsText(), "Project1");
    EXPECT_THAT(Complaint([&] { unsaved->Call("Save"); }), HasSubstr("0x0220: The project is not saved"));
    desk.WriteFile("open.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    EXPECT_THAT(Complaint([&] {
                    desk.editor->Call("Import", {List{"NAME:NativeBodyParameters", "ImportMaterialNames:=", true,
                                                      "SourceFile:=", desk.File("open.obj")}});
                }),
                HasSubstr("open.obj, line 4: object \"open\": the surface is open at an edge of this face"));
}

TEST_F(Refusal, GivesResultsInTheTypesThatClientsExpect) {
    const auto rotor = ObjectOf(desk.editor->Call("GetChildObject", {"Rotor"}));
    EXPECT_THAT(TextsOf(rotor->Call("GetPropNames")),
                ElementsAre("Name", "Material", "Solve Inside", "Coordinate System", "Orientation", "Model"));
    EXPECT_TRUE(*rotor->Call("GetPropValue", {"Solve Inside"}).AsFlag());
    EXPECT_THAT(TextsOf(desk.editor->Call("GetChildNames")), ElementsAre("Rotor", "OuterRegion"));
    EXPECT_EQ(
        *ObjectOf(desk.editor->Call("GetChildObject", {"OuterRegion"}))->Call("GetPropValue", {"Material"}).AsText(),
        "\"vacuum\"");
    EXPECT_EQ(*desk.desktop
                   ->Call("GetRegistryString", {"Desktop\\Settings\\ProjectOptions\\Veltrix 3D\\UpdateReportsOnSolve"})
                   .AsText(),
              "Automatically");
    const std::string path = *desk.project->Call("GetPath").AsText();
    EXPECT_TRUE(path.back() == '/' || path.back() == '\\') << path;
    const auto materials = ObjectOf(desk.project->Call("GetChildObject", {"Materials"}));
    EXPECT_THAT(TextsOf(materials->Call("GetChildNames")), ElementsAre("magnet_1T", "vacuum"));
    EXPECT_THAT(TextsOf(ObjectOf(materials->Call("GetChildObject", {"vacuum"}))->Call("GetPropNames")),
                ElementsAre("Name", "Relative Permeability"));
    EXPECT_TRUE(desk.editor->Call("FitAll").IsEmpty());
    desk.desktop->Call("QuitApplication");
    EXPECT_TRUE(desk.quit);
}
