#include "simulator/commands/BoundObjects.h"
#include "simulator/model/Text.h"

#include <cmath>
#include <set>

namespace vantor::commands {
namespace {

using model::DesktopError;
using model::ErrorCode;
using model::Quoted;

constexpr const char* magnetostatic = "Magnetostatic";

/// A number of passes: whole, 1 or more.
int NeedPasses(double value, const std::string& place) {
    if (value < 1.0 || value > 1000.0 || value != std::floor(value)) {
        FailBadValue(place + " must be a whole number from 1 to 1000, not " + model::FormatNumber(value));
    }
    return static_cast<int>(value);
}

double NeedPercent(double value, const std::string& place) {
    if (!(value > 0.0) || value > 100.0) {
        FailBadValue(place + " must be more than 0 and at most 100, not " + model::FormatNumber(value));
    }
    return value;
}

/// The module "AnalysisSetup".
class SetupModule : public DesignBound {
public:
    using DesignBound::DesignBound;

    const char* Kind() const override { return "AnalysisSetup module"; }

private:
    const std::vector<Method>& Methods() const override {
        static const std::vector<Method> methods = {
            {"GetSetups", Bound<&SetupModule::Names<&model::Design::setups>>::Handle},
            {"InsertSetup", Bound<&SetupModule::InsertSetup>::Handle},
            {"EditSetup", Bound<&SetupModule::EditSetup>::Handle},
        };
        return methods;
    }

    Value InsertSetup(Arguments& arguments) {
        model::AnalysisSetup setup;
        setup.type = arguments.Text();
        NeedOneOf(setup.type, {magnetostatic}, "argument 1");
        BlockReader block(arguments.List(), "argument 2");
        setup.name = block.Name();
        if (setup.name.empty()) {
            FailBadValue("argument 2: a setup needs a name");
        }
        setup.enabled = block.Flag("Enabled:=");
        setup.maximumPasses = NeedPasses(block.Number("MaximumPasses:="), block.PlaceOf("MaximumPasses:="));
        setup.percentError = NeedPercent(block.Number("PercentError:="), block.PlaceOf("PercentError:="));
        block.End();
        arguments.End();
        if (model::FindByName(TheDesign().setups, setup.name) != nullptr) {
            FailBadValue("a setup named " + Quoted(setup.name) + " exists already");
        }
        TheDesign().setups.push_back(setup);
        MarkChanged();
        return {};
    }

    Value EditSetup(Arguments& arguments) {
        const std::string& name = arguments.Text();
        BlockReader block(arguments.List(), "argument 2", name);
        model::AnalysisSetup& present = NeedNamed(TheDesign().setups, name, "setup");
        model::AnalysisSetup setup = present;
        setup.enabled = block.Flag("Enabled:=");
        if (block.NextIs("MaximumPasses:=")) {
            setup.maximumPasses = NeedPasses(block.Number("MaximumPasses:="), block.PlaceOf("MaximumPasses:="));
        }
        if (block.NextIs("PercentError:=")) {
            setup.percentError = NeedPercent(block.Number("PercentError:="), block.PlaceOf("PercentError:="));
        }
        if (!block.AtEnd()) {
            setup.expressionCache = ReadExpressionCache(block.Block("ExpressionCache"));
        }
        block.End();
        arguments.End();
        present = setup;
        MarkModelChanged();
        return {};
    }

    std::vector<model::ExpressionCacheItem> ReadExpressionCache(BlockReader cache) const {
        std::vector<model::ExpressionCacheItem> items;
        while (!cache.AtEnd()) {
            BlockReader entry = cache.Block("CacheItem");
            model::ExpressionCacheItem item;
            item.title = entry.Text("Title:=");
            item.expression = entry.Text("Expression:=");
            model::CheckOutputExpression(TheDesign(), item.expression);
            entry.Literal("ReportType:=", magnetostatic);
            item.reportType = magnetostatic;
            entry.Block("ExpressionContext").End();
            entry.End();
            items.push_back(std::move(item));
        }
        return items;
    }
};

/// The module "VeltrixParameterSetup".
class LoadModule : public DesignBound {
public:
    using DesignBound::DesignBound;

    const char* Kind() const override { return "VeltrixParameterSetup module"; }

private:
    const std::vector<Method>& Methods() const override {
        static const std::vector<Method> methods = {
            {"AssignForce", Bound<&LoadModule::AssignForce>::Handle},
            {"AssignTorque", Bound<&LoadModule::AssignTorque>::Handle},
        };
        return methods;
    }

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
        NeedOneOf(axis, {"X", "Y", "Z"}, block.PlaceOf("Axis:="));
        load.axis = axis.front();
        load.objects = ReadObjects(block);
        block.End();
        arguments.End();
        Add(load);
        return {};
    }

    std::string ReadFrameName(BlockReader& block, const char* key) const {
        const std::string& frame = block.Text(key);
        if (!TheDesign().modeler.HasFrame(frame)) {
            FailBadValue(block.PlaceOf(key) + ": there is no coordinate system " + Quoted(frame));
        }
        return frame;
    }

    std::vector<std::string> ReadObjects(BlockReader& block) const {
        std::vector<std::string> objects = block.Texts("Objects:=");
        if (objects.empty()) {
            FailBadValue(block.PlaceOf("Objects:=") + ": at least one object is needed");
        }
        std::set<std::string> seen;
        for (const auto& object : objects) {
            TheDesign().modeler.Object(object);
            if (!seen.insert(object).second) {
                FailBadValue(block.PlaceOf("Objects:=") + ": the object " + Quoted(object) + " stands there twice");
            }
        }
        return objects;
    }

    void Add(const model::LoadParameter& load) const {
        if (!model::IsIdentifier(load.name)) {
            FailBadValue("a force or torque cannot be named " + Quoted(load.name));
        }
        if (model::FindByName(TheDesign().loads, load.name) != nullptr) {
            FailBadValue("a force or torque named " + Quoted(load.name) + " exists already");
        }
        TheDesign().loads.push_back(load);
        MarkModelChanged();
    }
};

/// The module "OutputVariable".
class OutputVariableModule : public DesignBound {
public:
    using DesignBound::DesignBound;

    const char* Kind() const override { return "OutputVariable module"; }

private:
    const std::vector<Method>& Methods() const override {
        static const std::vector<Method> methods = {
            {"CreateOutputVariable", Bound<&OutputVariableModule::CreateOutputVariable>::Handle},
            {"GetOutputVariableValue", Bound<&OutputVariableModule::GetOutputVariableValue>::Handle},
            {"GetOutputVariables", Bound<&OutputVariableModule::GetOutputVariables>::Handle},
        };
        return methods;
    }

    Value CreateOutputVariable(Arguments& arguments) {
        model::OutputVariable variable;
        variable.name = arguments.Text();
        variable.expression = arguments.Text();
        variable.solution = arguments.Text();
        arguments.Literal(magnetostatic);
        variable.reportType = magnetostatic;
        arguments.EmptyList();
        arguments.End();
        if (!model::IsIdentifier(variable.name)) {
            FailBadValue("an output variable cannot be named " + Quoted(variable.name));
        }
        if (model::FindByName(TheDesign().outputVariables, variable.name) != nullptr) {
            FailBadValue("an output variable named " + Quoted(variable.name) + " exists already");
        }
        model::SetupOfSolution(TheDesign(), variable.solution);
        model::CheckOutputExpression(TheDesign(), variable.expression);
        TheDesign().outputVariables.push_back(variable);
        MarkChanged();
        return {};
    }

    Value GetOutputVariableValue(Arguments& arguments) {
        const std::string& name = arguments.Text();
        arguments.Literal("");
        const std::string& solution = arguments.Text();
        arguments.Literal(magnetostatic);
        arguments.EmptyList();
        arguments.End();
        const model::OutputVariable* variable = model::FindByName(TheDesign().outputVariables, name);
        if (variable == nullptr) {
            FailBadValue("there is no output variable " + Quoted(name));
        }
        model::SetupOfSolution(TheDesign(), solution);
        if (variable->solution != solution) {
            FailBadValue("the output variable " + Quoted(name) + " belongs to " + Quoted(variable->solution) +
                         ", not to " + Quoted(solution));
        }
        return model::OutputVariableValue(TheDesign(), *variable);
    }

    Value GetOutputVariables(Arguments& arguments) {
        arguments.End();
        return Value::Texts(model::NamesOf(TheDesign().outputVariables));
    }
};

} // namespace

Value::Object MakeSetupModule(SessionPointer session, DesignPlace place) {
    return std::make_shared<SetupModule>(std::move(session), std::move(place));
}

Value::Object MakeLoadModule(SessionPointer session, DesignPlace place) {
    return std::make_shared<LoadModule>(std::move(session), std::move(place));
}

Value::Object MakeOutputVariableModule(SessionPointer session, DesignPlace place) {
    return std::make_shared<OutputVariableModule>(std::move(session), std::move(place));
}

} // namespace vantor::commands
