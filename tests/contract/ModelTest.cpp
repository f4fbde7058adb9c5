// Geometry initialisation, and the driver that makes a field model of bodies and materials.

#include "tests/support/CouplingSession.h"
#include "tests/support/FailingCall.h"
#include "tests/support/HostLocale.h"
#include "tests/support/Transcript.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

namespace {

using namespace fake;
using testing::ElementsAre;
using testing::IsEmpty;
using Group = IKinoraVeltrixInterface::Group;
using Material = IKinoraVeltrixInterface::Material;
using Materials = std::map<std::string, Material>;

class Model : public testing::Test, protected CouplingSession {
protected:
    bool Init(const std::vector<Group>& groups, const Materials& materials = {}) {
        return coupling.InitMagneticObjects(groups, materials);
    }
    /// The calls of this method, one per line, in the journal's order.
    std::vector<std::string> Calls(const std::string& method) const {
        std::vector<std::string> calls;
        for (const Entry& entry : fake.world.Entries()) {
            if (entry.method == method) {
                std::string line = entry.object + "(";
                for (const Value& argument : entry.arguments) {
                    line += (&argument == entry.arguments.data() ? "" : ", ") + Print(argument);
                }
                calls.push_back(line + ")");
            }
        }
        return calls;
    }
    /// Methods called from this one on, without repetitions in a row.
    std::string MethodsFrom(const std::string& first) const {
        std::string methods;
        std::string last;
        for (const Entry& entry : fake.world.Entries()) {
            if ((!methods.empty() || entry.method == first) && entry.method != last) {
                last = entry.method;
                methods += last + " ";
            }
        }
        return methods;
    }
    /// Names of the materials given to objects, as "object=material".
    std::vector<std::string> Assigned() const {
        std::vector<std::string> assigned;
        for (const Entry& entry : fake.world.Entries()) {
            if (entry.method == "AssignMaterial") {
                std::string material = ToUtf8(entry.arguments[1].items[2].text);
                material.erase(std::remove(material.begin(), material.end(), '"'), material.end());
                assigned.push_back(ToUtf8(entry.arguments[0].items[2].text) + "=" + material);
            }
        }
        return assigned;
    }
    /// "NAME:" headers of the variables created with "ChangeProperty", with their values.
    std::vector<std::string> Created() const { return Variables(L"NAME:NewProps", 6); }
    std::vector<std::string> Updated() const { return Variables(L"NAME:ChangedProps", 2); }

private:
    std::vector<std::string> Variables(const std::wstring& kind, std::size_t valueIndex) const {
        std::vector<std::string> variables;
        for (const Entry& entry : fake.world.Entries()) {
            if (entry.method == "ChangeProperty" && entry.arguments[0].items[1].items[2].items[0].text == kind) {
                for (const Value& property : entry.arguments[0].items[1].items[2].items) {
                    if (property.items.size() > valueIndex) {
                        variables.push_back(ToUtf8(property.items[0].text.substr(5)) + "=" +
                                            ToUtf8(property.items[valueIndex].text));
                    }
                }
            }
        }
        return variables;
    }
};

const double quarterTurnAboutX[9] = {1.0, 0.0, 0.0, 0.0, 0.0, -1.0, 0.0, 1.0, 0.0};

Group MakeGroup(const std::string& name, const std::vector<std::string>& objects, double x = 0.0, double y = 0.0,
                double z = 0.0) {
    return {{name, {x, y, z}, {1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0}}, objects};
}

// Geometry.

TEST_F(Model, GeometrySetsUnitsThenImports) {
    Create();
    fake.AddSolid(L"Magnet", L"\"N45\"");
    EXPECT_TRUE(coupling.InitGeometry("b.obj", "meter"));
    EXPECT_TRANSCRIPT(fake.world, R"(
        design.SetActiveEditor("3D Modeler")
        editor.SetModelUnits(["NAME:Units Parameter", "Units:=", "meter", "Rescale:=", false])
        editor.Import(["NAME:NativeBodyParameters", "ImportMaterialNames:=", true, "SourceFile:=", "b.obj"])
        editor.GetChildNames()
        editor.GetChildObject("Magnet")
        Magnet.GetPropNames()
        Magnet.SetPropValue("Solve Inside", true)
        design.GetModule("AnalysisSetup")
        design.GetModule("AnalysisSetup")
        AnalysisSetup.GetSetups()                 # the setup is there already
        editor.FitAll()
    )");
}

TEST_F(Model, GeometryWithoutADesignMakesNoCall) {
    Launch();
    EXPECT_FALSE(coupling.InitGeometry("b.obj", "mm"));
    EXPECT_TRANSCRIPT(fake.world, "");
}

TEST_F(Model, GeometryStopsAtTheFirstFailure) {
    Create();
    fake.AddSolid(L"Magnet", L"\"N45\"");
    const auto lastCall = [&](Object& object, const char* method, const Answer& answer) {
        fake.world.ClearJournal();
        object.OnCall(method, 1, answer);
        EXPECT_FALSE(coupling.InitGeometry("b.obj", "mm"));
        return fake.world.Entries().back().method;
    };
    EXPECT_EQ(lastCall(fake.design, "SetActiveEditor", Fails()), "SetActiveEditor");
    EXPECT_EQ(lastCall(fake.design, "SetActiveEditor", Text(L"editor")), "SetActiveEditor");
    EXPECT_EQ(lastCall(fake.editor, "SetModelUnits", Fails()), "SetModelUnits");
    EXPECT_EQ(lastCall(fake.editor, "Import", Fails()), "Import");
    EXPECT_EQ(lastCall(fake.editor, "GetChildObject", Fails()), "GetChildObject");
    EXPECT_EQ(lastCall(fake.design, "GetModule", Fails()), "GetModule");
    EXPECT_EQ(fake.world.Count("FitAll"), 0U);
}

TEST_F(Model, GeometrySucceedsWithoutFitAll) {
    Create();
    fake.editor.On("FitAll", Fails());
    EXPECT_TRUE(coupling.InitGeometry("b.obj", "mm"));
    fake.editor.Forget("FitAll");
    EXPECT_TRUE(coupling.InitGeometry("b.obj", "mm"));
}

// The driver, whole: what makes a model of one magnet, part by part.

// Before anything is made: what there is, and the setup.
const std::string existingDesign = R"~(
    design.GetProperties("LocalVariableTab", "LocalVariables")
    design.GetModule("AnalysisSetup")                     # makes sure of a setup
    design.GetModule("AnalysisSetup")
    AnalysisSetup.GetSetups()
    design.GetModule("AnalysisSetup")                     # and takes the first one
    AnalysisSetup.GetSetups()
    design.SetActiveEditor("3D Modeler")
)~";

// The initial variables.
const std::string initialVariables = R"~(
    design.ChangeProperty(["NAME:AllTabs", ["NAME:LocalVariableTab", ["NAME:PropServers", "LocalVariables"],
        ["NAME:NewProps", ["NAME:RegionPaddingX", "PropType:=", "VariableProp", "UserDef:=", true,
            "Value:=", "500"]]]])
    design.ChangeProperty(["NAME:AllTabs", ["NAME:LocalVariableTab", ["NAME:PropServers", "LocalVariables"],
        ["NAME:NewProps", ["NAME:RegionPaddingY", "PropType:=", "VariableProp", "UserDef:=", true,
            "Value:=", "500"]]]])
    design.ChangeProperty(["NAME:AllTabs", ["NAME:LocalVariableTab", ["NAME:PropServers", "LocalVariables"],
        ["NAME:NewProps", ["NAME:RegionPaddingZ", "PropType:=", "VariableProp", "UserDef:=", true,
            "Value:=", "500"]]]])
    design.ChangeProperty(["NAME:AllTabs", ["NAME:LocalVariableTab", ["NAME:PropServers", "LocalVariables"],
        ["NAME:NewProps", ["NAME:SimTime", "PropType:=", "VariableProp", "UserDef:=", true, "Value:=", "0s"]]]])
    editor.CreateRegion(
        ["NAME:RegionParameters",
            "+XPaddingType:=", "Percentage Offset", "+XPadding:=", "RegionPaddingX",
            "-XPaddingType:=", "Percentage Offset", "-XPadding:=", "RegionPaddingX",
            "+YPaddingType:=", "Percentage Offset", "+YPadding:=", "RegionPaddingY",
            "-YPaddingType:=", "Percentage Offset", "-YPadding:=", "RegionPaddingY",
            "+ZPaddingType:=", "Percentage Offset", "+ZPadding:=", "RegionPaddingZ",
            "-ZPaddingType:=", "Percentage Offset", "-ZPadding:=", "RegionPaddingZ"],
        ["NAME:Attributes", "Name:=", "OuterRegion", "Flags:=", "Wireframe#", "Color:=", "(143 175 143)",
            "Transparency:=", 0.0, "PartCoordinateSystem:=", "Global", "UDMId:=", "",
            "MaterialValue:=", "\"vacuum\"", "SurfaceMaterialValue:=", "\"\"", "SolveInside:=", true,
            "ShellElement:=", false, "ShellElementThickness:=", "nan ", "IsMaterialEditable:=", true,
            "UseMaterialAppearance:=", false, "IsLightweight:=", false])
)~";

// The magnet wants another direction than its material has: it gets a clone.
const std::string clonedMaterial = R"~(
    project.GetChildObject("Materials")
    project.GetDefinitionManager()
    editor.AssignMaterial(
        ["NAME:Selections", "Selections:=", "Magnet", "AllowRegionDependentPartSelectionForPMLCreation:=", true,
            "AllowRegionSelectionForPMLCreation:=", true],
        ["NAME:Attributes", "MaterialValue:=", "\"N45\"", "SolveInside:=", true, "ShellElement:=", false,
            "ShellElementThickness:=", "nan ", "IsMaterialEditable:=", true, "UseMaterialAppearance:=", false,
            "IsLightweight:=", false])
    Materials.GetChildObject("N45")
    Materials/N45.GetPropNames()
    Materials/N45.GetPropValue("Magnetic Coercivity Components/Component1")
    Materials/N45.GetPropValue("Magnetic Coercivity Components/Component2")
    Materials/N45.GetPropValue("Magnetic Coercivity Components/Component3")
    definitions.CloneMaterial("N45", "N45_1")
    Materials.GetChildObject("N45_1")
    Materials/N45_1.SetPropValue("Magnetic Coercivity Components/Component3", 900000.0)
    editor.AssignMaterial(
        ["NAME:Selections", "Selections:=", "Magnet", "AllowRegionDependentPartSelectionForPMLCreation:=", true,
            "AllowRegionSelectionForPMLCreation:=", true],
        ["NAME:Attributes", "MaterialValue:=", "\"N45_1\"", "SolveInside:=", true, "ShellElement:=", false,
            "ShellElementThickness:=", "nan ", "IsMaterialEditable:=", true, "UseMaterialAppearance:=", false,
            "IsLightweight:=", false])
)~";

// Every material in use is a definition of the project.
const std::string materialsInUse = R"~(
    project.GetChildObject("Materials")
    Materials.GetChildNames()
    editor.GetChildObject("Magnet")
    Magnet.GetPropValue("Material")
)~";

// The body: variables, frames, placement.
const std::string placedBody = R"~(
    design.ChangeProperty(["NAME:AllTabs", ["NAME:LocalVariableTab", ["NAME:PropServers", "LocalVariables"],
        ["NAME:NewProps", ["NAME:Rotor_Phi", "PropType:=", "VariableProp", "UserDef:=", true,
            "Value:=", "0.000000Rad"]]]])
    design.ChangeProperty(["NAME:AllTabs", ["NAME:LocalVariableTab", ["NAME:PropServers", "LocalVariables"],
        ["NAME:NewProps", ["NAME:Rotor_Psi", "PropType:=", "VariableProp", "UserDef:=", true,
            "Value:=", "1.570796Rad"]]]])
    design.ChangeProperty(["NAME:AllTabs", ["NAME:LocalVariableTab", ["NAME:PropServers", "LocalVariables"],
        ["NAME:NewProps", ["NAME:Rotor_Theta", "PropType:=", "VariableProp", "UserDef:=", true,
            "Value:=", "-0.000000Rad"]]]])                # asin(-0.0)
    design.ChangeProperty(["NAME:AllTabs", ["NAME:LocalVariableTab", ["NAME:PropServers", "LocalVariables"],
        ["NAME:NewProps", ["NAME:Rotor_X", "PropType:=", "VariableProp", "UserDef:=", true,
            "Value:=", "0.500000Meter"]]]])
    design.ChangeProperty(["NAME:AllTabs", ["NAME:LocalVariableTab", ["NAME:PropServers", "LocalVariables"],
        ["NAME:NewProps", ["NAME:Rotor_Y", "PropType:=", "VariableProp", "UserDef:=", true,
            "Value:=", "0.000000Meter"]]]])
    design.ChangeProperty(["NAME:AllTabs", ["NAME:LocalVariableTab", ["NAME:PropServers", "LocalVariables"],
        ["NAME:NewProps", ["NAME:Rotor_Z", "PropType:=", "VariableProp", "UserDef:=", true,
            "Value:=", "0.000000Meter"]]]])
    design.GetModule("VeltrixParameterSetup")
    editor.GetRelativeCoordinateSystems()
    editor.CreateRelativeCS(
        ["NAME:RelativeCSParameters", "Mode:=", "Axis/Position",
            "OriginX:=", "Rotor_X", "OriginY:=", "Rotor_Y", "OriginZ:=", "Rotor_Z",
            "XAxisXvec:=", "cos(Rotor_Phi)*cos(Rotor_Theta)",
            "XAxisYvec:=", "sin(Rotor_Psi)*sin(Rotor_Phi)*cos(Rotor_Theta)-cos(Rotor_Psi)*sin(Rotor_Theta)",
            "XAxisZvec:=", "cos(Rotor_Psi)*sin(Rotor_Phi)*cos(Rotor_Theta)+sin(Rotor_Psi)*sin(Rotor_Theta)",
            "YAxisXvec:=", "cos(Rotor_Phi)*sin(Rotor_Theta)",
            "YAxisYvec:=", "sin(Rotor_Psi)*sin(Rotor_Phi)*sin(Rotor_Theta)+cos(Rotor_Psi)*cos(Rotor_Theta)",
            "YAxisZvec:=", "cos(Rotor_Psi)*sin(Rotor_Phi)*sin(Rotor_Theta)-sin(Rotor_Psi)*cos(Rotor_Theta)"],
        ["NAME:Attributes", "Name:=", "Obj_CS_Rotor"])
    editor.CreateRelativeCS(
        ["NAME:RelativeCSParameters", "Mode:=", "Axis/Position", "Reference CS:=", "Obj_CS_Rotor",
            "OriginX:=", "0.000000Meter", "OriginY:=", "0.000000Meter", "OriginZ:=", "0.000000Meter",
            "XAxisXvec:=", "1mm", "XAxisYvec:=", "0mm", "XAxisZvec:=", "0mm",
            "YAxisXvec:=", "0mm", "YAxisYvec:=", "1mm", "YAxisZvec:=", "0mm"],
        ["NAME:Attributes", "Name:=", "Mag_CS_Rotor"])
    editor.Move(
        ["NAME:Selections", "Selections:=", "Magnet", "NewPartsModelFlag:=", "Model"],
        ["NAME:TranslateParameters", "TranslateVectorX:=", "-0.500000Meter",
            "TranslateVectorY:=", "-0.000000Meter", "TranslateVectorZ:=", "-0.000000Meter"])
    editor.Rotate(
        ["NAME:Selections", "Selections:=", "Magnet", "NewPartsModelFlag:=", "Model"],
        ["NAME:RotateParameters", "RotateAxis:=", "X", "RotateAngle:=", "1.570796"])
    editor.GetChildObject("Magnet")
    Magnet.GetPropNames()
    Magnet.SetPropValue("Coordinate System", "Obj_CS_Rotor")
    Magnet.SetPropValue("Orientation", "Mag_CS_Rotor")
    Magnet.GetChildNames()
    editor.SetWCS(
        ["NAME:SetWCS Parameter", "Working Coordinate System:=", "Global", "RegionDepCSOk:=", true])
)~";

// Its loads and what reads them.
const std::string loadsAndReaders = R"~(
    editor.GetChildObject("Magnet")
    Magnet.GetPropValue("Material")
    VeltrixParameterSetup.AssignForce(["NAME:Force_Rotor", "Reference CS:=", "Obj_CS_Rotor",
        "Is Virtual:=", true, "Objects:=", ["Magnet"]])
    VeltrixParameterSetup.AssignTorque(["NAME:Torque_Rotor_X", "Coordinate System:=", "Obj_CS_Rotor",
        "Is Virtual:=", true, "Is Positive:=", true, "Axis:=", "X", "Objects:=", ["Magnet"]])
    VeltrixParameterSetup.AssignTorque(["NAME:Torque_Rotor_Y", "Coordinate System:=", "Obj_CS_Rotor",
        "Is Virtual:=", true, "Is Positive:=", true, "Axis:=", "Y", "Objects:=", ["Magnet"]])
    VeltrixParameterSetup.AssignTorque(["NAME:Torque_Rotor_Z", "Coordinate System:=", "Obj_CS_Rotor",
        "Is Virtual:=", true, "Is Positive:=", true, "Axis:=", "Z", "Objects:=", ["Magnet"]])
    design.GetModule("OutputVariable")
    OutputVariable.CreateOutputVariable("Force_Rotor_X", "Force_Rotor.Force_x/1Newton",
        "Setup1 : LastAdaptive", "Magnetostatic", [])
    OutputVariable.CreateOutputVariable("Force_Rotor_Y", "Force_Rotor.Force_y/1Newton",
        "Setup1 : LastAdaptive", "Magnetostatic", [])
    OutputVariable.CreateOutputVariable("Force_Rotor_Z", "Force_Rotor.Force_z/1Newton",
        "Setup1 : LastAdaptive", "Magnetostatic", [])
    OutputVariable.CreateOutputVariable("Torque_Rotor_X", "Torque_Rotor_X.Torque/1mNewtonMeter",
        "Setup1 : LastAdaptive", "Magnetostatic", [])
    OutputVariable.CreateOutputVariable("Torque_Rotor_Y", "Torque_Rotor_Y.Torque/1mNewtonMeter",
        "Setup1 : LastAdaptive", "Magnetostatic", [])
    OutputVariable.CreateOutputVariable("Torque_Rotor_Z", "Torque_Rotor_Z.Torque/1mNewtonMeter",
        "Setup1 : LastAdaptive", "Magnetostatic", [])
)~";

// The history with its initial row.
const std::string historyWithItsFirstRow = R"~(
    design.GetChildObject("Paravant")
    Paravant.GetChildNames()
    Paravant.InsertSetup("OptiParametric",
        ["NAME:KinoraHistory", "IsEnabled:=", true,
            ["NAME:ProdOptiSetupDataV2", "SaveFields:=", true, "CopyMesh:=", true,
                "SolveWithCopiedMeshOnly:=", true],
            ["NAME:StartingPoint"],
            "Sim. Setups:=", ["Setup1"],
            ["NAME:Sweeps",
                ["NAME:SweepDefinition", "Variable:=", "SimTime", "Data:=", "0s", "OffsetF1:=", false,
                    "Synchronize:=", 0.0],
                ["NAME:SweepDefinition", "Variable:=", "Rotor_Phi", "Data:=", "0.000000Rad", "OffsetF1:=", false,
                    "Synchronize:=", 0.0],
                ["NAME:SweepDefinition", "Variable:=", "Rotor_Psi", "Data:=", "1.570796Rad", "OffsetF1:=", false,
                    "Synchronize:=", 0.0],
                ["NAME:SweepDefinition", "Variable:=", "Rotor_Theta", "Data:=", "-0.000000Rad",
                    "OffsetF1:=", false, "Synchronize:=", 0.0],
                ["NAME:SweepDefinition", "Variable:=", "Rotor_X", "Data:=", "0.500000Meter", "OffsetF1:=", false,
                    "Synchronize:=", 0.0],
                ["NAME:SweepDefinition", "Variable:=", "Rotor_Y", "Data:=", "0.000000Meter", "OffsetF1:=", false,
                    "Synchronize:=", 0.0],
                ["NAME:SweepDefinition", "Variable:=", "Rotor_Z", "Data:=", "0.000000Meter", "OffsetF1:=", false,
                    "Synchronize:=", 0.0]],
            ["NAME:Sweep Operations"],
            ["NAME:Goals"]])
)~";

// Reports and the field plot.
const std::string reportsAndFieldPlot = R"~(
    design.GetProperties("LocalVariableTab", "LocalVariables")
    design.GetModule("ReportSetup")
    ReportSetup.CreateReport("Force_Rotor", "Magnetostatic", "Rectangular Plot", "Setup1 : LastAdaptive", empty,
        ["RegionPaddingX:=", ["All"],                    # the desktop's order of the variables
         "RegionPaddingY:=", ["Nominal"], "RegionPaddingZ:=", ["Nominal"], "SimTime:=", ["Nominal"],
         "Rotor_Phi:=", ["Nominal"], "Rotor_Psi:=", ["Nominal"], "Rotor_Theta:=", ["Nominal"],
         "Rotor_X:=", ["Nominal"], "Rotor_Y:=", ["Nominal"], "Rotor_Z:=", ["Nominal"]],
        ["X Component:=", "SimTime", "Y Component:=", []])
    ReportSetup.CreateReport("Torque_Rotor", "Magnetostatic", "Rectangular Plot", "Setup1 : LastAdaptive", empty,
        ["RegionPaddingX:=", ["All"],
         "RegionPaddingY:=", ["Nominal"], "RegionPaddingZ:=", ["Nominal"], "SimTime:=", ["Nominal"],
         "Rotor_Phi:=", ["Nominal"], "Rotor_Psi:=", ["Nominal"], "Rotor_Theta:=", ["Nominal"],
         "Rotor_X:=", ["Nominal"], "Rotor_Y:=", ["Nominal"], "Rotor_Z:=", ["Nominal"]],
        ["X Component:=", "SimTime", "Y Component:=", []])
    design.GetModule("FieldsReporter")
    FieldsReporter.CreateFieldPlot(
        ["NAME:H_VectorPlot", "SolutionName:=", "Setup1 : LastAdaptive", "UserSpecifyName:=", 0.0,
            "UserSpecifyFolder:=", 0.0, "QuantityName:=", "H_Vector", "PlotFolder:=", "H",
            "StreamlinePlot:=", false, "AdjacentSidePlot:=", false, "FullModelPlot:=", false,
            "IntrinsicVar:=", "", "EnableGaussianSmoothing:=", false,
            "PlotGeomInfo:=", [1.0, "Volume", "ObjList", 1.0, "Magnet"],
            "FilterBoxes:=", [0.0],
            ["NAME:PlotOnVolumeSettings", "PlotIsoSurface:=", true, "PointSize:=", 1.0, "Refinement:=", 0.0,
                "CloudSpacing:=", 0.5, "CloudMinSpacing:=", -1.0, "CloudMaxSpacing:=", -1.0,
                "ShadingType:=", 0.0,
                ["NAME:Arrow3DSpacingSettings", "ArrowUniform:=", true, "ArrowSpacing:=", 0.0,
                    "MinArrowSpacing:=", 0.0, "MaxArrowSpacing:=", 0.0]],
            "EnableGaussianSmoothing:=", false, "SurfaceOnly:=", false],
        "Field")
)~";

TEST_F(Model, OneMagnetBecomesAModel) {
    Create();
    fake.AddSolid(L"Magnet", L"\"N45\"");
    fake.AddMaterial(L"N45", {L"0", L"0", L"-900000"});
    fake.AddMaterial(L"vacuum");
    Group rotor = MakeGroup("Rotor", {"Magnet"}, 0.5);
    std::copy(std::begin(quarterTurnAboutX), std::end(quarterTurnAboutX), rotor.transform.rotation);
    EXPECT_TRUE(Init({rotor}, {{"Magnet", {"N45", {0.0, 0.0, 900000.0}}}}));
    EXPECT_TRANSCRIPT(fake.world, existingDesign + initialVariables + clonedMaterial + materialsInUse + placedBody +
                                      loadsAndReaders + historyWithItsFirstRow + reportsAndFieldPlot);
}

// Variables.

TEST_F(Model, ExistingInitialVariablesKeepTheirValues) {
    Create();
    fake.variables = {L"RegionPaddingX"};
    EXPECT_TRUE(Init({}));
    EXPECT_THAT(Created(), ElementsAre("RegionPaddingY=500", "RegionPaddingZ=500", "SimTime=0s"));
}

TEST_F(Model, VariableThatCannotBeCreatedOnlySpoilsTheResult) {
    Create();
    fake.design.OnCall("ChangeProperty", 2, Fails());
    EXPECT_FALSE(Init({MakeGroup("Rotor", {})}));
    EXPECT_EQ(Created().size(), 10U);
    EXPECT_EQ(fake.world.Count("InsertSetup"), 1U) << "it went on to the end";
    EXPECT_EQ(fake.world.Count("CreateReport"), 2U);
}

TEST_F(Model, PoseVariableThatCannotBeCreatedOnlySpoilsTheResult) {
    Create();
    fake.AddSolid(L"Magnet", L"\"N45\"");
    fake.design.OnCall("ChangeProperty", 5, Fails());
    EXPECT_FALSE(Init({MakeGroup("Rotor", {"Magnet"})}));
    EXPECT_EQ(fake.world.Count("AssignForce"), 1U);
    EXPECT_EQ(fake.world.Count("CreateFieldPlot"), 1U);
}

TEST_F(Model, BodyThatTheDesignHoldsIsOnlyUpdated) {
    Create();
    fake.AddSolid(L"Magnet", L"\"N45\"");
    fake.variables = {L"Rotor_X", L"Rotor_Y", L"Rotor_Z", L"Rotor_Phi", L"Rotor_Theta", L"Rotor_Psi"};
    EXPECT_TRUE(Init({MakeGroup("Rotor", {"Magnet"}, 1.0, 2.0, 3.0)}));
    EXPECT_THAT(Updated(), ElementsAre("Rotor_Phi=0.000000Rad", "Rotor_Psi=0.000000Rad", "Rotor_Theta=-0.000000Rad",
                                       "Rotor_X=1.000000Meter", "Rotor_Y=2.000000Meter", "Rotor_Z=3.000000Meter"));
    for (const char* const method : {"CreateRelativeCS", "Move", "Rotate", "SetWCS", "AssignForce", "AssignTorque",
                                     "CreateOutputVariable", "GetRelativeCoordinateSystems"}) {
        EXPECT_EQ(fake.world.Count(method), 0U) << method;
    }
    EXPECT_EQ(fake.world.Count("CreateReport"), 2U) << "its reports and the plot are made all the same";
    EXPECT_EQ(fake.world.Count("CreateFieldPlot"), 1U);
}

TEST_F(Model, BodyWithOneNewVariableIsSetUp) {
    Create();
    fake.AddSolid(L"Magnet", L"\"N45\"");
    fake.variables = {L"Rotor_X", L"Rotor_Y", L"Rotor_Z", L"Rotor_Phi", L"Rotor_Theta"};
    EXPECT_TRUE(Init({MakeGroup("Rotor", {"Magnet"})}));
    EXPECT_EQ(Updated().size(), 5U);
    EXPECT_EQ(fake.world.Count("AssignForce"), 1U);
}

TEST_F(Model, FailedUpdateEndsIt) {
    Create();
    fake.variables = {L"RegionPaddingX", L"RegionPaddingY", L"RegionPaddingZ", L"SimTime", L"R_X", L"R_Y", L"R_Z",
                      L"R_Phi",          L"R_Theta",        L"R_Psi"};
    fake.design.On("ChangeProperty", Fails());
    EXPECT_FALSE(Init({MakeGroup("R", {})}));
    EXPECT_EQ(fake.world.Entries().back().method, "ChangeProperty");
}

TEST_F(Model, SecondRunNeitherClonesNorPlacesAgain) {
    Create();
    fake.AddSolid(L"Magnet", L"\"N45\"");
    fake.AddMaterial(L"N45", {L"0", L"0", L"1"});
    const Materials wanted{{"Magnet", {"N45", {1.0, 0.0, 0.0}}}};
    ASSERT_TRUE(Init({MakeGroup("Rotor", {"Magnet"})}, wanted));
    fake.world.ClearJournal();
    EXPECT_TRUE(Init({MakeGroup("Rotor", {"Magnet"})}, wanted));
    EXPECT_THAT(Assigned(), ElementsAre("Magnet=N45_1"));
    EXPECT_THAT(Created(), IsEmpty());
    EXPECT_EQ(fake.world.Count("CloneMaterial"), 0U);
    EXPECT_EQ(fake.world.Count("DeleteSetups"), 1U) << "the history is built anew";
    EXPECT_EQ(fake.world.Count("InsertSetup"), 1U);
    const auto insert = std::find_if(fake.world.Entries().begin(), fake.world.Entries().end(),
                                     [](const Entry& entry) { return entry.method == "InsertSetup"; });
    EXPECT_EQ(insert->arguments[1].items[7].items.size(), 8U) << "time and six variables";
    EXPECT_EQ(Print(insert->arguments[1].items[8]), R"(["NAME:Sweep Operations"])") << "of one row only";
}

TEST_F(Model, ClonesOutliveTheirProject) {
    Create();
    fake.AddMaterial(L"N45", {L"0", L"0", L"1"});
    const Materials wanted{{"a", {"N45", {1.0, 0.0, 0.0}}}};
    ASSERT_TRUE(Init({}, wanted));
    ASSERT_TRUE(coupling.CloseProject());
    // The next project has the material as it came, and no clone of it.
    ASSERT_TRUE(coupling.CreateProject("other.vtdk", "magnets.obj", "mm"));
    fake.world.ClearJournal();
    fake.editor.On("AssignMaterial", [](const Arguments& arguments) {
        return arguments[1].items[2].text == L"\"N45\"" ? Nothing() : Fails();
    });
    EXPECT_FALSE(Init({}, wanted)) << "the object remembers the clone of the project before";
    EXPECT_THAT(Assigned(), ElementsAre("a=N45_1"));
    EXPECT_EQ(fake.world.Count("CloneMaterial"), 0U);

    // The cure: an object of its own for each project.
    ASSERT_TRUE(coupling.ReleaseApplication());
    CKinoraVeltrixCoupling other;
    ASSERT_TRUE(other.CreateProject("other.vtdk", "magnets.obj", "mm"));
    fake.editor.On("AssignMaterial", Nothing());
    fake.world.ClearJournal();
    EXPECT_TRUE(other.InitMagneticObjects({}, wanted));
    EXPECT_EQ(fake.world.Count("CloneMaterial"), 1U);
    EXPECT_TRUE(other.ReleaseApplication());
}

// Empty inputs.

TEST_F(Model, WithoutADesignNothingHappens) {
    Launch();
    EXPECT_FALSE(Init({MakeGroup("Rotor", {"Magnet"})}));
    EXPECT_TRANSCRIPT(fake.world, "");
}

TEST_F(Model, WithoutBodiesMaterialsAndHistoryAreMadeAndNoReports) {
    Create();
    fake.AddSolid(L"Magnet", L"\"N45\"");
    fake.AddMaterial(L"N45");
    EXPECT_TRUE(Init({}, {{"Magnet", {"N45", {}}}}));
    EXPECT_THAT(Assigned(), ElementsAre("Magnet=N45"));
    EXPECT_EQ(MethodsFrom("InsertSetup"), "InsertSetup GetProperties GetModule ");
    const auto insert = std::find_if(fake.world.Entries().begin(), fake.world.Entries().end(), [](const Entry& entry) {
        return entry.object == "Paravant" && entry.method == "InsertSetup";
    });
    EXPECT_EQ(Print(insert->arguments[1].items[7]),
              R"(["NAME:Sweeps", ["NAME:SweepDefinition", "Variable:=", "SimTime", "Data:=", "0s", )"
              R"("OffsetF1:=", false, "Synchronize:=", 0.0]])");
    EXPECT_EQ(Print(insert->arguments[1].items[8]), R"(["NAME:Sweep Operations"])");
}

TEST_F(Model, WithoutVariableNamesInTheEndTheResultComesEarly) {
    Create();
    fake.design.OnCall("GetProperties", 2, Nothing());
    EXPECT_TRUE(Init({MakeGroup("Rotor", {})}));
    EXPECT_EQ(fake.world.Entries().back().method, "GetModule");
    EXPECT_EQ(Print(fake.world.Entries().back().arguments[0]), R"("ReportSetup")");
}

TEST_F(Model, ReportModuleIsNeededAlsoWithoutVariableNames) {
    Create();
    fake.design.OnCall("GetProperties", 2, Nothing());
    fake.design.On("GetModule", [&](const Arguments& arguments) {
        return arguments[0].text == L"ReportSetup" ? NoObject() : Reference(fake.setupModule);
    });
    EXPECT_FALSE(Init({}));
    EXPECT_EQ(fake.world.Entries().back().method, "GetModule");
}

TEST_F(Model, BodyWithoutObjectsGetsNoLoadsAndNoPlot) {
    Create();
    EXPECT_TRUE(Init({MakeGroup("Rotor", {})}));
    EXPECT_EQ(fake.world.Count("CreateRelativeCS"), 2U);
    EXPECT_EQ(fake.world.Count("AssignForce"), 0U);
    EXPECT_EQ(fake.world.Count("CreateOutputVariable"), 0U);
    EXPECT_EQ(fake.world.Count("CreateReport"), 2U);
    EXPECT_EQ(fake.world.Count("CreateFieldPlot"), 0U);
}

TEST_F(Model, BodyOfVacuumAloneUsesItsObjectsAsTheyAre) {
    Create();
    fake.AddSolid(L"Air", L"\"vacuum\"");
    fake.AddMaterial(L"vacuum");
    EXPECT_TRUE(Init({MakeGroup("Rotor", {"Air"})}));
    ASSERT_EQ(Calls("AssignForce").size(), 1U);
    EXPECT_EQ(Calls("AssignForce")[0], R"(VeltrixParameterSetup(["NAME:Force_Rotor", "Reference CS:=", )"
                                       R"("Obj_CS_Rotor", "Is Virtual:=", true, "Objects:=", ["Air"]]))");
}

TEST_F(Model, LoadsActOnWhatIsNoVacuumAndThePlotShowsAll) {
    Create();
    fake.AddSolid(L"Air", L"\"vacuum\"");
    fake.AddSolid(L"Magnet", L"\"N45\"");
    fake.AddSolid(L"Yoke", L"\"iron\"");
    EXPECT_TRUE(Init({MakeGroup("A", {"Air", "Magnet"}), MakeGroup("B", {"Yoke"})}));
    EXPECT_EQ(Print(fake.world.Entries().back().arguments[0].items[22]),
              R"([1.0, "Volume", "ObjList", 3.0, "Air", "Magnet", "Yoke"])");
    EXPECT_THAT(Calls("AssignForce"),
                ElementsAre(testing::HasSubstr(R"(["Magnet"])"), testing::HasSubstr(R"(["Yoke"])")));
    EXPECT_EQ(MethodsFrom("CreateReport"), "CreateReport GetModule CreateFieldPlot ");
    EXPECT_EQ(fake.world.Count("CreateReport"), 4U);
}

// Materials.

TEST_F(Model, ObjectsOfOneDirectionShareAClone) {
    Create();
    fake.AddMaterial(L"N45", {L"0", L"0", L"-1"});
    EXPECT_TRUE(Init({}, {{"a", {"N45", {0.0, 1.0, -1.0}}},
                          {"b", {"N45", {0.0, 1.0, -1.0}}},
                          {"c", {"N45", {1.0, 1.0, 1.0}}},
                          {"d", {"N45", {0.0, 0.0, -1.0}}}}));
    EXPECT_THAT(Assigned(), ElementsAre("a=N45", "a=N45_1", "b=N45_1", "c=N45_2", "d=N45"));
    EXPECT_THAT(Calls("CloneMaterial"),
                ElementsAre(R"(definitions("N45", "N45_1"))", R"(definitions("N45", "N45_2"))"));
    EXPECT_THAT(Calls("SetPropValue"),
                ElementsAre(R"(Materials/N45_1("Magnetic Coercivity Components/Component2", 1.0))",
                            R"(Materials/N45_2("Magnetic Coercivity Components/Component1", 1.0))",
                            R"(Materials/N45_2("Magnetic Coercivity Components/Component2", 1.0))",
                            R"(Materials/N45_2("Magnetic Coercivity Components/Component3", 1.0))"));
}

TEST_F(Model, OwnComponentsOfTheMaterialNeedNoClone) {
    Create();
    fake.AddMaterial(L"N45", {L"-0.5A_per_meter", L" 2e3", L"text"}); // read as atof reads them
    EXPECT_TRUE(Init({}, {{"a", {"N45", {-0.5, 2000.0, 0.0}}}}));
    EXPECT_THAT(Assigned(), ElementsAre("a=N45", "a=N45"));
    EXPECT_EQ(fake.world.Count("CloneMaterial"), 0U);
}

TEST_F(Model, BothZerosAreTheSameComponent) {
    Create();
    fake.AddMaterial(L"N45", {L"0", L"0", L"1"});
    EXPECT_TRUE(Init({}, {{"a", {"N45", {-0.0, 0.0, 1.0}}}}));
    EXPECT_EQ(fake.world.Count("CloneMaterial"), 0U);
}

TEST_F(Model, CloneDifferingInOneComponentIsWrittenOnce) {
    Create();
    fake.AddMaterial(L"N45", {L"0", L"0", L"-1"});
    EXPECT_TRUE(Init({}, {{"a", {"N45", {0.0, 0.0, 0.25}}}}));
    EXPECT_THAT(Calls("SetPropValue"),
                ElementsAre(R"(Materials/N45_1("Magnetic Coercivity Components/Component3", 0.25))"));
}

TEST_F(Model, PlainMaterialIsAssignedWithoutFurtherQuestions) {
    Create();
    fake.AddMaterial(L"iron");
    EXPECT_TRUE(Init({}, {{"a", {"iron", {1.0, 0.0, 0.0}}}, {"b", {"iron", {}}}}));
    EXPECT_THAT(Assigned(), ElementsAre("a=iron", "b=iron"));
    EXPECT_EQ(fake.world.Count("GetPropNames"), 1U);
    fake.world.ClearJournal();
    EXPECT_TRUE(Init({}, {{"a", {"iron", {}}}}));
    EXPECT_EQ(fake.world.Count("GetPropNames"), 0U) << "remembered from run to run";
}

TEST_F(Model, FailedPropertyNamesMakeAMaterialPlain) {
    Create();
    fake.AddMaterial(L"N45", {L"0", L"0", L"1"}).On("GetPropNames", Fails());
    EXPECT_TRUE(Init({}, {{"a", {"N45", {1.0, 0.0, 0.0}}}}));
    EXPECT_THAT(Assigned(), ElementsAre("a=N45"));
}

TEST_F(Model, ComponentsThatAreNoTextAreReadAgainForTheNextObject) {
    Create();
    fake.AddMaterial(L"N45", {L"0", L"0", L"1"}).On("GetPropValue", Real(1.0));
    EXPECT_TRUE(Init({}, {{"a", {"N45", {1.0, 0.0, 0.0}}}, {"b", {"N45", {1.0, 0.0, 0.0}}}}));
    EXPECT_THAT(Assigned(), ElementsAre("a=N45", "b=N45"));
    EXPECT_EQ(fake.world.Count("GetPropValue"), 6U) << "all three are read before they are judged";
}

TEST_F(Model, OneComponentThatIsNoTextKeepsTheMaterial) {
    Create();
    fake.AddMaterial(L"N45", {L"0", L"0", L"1"}).OnCall("GetPropValue", 3, Fails());
    EXPECT_TRUE(Init({}, {{"a", {"N45", {1.0, 0.0, 0.0}}}}));
    EXPECT_THAT(Assigned(), ElementsAre("a=N45"));
    EXPECT_EQ(fake.world.Count("CloneMaterial"), 0U);
}

TEST_F(Model, NotANumberNeverMatchesAndClonesEveryTime) {
    Create();
    fake.AddMaterial(L"N45", {L"0", L"0", L"1"});
    const double none = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(Init({}, {{"a", {"N45", {none, 0.0, 1.0}}}, {"b", {"N45", {none, 0.0, 1.0}}}}));
    EXPECT_THAT(Assigned(), ElementsAre("a=N45", "a=N45_1", "b=N45_2"));
}

TEST_F(Model, MissingMaterialFails) {
    Create();
    EXPECT_FALSE(Init({}, {{"a", {"N45", {}}}}));
    EXPECT_EQ(fake.world.Entries().back().method, "GetChildObject");
}

TEST_F(Model, FailureOfAVariantFailsTheModel) {
    Create();
    fake.AddMaterial(L"N45", {L"0", L"0", L"1"});
    const auto fails = [&](Object& object, const char* method, unsigned number, const Answer& answer) {
        object.OnCall(method, number, answer);
        const bool failed = !Init({}, {{"a", {"N45", {1.0, 0.0, 0.0}}}});
        return failed && fake.world.Entries().back().method == method;
    };
    EXPECT_TRUE(fails(fake.editor, "AssignMaterial", 1, Fails()));
    EXPECT_TRUE(fails(fake.definitions, "CloneMaterial", 1, Fails()));
    EXPECT_TRUE(fails(fake.definitions, "CloneMaterial", 1, Flag(VARIANT_FALSE)));
    EXPECT_TRUE(fails(fake.materials, "GetChildObject", 1, NoObject())) << "the clone is not there";
    EXPECT_TRUE(fails(fake.editor, "AssignMaterial", 1, Fails())) << "the clone's own assignment";
}

TEST_F(Model, CloneThatCannotBeAssignedIsRememberedAllTheSame) {
    Create();
    fake.AddMaterial(L"N45", {L"0", L"0", L"1"});
    fake.editor.OnCall("AssignMaterial", 2, Fails());
    EXPECT_FALSE(Init({}, {{"a", {"N45", {1.0, 0.0, 0.0}}}}));
    fake.world.ClearJournal();
    EXPECT_TRUE(Init({}, {{"a", {"N45", {1.0, 0.0, 0.0}}}}));
    EXPECT_THAT(Assigned(), ElementsAre("a=N45_1"));
    EXPECT_EQ(fake.world.Count("CloneMaterial"), 0U);
}

TEST_F(Model, FailedWriteOfAComponentFailsTheModelAndForgetsTheClone) {
    Create();
    fake.AddMaterial(L"N45", {L"0", L"0", L"1"});
    fake.definitions.On("CloneMaterial", [&](const Arguments& arguments) {
        fake.AddMaterial(arguments[1].text, {L"0", L"0", L"1"}).On("SetPropValue", Fails());
        return Flag(VARIANT_TRUE);
    });
    EXPECT_FALSE(Init({}, {{"a", {"N45", {1.0, 0.0, 0.0}}}}));
    EXPECT_FALSE(Init({}, {{"a", {"N45", {1.0, 0.0, 0.0}}}}));
    EXPECT_THAT(Calls("CloneMaterial"),
                ElementsAre(R"(definitions("N45", "N45_1"))", R"(definitions("N45", "N45_1"))"));
}

TEST_F(Model, MaterialsOfBodiesAreAddedToTheProjectOnce) {
    Create();
    fake.AddMaterial(L"N45");
    fake.AddSolid(L"a", L"\"N45\"");
    fake.AddSolid(L"b", L"\"iron\"");
    fake.AddSolid(L"c", L"iron");
    fake.AddSolid(L"d", L"\"\"");
    fake.AddSolid(L"e", L"\"");
    fake.AddSolid(L"f", L"");
    fake.AddSolid(L"g", L"x").On("GetPropValue", Long(1));
    fake.AddSolid(L"h", L"\"\"quoted\"\"");
    fake.AddSolid(L"i", L"\"begun");
    EXPECT_TRUE(Init({MakeGroup("A", {"a", "b", "c", "g"}), MakeGroup("B", {"d", "e", "f", "h", "i"})}));
    EXPECT_THAT(Calls("AddMaterial"), ElementsAre(R"(project(["NAME:iron"]))", R"(project(["NAME:"]))",
                                                  R"(project(["NAME:\"quoted\""]))", R"(project(["NAME:\"begun"]))"));
}

TEST_F(Model, ObjectWhoseMaterialIsNoTextAddsNone) {
    Create();
    fake.AddSolid(L"a", L"x").On("GetPropValue", Long(1));
    fake.AddSolid(L"b", L"x").On("GetPropValue", Fails());
    EXPECT_TRUE(Init({MakeGroup("A", {"a", "b"})}));
    EXPECT_EQ(fake.world.Count("AddMaterial"), 0U);
}

TEST_F(Model, MissingObjectIsSkippedForMaterialsAndFailsAtItsPlacement) {
    Create();
    EXPECT_FALSE(Init({MakeGroup("A", {"missing"}, 1.0)}));
    EXPECT_THAT(Calls("GetChildObject"), testing::Contains(R"(editor("missing"))").Times(2));
    EXPECT_EQ(fake.world.Count("Move"), 1U);
    EXPECT_EQ(fake.world.Count("SetWCS"), 0U);
}

TEST_F(Model, FailedAddMaterialFails) {
    Create();
    fake.AddSolid(L"a", L"\"iron\"");
    fake.project.On("AddMaterial", Fails());
    EXPECT_FALSE(Init({MakeGroup("A", {"a"})}));
    EXPECT_EQ(fake.world.Entries().back().method, "AddMaterial");
}

// Every step that ends the model at its failure.

class ModelStep : public testing::TestWithParam<FailingCall>, protected CouplingSession {};

TEST_P(ModelStep, FailsAtOnce) {
    Create();
    fake.AddSolid(L"Magnet", L"\"N45\"");
    fake.AddMaterial(L"N45");
    GetParam().Plan(fake);
    EXPECT_FALSE(coupling.InitMagneticObjects({MakeGroup("Rotor", {"Magnet"}, 1.0)}, {{"Magnet", {"N45", {}}}}));
    EXPECT_EQ(fake.world.Entries().back().method, GetParam().last) << fake.world.Journal();
}

INSTANTIATE_TEST_SUITE_P(
    All, ModelStep,
    testing::Values(
        FailingCall{"LocalVariables", Design, "GetProperties", 1, Fails(), "GetProperties"},
        FailingCall{"SetupModule", Design, "GetModule", 1, Fails(), "GetModule"},
        FailingCall{"FirstSetup", Setups, "GetSetups", 2, Nothing(), "GetSetups"},
        FailingCall{"Editor", Design, "SetActiveEditor", 1, Text(L"editor"), "SetActiveEditor"},
        FailingCall{"Region", Editor, "CreateRegion", 1, Fails(), "CreateRegion"},
        FailingCall{"Materials", fake::Project, "GetChildObject", 1, NoObject(), "GetChildObject"},
        FailingCall{"DefinitionManager", fake::Project, "GetDefinitionManager", 1, Fails(), "GetDefinitionManager"},
        FailingCall{"NoDefinitionManager", fake::Project, "GetDefinitionManager", 1, Nothing(), "GetDefinitionManager"},
        FailingCall{"MaterialsAgain", fake::Project, "GetChildObject", 2, Fails(), "GetChildObject"},
        FailingCall{"ParameterModule", Design, "GetModule", 4, Fails(), "GetModule"},
        FailingCall{"CoordinateSystem", Editor, "CreateRelativeCS", 1, Fails(), "CreateRelativeCS"},
        FailingCall{"Orientation", Editor, "CreateRelativeCS", 2, Fails(), "CreateRelativeCS"},
        FailingCall{"Move", Editor, "Move", 1, Fails(), "Move"},
        FailingCall{"WorkingFrame", Editor, "SetWCS", 1, Fails(), "SetWCS"},
        FailingCall{"Force", Parameters, "AssignForce", 1, Fails(), "AssignForce"},
        FailingCall{"Torque", Parameters, "AssignTorque", 3, Fails(), "AssignTorque"},
        FailingCall{"OutputVariable", Outputs, "CreateOutputVariable", 6, Fails(), "CreateOutputVariable"},
        FailingCall{"History", Paravant, "InsertSetup", 1, Fails(), "InsertSetup"},
        FailingCall{"LocalVariablesAgain", Design, "GetProperties", 2, Fails(), "GetProperties"},
        FailingCall{"ReportModule", Design, "GetModule", 6, NoObject(), "GetModule"},
        FailingCall{"FieldsModule", Design, "GetModule", 7, Fails(), "GetModule"},
        FailingCall{"FieldPlot", Fields, "CreateFieldPlot", 1, Fails(), "CreateFieldPlot"}),
    FailingCall::NameOf<testing::TestParamInfo<FailingCall>>);

TEST_F(Model, ReportsThatCannotBeMadeDoNotMatter) {
    Create();
    fake.reportModule.On("CreateReport", Fails());
    EXPECT_TRUE(Init({MakeGroup("Rotor", {})}));
    EXPECT_EQ(fake.world.Count("CreateReport"), 2U);
}

TEST_F(Model, HostsLocaleDoesNotReachPlacement) {
    Create();
    fake.AddSolid(L"Magnet", L"\"N45\"");
    const CommaLocale comma;
    Group rotor = MakeGroup("Rotor", {"Magnet"}, 0.5);
    std::copy(std::begin(quarterTurnAboutX), std::end(quarterTurnAboutX), rotor.transform.rotation);
    EXPECT_TRUE(Init({rotor}));
    EXPECT_THAT(Created(), testing::IsSupersetOf({"Rotor_X=0.500000Meter", "Rotor_Psi=1.570796Rad"}));
    EXPECT_THAT(Calls("Move"), ElementsAre(testing::HasSubstr("\"-0.500000Meter\"")));
    EXPECT_THAT(Calls("Rotate"), ElementsAre(testing::HasSubstr("\"1.570796\"")));
}

TEST_F(Model, HostsLocaleDoesNotReachTheComponentsOfAMaterial) {
    Create();
    fake.AddMaterial(L"N45", {L"0.5", L"0", L"-0.25"});
    const CommaLocale comma;
    EXPECT_TRUE(Init({}, {{"a", {"N45", {0.5, 0.0, -0.25}}}}));
    EXPECT_THAT(Assigned(), ElementsAre("a=N45", "a=N45"));
    EXPECT_EQ(fake.world.Count("CloneMaterial"), 0U) << "the material has the components that are wanted";
}

TEST_F(Model, AlphabeticallyFirstSetupIsUsed) {
    Create();
    fake.setups = {L"Fine", L"Coarse"};
    fake.AddSolid(L"Magnet", L"\"N45\"");
    EXPECT_TRUE(Init({MakeGroup("Rotor", {"Magnet"})}));
    for (const std::string& call : Calls("CreateOutputVariable")) {
        EXPECT_THAT(call, testing::HasSubstr("\"Coarse : LastAdaptive\""));
    }
    EXPECT_THAT(Calls("CreateReport"), testing::Each(testing::HasSubstr("\"Coarse : LastAdaptive\"")));
}

} // namespace
