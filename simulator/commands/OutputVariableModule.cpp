#include "simulator/commands/OutputVariableModule.h"

#include "simulator/commands/DesignBound.h"
#include "simulator/commands/Names.h"
#include "simulator/commands/Requirements.h"
#include "simulator/model/Text.h"

namespace vantor::commands {
namespace {

using model::Quoted;

/// The module "OutputVariable".
class OutputVariableModule : public DesignBound {
public:
    OutputVariableModule(SessionPointer session, DesignReference design)
        : DesignBound(methods, std::move(session), std::move(design)) {}

private:
    static const MethodTable methods;

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
        if (model::FindByName(RequireDesign().outputVariables, variable.name)) {
            FailBadValue("an output variable named " + Quoted(variable.name) + " exists already");
        }
        model::RequireSetupOfSolution(RequireDesign(), variable.solution);
        model::CheckOutputExpression(RequireDesign(), variable.expression);
        RequireDesign().outputVariables.push_back(variable);
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
        const model::OutputVariable* variable = model::FindByName(RequireDesign().outputVariables, name);
        if (!variable) {
            FailBadValue("there is no output variable " + Quoted(name));
        }
        model::RequireSetupOfSolution(RequireDesign(), solution);
        if (variable->solution != solution) {
            FailBadValue("the output variable " + Quoted(name) + " belongs to " + Quoted(variable->solution) +
                         ", not to " + Quoted(solution));
        }
        return model::OutputVariableValue(RequireDesign(), *variable);
    }

    Value GetOutputVariables(Arguments& arguments) {
        arguments.End();
        return Value::Texts(model::NamesOf(RequireDesign().outputVariables));
    }
};

const ScriptObject::MethodTable OutputVariableModule::methods = {
    {"CreateOutputVariable", Bound<&OutputVariableModule::CreateOutputVariable>::Handle},
    {"GetOutputVariableValue", Bound<&OutputVariableModule::GetOutputVariableValue>::Handle},
    {"GetOutputVariables", Bound<&OutputVariableModule::GetOutputVariables>::Handle},
};

} // namespace

Value::Object MakeOutputVariableModule(SessionPointer session, DesignReference design) {
    return std::make_shared<OutputVariableModule>(std::move(session), std::move(design));
}

} // namespace vantor::commands
