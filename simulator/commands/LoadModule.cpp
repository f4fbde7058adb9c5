#include "simulator/commands/LoadModule.h"

#include "simulator/commands/BlockReader.h"
#include "simulator/commands/DesignBound.h"
#include "simulator/commands/Requirements.h"
#include "simulator/model/Text.h"

#include <set>

namespace vantor::commands {
namespace {

using model::Quoted;

/// The module "VeltrixParameterSetup".
class LoadModule : public DesignBound {
public:
    LoadModule(SessionPointer session, DesignReference design)
        : DesignBound(methods, std::move(session), std::move(design)) {}

private:
    static const MethodTable methods;

    Value AssignForce(Arguments& arguments) {
        BlockReader block(arguments.List(), "argument 1");
        model::LoadParameter load;
        load.kind = model::LoadParameter::Kind::Force;
        load.name = block.Name();
        load.frame = ReadFrameName(block, "Reference CS:=");
        block.Literal("Is Virtual:=", true);
        load.objects = ReadObjects(block);
        block.End();
        arguments.End();
        Add(load);
        return {};
    }

    Value AssignTorque(Arguments& arguments) {
        BlockReader block(arguments.List(), "argument 1");
        model::LoadParameter load;
        load.kind = model::LoadParameter::Kind::Torque;
        load.name = block.Name();
        load.frame = ReadFrameName(block, "Coordinate System:=");
        block.Literal("Is Virtual:=", true);
        load.isPositive = block.Flag("Is Positive:=");
        const std::string& axis = block.Text("Axis:=");
        RequireOneOf(axis, {"X", "Y", "Z"}, block.LocationOf("Axis:="));
        load.axis = axis.front();
        load.objects = ReadObjects(block);
        block.End();
        arguments.End();
        Add(load);
        return {};
    }

    std::string ReadFrameName(BlockReader& block, const char* key) const {
        const std::string& frame = block.Text(key);
        if (!RequireDesign().modeler.HasFrame(frame)) {
            FailBadValue(block.LocationOf(key) + ": there is no coordinate system " + Quoted(frame));
        }
        return frame;
    }

    std::vector<std::string> ReadObjects(BlockReader& block) const {
        std::vector<std::string> objects = block.Texts("Objects:=");
        if (objects.empty()) {
            FailBadValue(block.LocationOf("Objects:=") + ": at least one object is needed");
        }
        std::set<std::string> seen;
        for (const auto& object : objects) {
            RequireDesign().modeler.RequireObject(object);
            if (!seen.insert(object).second) {
                FailBadValue(block.LocationOf("Objects:=") + ": the object " + Quoted(object) + " stands there twice");
            }
        }
        return objects;
    }

    void Add(const model::LoadParameter& load) const {
        if (!model::IsIdentifier(load.name)) {
            FailBadValue("a force or torque cannot be named " + Quoted(load.name));
        }
        if (model::FindByName(RequireDesign().loads, load.name)) {
            FailBadValue("a force or torque named " + Quoted(load.name) + " exists already");
        }
        RequireDesign().loads.push_back(load);
        MarkModelChanged();
    }
};

const ScriptObject::MethodTable LoadModule::methods = {
    {"AssignForce", Bound<&LoadModule::AssignForce>::Handle},
    {"AssignTorque", Bound<&LoadModule::AssignTorque>::Handle},
};

} // namespace

Value::Object MakeLoadModule(SessionPointer session, DesignReference design) {
    return std::make_shared<LoadModule>(std::move(session), std::move(design));
}

} // namespace vantor::commands
