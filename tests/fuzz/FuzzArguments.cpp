// Any method of any object, with any tree of arguments, either works or fails with a script error.
//
// Input: bytes that choose object, method and arguments, one after the other. See ByteReader.
#include "simulator/commands/DesignObject.h"
#include "simulator/commands/ProjectObject.h"
#include "simulator/commands/ScriptObject.h"
#include "simulator/model/DesktopError.h"
#include "tests/fuzz/InputBytes.h"

#include <array>
#include <cstdlib>
#include <string>
#include <vector>

using namespace vantor;
using commands::Value;

namespace {

/// Texts that commands know, so that arguments get further than the first check.
const std::vector<std::string> words = {
    "",
    "Global",
    "Rotor",
    "SimTime",
    "Setup1",
    "Setup1 : LastAdaptive",
    "Magnetostatic",
    "\"vacuum\"",
    "\"\"",
    "nan ",
    "NAME:Selections",
    "Selections:=",
    "NewPartsModelFlag:=",
    "Model",
    "NAME:RotateParameters",
    "RotateAxis:=",
    "X",
    "RotateAngle:=",
    "0.5",
    "NAME:TranslateParameters",
    "TranslateVectorX:=",
    "TranslateVectorY:=",
    "TranslateVectorZ:=",
    "1mm",
    "NAME:AllTabs",
    "NAME:LocalVariableTab",
    "NAME:PropServers",
    "LocalVariables",
    "NAME:NewProps",
    "NAME:ChangedProps",
    "NAME:SimTime",
    "NAME:fresh",
    "PropType:=",
    "VariableProp",
    "UserDef:=",
    "Value:=",
    "NAME:Force_New",
    "Reference CS:=",
    "Coordinate System:=",
    "Is Virtual:=",
    "Is Positive:=",
    "Axis:=",
    "Objects:=",
    "NAME:Attributes",
    "Name:=",
    "NAME:RelativeCSParameters",
    "Mode:=",
    "Axis/Position",
    "OriginX:=",
    "OriginY:=",
    "OriginZ:=",
    "XAxisXvec:=",
    "XAxisYvec:=",
    "XAxisZvec:=",
    "YAxisXvec:=",
    "YAxisYvec:=",
    "YAxisZvec:=",
    "NAME:KinoraHistory",
    "KinoraHistory",
    "OptiParametric",
    "IsEnabled:=",
    "NAME:ProdOptiSetupDataV2",
    "SaveFields:=",
    "CopyMesh:=",
    "SolveWithCopiedMeshOnly:=",
    "NAME:StartingPoint",
    "Sim. Setups:=",
    "NAME:Sweeps",
    "NAME:SweepDefinition",
    "Variable:=",
    "Data:=",
    "OffsetF1:=",
    "Synchronize:=",
    "NAME:Sweep Operations",
    "add:=",
    "NAME:Goals",
    "NAME:Setup1",
    "Enabled:=",
    "MaximumPasses:=",
    "PercentError:=",
    "NAME:ExpressionCache",
    "NAME:CacheItem",
    "Title:=",
    "Expression:=",
    "ReportType:=",
    "NAME:ExpressionContext",
    "Rectangular Plot",
    "SimTime:=",
    "All",
    "X Component:=",
    "Y Component:=",
    "Report",
    "Report:=",
    "magnet_1T",
    "NAME:magnet_1T",
};

/// Arguments from the input.
class ByteReader : public InputBytes {
public:
    using InputBytes::InputBytes;

    Value Argument(int depth) {
        switch (Byte() % (depth > 5 ? 8U : 10U)) {
        case 0:
            return {};
        case 1:
            return Byte() % 2 == 0;
        case 2:
            return static_cast<double>(Byte()) / 4.0 - 8.0;
        case 3:
            return Value::Int(static_cast<int>(Byte()) - 4);
        case 4:
            return Value(Value::Foreign{static_cast<std::uint16_t>(Byte())});
        case 5:
            return FreeText();
        case 6:
        case 7:
            return words[Byte() % words.size()];
        default:
            return Arguments(depth + 1);
        }
    }

    Value::List Arguments(int depth) {
        Value::List list;
        for (unsigned count = Byte() % 20U; count > 0 && !AtEnd(); --count) {
            list.push_back(Argument(depth));
        }
        return list;
    }

private:
    std::string FreeText() {
        std::string text;
        for (unsigned count = Byte() % 12U; count > 0; --count) {
            text += static_cast<char>(Byte());
        }
        return text;
    }
};

Value::Object ObjectOf(const Value& value) {
    return *value.AsObject();
}

/// The objects of a desktop with one design, one solid and one setup.
std::vector<Value::Object> MakeObjects(const std::shared_ptr<model::Desktop>& desktop) {
    const auto session = std::make_shared<commands::Session>(desktop, [] {});
    const auto project = desktop->NewProject();
    auto design = std::make_shared<model::Design>();
    design->name = "D";
    design->variables.Add({{"SimTime", "0s"}});
    model::Box box;
    box.Add({0.0, 0.0, 0.0});
    box.Add({1.0, 1.0, 1.0});
    design->modeler.Import({{{"Rotor", "magnet_1T", model::BoxMesh(box)}}, {}}, true);
    model::AnalysisSetup setup;
    setup.name = "Setup1";
    setup.maximumPasses = 1;
    design->setups.push_back(setup);
    project->designs.push_back(design);
    const auto projectObject = commands::MakeProject(session, project);
    const auto designObject = commands::MakeDesign(session, {project, design});
    const auto editor = ObjectOf(designObject->Call("SetActiveEditor", {"3D Modeler"}));
    std::vector<Value::Object> objects = {designObject, editor, ObjectOf(editor->Call("GetChildObject", {"Rotor"}))};
    for (const char* module : {"AnalysisSetup", "OutputVariable", "VeltrixParameterSetup", "FieldsReporter"}) {
        objects.push_back(ObjectOf(designObject->Call("GetModule", {module})));
    }
    objects.push_back(ObjectOf(designObject->Call("GetChildObject", {"Paravant"})));
    objects.push_back(ObjectOf(projectObject->Call("GetDefinitionManager")));
    objects.push_back(ObjectOf(projectObject->Call("GetChildObject", {"Materials"})));
    return objects;
}

/// Commands that read or write files at a path of the fuzzer's making stay out of the game.
bool TouchesFiles(const commands::ScriptObject& object, int method) {
    return object.FindMethod("Import") == method || object.FindMethod("ImportIntoReport") == method;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const auto desktop = std::make_shared<model::Desktop>();
    desktop->library = model::BuiltInMaterials();
    const auto objects = MakeObjects(desktop);
    ByteReader reader(data, size);
    for (int calls = 0; calls < 8 && !reader.AtEnd(); ++calls) {
        commands::ScriptObject& object = *objects[reader.Byte() % objects.size()];
        const int method = static_cast<int>(reader.Byte()) % object.MethodCount();
        const Value::List arguments = reader.Arguments(0);
        if (TouchesFiles(object, method)) {
            continue;
        }
        try {
            object.Invoke(method, arguments);
        } catch (const model::DesktopError& error) {
            if (error.Code() == model::ErrorCode::InternalError) {
                std::abort();
            }
        }
    }
    return 0;
}
