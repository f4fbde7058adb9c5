#include "tests/simulator/automation/Desk.h"

#include "simulator/commands/Application.h"
#include "simulator/model/DesktopError.h"
#include "simulator/model/Files.h"
#include "tests/support/Complaint.h"

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>

namespace desk {

using namespace vantor;

Desk::Desk() : world(std::make_shared<model::Desktop>()) {
    world->library = model::BuiltInMaterials();
    world->options[model::updateReportsKey] = "Automatically";
    static std::atomic<int> number{0};
    const auto folder = std::filesystem::temp_directory_path() /
                        ("vantor-desk-" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) + "-" +
                         std::to_string(reinterpret_cast<std::uintptr_t>(this)) + "-" + std::to_string(++number));
    std::filesystem::create_directories(folder);
    m_folder = model::Utf8(folder);
    const auto session = std::make_shared<commands::Session>(world, [this] { quit = true; });
    desktop = ObjectOf(commands::MakeApplication(session)->Call("GetAppDesktop"));
}

Desk::~Desk() {
    std::error_code ignored;
    std::filesystem::remove_all(model::PathFromUtf8(m_folder), ignored);
}

Value::Object Desk::NewClient() const {
    const auto session = std::make_shared<commands::Session>(world, [] {});
    return ObjectOf(commands::MakeApplication(session)->Call("GetAppDesktop"));
}

std::string Desk::File(const std::string& name) const {
    return m_folder + "/" + name;
}

void Desk::WriteFile(const std::string& name, const std::string& content) const {
    model::WriteWholeFile(model::PathFromUtf8(File(name)), content);
}

void Desk::Create(const std::string& objText) {
    WriteFile("geometry.obj", objText);
    project = ObjectOf(desktop->Call("NewProject"));
    project->Call("SaveAs", {File("pair.vtdk"), false});
    project->Call("InsertDesign", {"Veltrix 3D", "Veltrix3DDesign1", "Magnetostatic", ""});
    design = ObjectOf(project->Call("SetActiveDesign", {"Veltrix3DDesign1"}));
    editor = ObjectOf(design->Call("SetActiveEditor", {"3D Modeler"}));
    editor->Call("SetModelUnits", {List{"NAME:Units Parameter", "Units:=", "mm", "Rescale:=", false}});
    editor->Call("Import", {List{"NAME:NativeBodyParameters", "ImportMaterialNames:=", true,
                                 "SourceFile:=", File("geometry.obj")}});
    ObjectOf(design->Call("GetModule", {"AnalysisSetup"}))
        ->Call("InsertSetup", {"Magnetostatic",
                               List{"NAME:Setup1", "Enabled:=", true, "MaximumPasses:=", 15.0, "PercentError:=", 0.5}});
}

void Desk::AddVariable(const std::string& name, const std::string& value) const {
    design->Call("ChangeProperty", {NewVariableArgument(name, value)});
}

void Desk::ChangeVariable(const std::string& name, const std::string& value) const {
    design->Call("ChangeProperty", {ChangedVariableArgument(name, value)});
}

void Desk::CreateRegion() const {
    for (const char* axis : {"X", "Y", "Z"}) {
        AddVariable(std::string("RegionPadding") + axis, "500");
    }
    editor->Call("CreateRegion", {RegionParameters(), RegionAttributes()});
}

void Desk::AddBody(const std::string& body, const std::string& object, const std::string& material, double x) {
    char text[32];
    std::snprintf(text, sizeof(text), "%fMeter", x);
    AddVariable(body + "_X", text);
    for (const char* suffix : {"_Y", "_Z"}) {
        AddVariable(body + suffix, "0.000000Meter");
    }
    for (const char* suffix : {"_Phi", "_Psi", "_Theta"}) {
        AddVariable(body + suffix, "0.000000Rad");
    }
    const List selections = {"NAME:Selections", "Selections:=", object, "NewPartsModelFlag:=", "Model"};
    editor->Call("AssignMaterial", {List{"NAME:Selections", "Selections:=", object,
                                         "AllowRegionDependentPartSelectionForPMLCreation:=", true,
                                         "AllowRegionSelectionForPMLCreation:=", true},
                                    AssignMaterialAttributes(material)});
    editor->Call("CreateRelativeCS", {FrameParameters(body), List{"NAME:Attributes", "Name:=", "Obj_CS_" + body}});
    std::snprintf(text, sizeof(text), "%fMeter", -x);
    editor->Call("Move", {selections, List{"NAME:TranslateParameters", "TranslateVectorX:=", text, "TranslateVectorY:=",
                                           "-0.000000Meter", "TranslateVectorZ:=", "-0.000000Meter"}});
    const auto solid = ObjectOf(editor->Call("GetChildObject", {object}));
    solid->Call("SetPropValue", {"Coordinate System", "Obj_CS_" + body});
    solid->Call("SetPropValue", {"Orientation", "Obj_CS_" + body});
    editor->Call("SetWCS",
                 {List{"NAME:SetWCS Parameter", "Working Coordinate System:=", "Global", "RegionDepCSOk:=", true}});
    const auto loads = ObjectOf(design->Call("GetModule", {"VeltrixParameterSetup"}));
    const auto outputs = ObjectOf(design->Call("GetModule", {"OutputVariable"}));
    loads->Call("AssignForce", {ForceArgument(body, object)});
    for (const char* axis : {"X", "Y", "Z"}) {
        loads->Call("AssignTorque", {TorqueArgument(body, axis, object)});
    }
    for (const std::string axis : {"x", "y", "z"}) {
        const std::string upper(1, static_cast<char>(axis[0] - 'x' + 'X'));
        outputs->Call("CreateOutputVariable",
                      {"Force_" + body + "_" + upper, "Force_" + body + ".Force_" + axis + "/1Newton",
                       "Setup1 : LastAdaptive", "Magnetostatic", List{}});
        const std::string torque = "Torque_" + body + "_" + upper;
        outputs->Call("CreateOutputVariable",
                      {torque, torque + ".Torque/1mNewtonMeter", "Setup1 : LastAdaptive", "Magnetostatic", List{}});
    }
}

double Desk::Output(const std::string& name) const {
    const Value value =
        ObjectOf(design->Call("GetModule", {"OutputVariable"}))
            ->Call("GetOutputVariableValue", {name, "", "Setup1 : LastAdaptive", "Magnetostatic", List{}});
    return *value.AsNumber();
}

std::vector<std::string> Desk::Messages(int severity) const {
    return TextsOf(
        desktop->Call("GetMessages", {project->Call("GetName"), design->Call("GetName"), Value::Int(severity)}));
}

Value::Object ObjectOf(const Value& value) {
    const Value::Object* object = value.AsObject();
    EXPECT_NE(object, nullptr) << value.Kind();
    return object == nullptr ? nullptr : *object;
}

std::vector<std::string> TextsOf(const Value& value) {
    std::vector<std::string> texts;
    for (const auto& element : *value.AsList()) {
        texts.push_back(*element.AsText());
    }
    return texts;
}

std::string Complaint(const std::function<void()>& command) {
    return fake::ComplaintOf<model::DesktopError>(command);
}

List NewVariableArgument(const std::string& name, const std::string& value) {
    return {"NAME:AllTabs", List{"NAME:LocalVariableTab", List{"NAME:PropServers", "LocalVariables"},
                                 List{"NAME:NewProps", List{"NAME:" + name, "PropType:=", "VariableProp",
                                                            "UserDef:=", true, "Value:=", value}}}};
}

List ChangedVariableArgument(const std::string& name, const std::string& value) {
    return {"NAME:AllTabs", List{"NAME:LocalVariableTab", List{"NAME:PropServers", "LocalVariables"},
                                 List{"NAME:ChangedProps", List{"NAME:" + name, "Value:=", value}}}};
}

List RegionParameters() {
    List parameters = {"NAME:RegionParameters"};
    for (const std::string side : {"+X", "-X", "+Y", "-Y", "+Z", "-Z"}) {
        for (const Value& element : List{side + "PaddingType:=", "Percentage Offset",
                                         side + "Padding:=", std::string("RegionPadding") + side[1]}) {
            parameters.push_back(element);
        }
    }
    return parameters;
}

List RegionAttributes() {
    return {"NAME:Attributes",
            "Name:=",
            "OuterRegion",
            "Flags:=",
            "Wireframe#",
            "Color:=",
            "(143 175 143)",
            "Transparency:=",
            0.0,
            "PartCoordinateSystem:=",
            "Global",
            "UDMId:=",
            "",
            "MaterialValue:=",
            "\"vacuum\"",
            "SurfaceMaterialValue:=",
            "\"\"",
            "SolveInside:=",
            true,
            "ShellElement:=",
            false,
            "ShellElementThickness:=",
            "nan ",
            "IsMaterialEditable:=",
            true,
            "UseMaterialAppearance:=",
            false,
            "IsLightweight:=",
            false};
}

List FrameParameters(const std::string& b) {
    const std::string p = b + "_Phi", t = b + "_Theta", s = b + "_Psi";
    return {"NAME:RelativeCSParameters",
            "Mode:=",
            "Axis/Position",
            "OriginX:=",
            b + "_X",
            "OriginY:=",
            b + "_Y",
            "OriginZ:=",
            b + "_Z",
            "XAxisXvec:=",
            "cos(" + p + ")*cos(" + t + ")",
            "XAxisYvec:=",
            "sin(" + s + ")*sin(" + p + ")*cos(" + t + ")-cos(" + s + ")*sin(" + t + ")",
            "XAxisZvec:=",
            "cos(" + s + ")*sin(" + p + ")*cos(" + t + ")+sin(" + s + ")*sin(" + t + ")",
            "YAxisXvec:=",
            "cos(" + p + ")*sin(" + t + ")",
            "YAxisYvec:=",
            "sin(" + s + ")*sin(" + p + ")*sin(" + t + ")+cos(" + s + ")*cos(" + t + ")",
            "YAxisZvec:=",
            "cos(" + s + ")*sin(" + p + ")*sin(" + t + ")-sin(" + s + ")*cos(" + t + ")"};
}

List ForceArgument(const std::string& body, const std::string& object) {
    return {"NAME:Force_" + body, "Reference CS:=", "Obj_CS_" + body, "Is Virtual:=", true, "Objects:=", List{object}};
}

List TorqueArgument(const std::string& body, const std::string& axis, const std::string& object) {
    return {"NAME:Torque_" + body + "_" + axis,
            "Coordinate System:=",
            "Obj_CS_" + body,
            "Is Virtual:=",
            true,
            "Is Positive:=",
            true,
            "Axis:=",
            axis,
            "Objects:=",
            List{object}};
}

List AssignMaterialAttributes(const std::string& material) {
    return {"NAME:Attributes",
            "MaterialValue:=",
            "\"" + material + "\"",
            "SolveInside:=",
            true,
            "ShellElement:=",
            false,
            "ShellElementThickness:=",
            "nan ",
            "IsMaterialEditable:=",
            true,
            "UseMaterialAppearance:=",
            false,
            "IsLightweight:=",
            false};
}

List HistoryArgument(const std::vector<std::string>& names, const std::vector<std::vector<std::string>>& rows) {
    List sweeps = {"NAME:Sweeps"}, operations = {"NAME:Sweep Operations"};
    for (std::size_t i = 0; i < names.size(); ++i) {
        sweeps.push_back(List{"NAME:SweepDefinition", "Variable:=", names[i], "Data:=", rows[0][i], "OffsetF1:=", false,
                              "Synchronize:=", 0.0});
    }
    for (std::size_t i = 1; i < rows.size(); ++i) {
        operations.push_back("add:=");
        operations.push_back(Value::Texts(rows[i]));
    }
    return {
        "NAME:KinoraHistory",
        "IsEnabled:=",
        true,
        List{"NAME:ProdOptiSetupDataV2", "SaveFields:=", true, "CopyMesh:=", true, "SolveWithCopiedMeshOnly:=", true},
        List{"NAME:StartingPoint"},
        "Sim. Setups:=",
        List{"Setup1"},
        sweeps,
        operations,
        List{"NAME:Goals"}};
}

List FieldPlotArgument(const std::vector<std::string>& objects) {
    List geometry = {1.0, "Volume", "ObjList", static_cast<double>(objects.size())};
    for (const auto& object : objects) {
        geometry.push_back(object);
    }
    const List arrows = {"NAME:Arrow3DSpacingSettings",
                         "ArrowUniform:=",
                         true,
                         "ArrowSpacing:=",
                         0.0,
                         "MinArrowSpacing:=",
                         0.0,
                         "MaxArrowSpacing:=",
                         0.0};
    const List volume = {"NAME:PlotOnVolumeSettings",
                         "PlotIsoSurface:=",
                         true,
                         "PointSize:=",
                         1.0,
                         "Refinement:=",
                         0.0,
                         "CloudSpacing:=",
                         0.5,
                         "CloudMinSpacing:=",
                         -1.0,
                         "CloudMaxSpacing:=",
                         -1.0,
                         "ShadingType:=",
                         0.0,
                         arrows};
    return {"NAME:H_VectorPlot",
            "SolutionName:=",
            "Setup1 : LastAdaptive",
            "UserSpecifyName:=",
            0.0,
            "UserSpecifyFolder:=",
            0.0,
            "QuantityName:=",
            "H_Vector",
            "PlotFolder:=",
            "H",
            "StreamlinePlot:=",
            false,
            "AdjacentSidePlot:=",
            false,
            "FullModelPlot:=",
            false,
            "IntrinsicVar:=",
            "",
            "EnableGaussianSmoothing:=",
            false,
            "PlotGeomInfo:=",
            geometry,
            "FilterBoxes:=",
            List{0.0},
            volume,
            "EnableGaussianSmoothing:=",
            false,
            "SurfaceOnly:=",
            false};
}

} // namespace desk
