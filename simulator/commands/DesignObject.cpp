#include "simulator/commands/DesignObject.h"

#include "simulator/analysis/Analysis.h"
#include "simulator/commands/BlockReader.h"
#include "simulator/commands/DesignBound.h"
#include "simulator/commands/Editor.h"
#include "simulator/commands/FieldsModule.h"
#include "simulator/commands/LoadModule.h"
#include "simulator/commands/OutputVariableModule.h"
#include "simulator/commands/ParametricSetups.h"
#include "simulator/commands/ReportModule.h"
#include "simulator/commands/Requirements.h"
#include "simulator/commands/Results.h"
#include "simulator/commands/SetupModule.h"
#include "simulator/model/DesktopError.h"
#include "simulator/model/Text.h"

namespace vantor::commands {
namespace {

using model::DesktopError;
using model::ErrorCode;
using model::Quoted;

constexpr const char* variableTab = "LocalVariableTab";
constexpr const char* variableServer = "LocalVariables";

using Variable = model::Variables::Variable;

/// One entry of "NAME:NewProps".
Variable ReadNewVariable(BlockReader entry) {
    Variable variable{entry.Name(), ""};
    entry.Literal("PropType:=", "VariableProp");
    entry.Literal("UserDef:=", true);
    variable.value = entry.Text("Value:=");
    entry.End();
    return variable;
}

/// One entry of "NAME:ChangedProps".
Variable ReadChangedVariable(BlockReader entry) {
    Variable variable{entry.Name(), entry.Text("Value:=")};
    entry.End();
    return variable;
}

/// A design.
class DesignObject : public DesignBound {
public:
    DesignObject(SessionPointer session, DesignReference design)
        : DesignBound(methods, std::move(session), std::move(design)) {}

private:
    static const MethodTable methods;

    Value GetName(Arguments& arguments) {
        arguments.End();
        return RequireDesign().name;
    }

    Value GetDesignType(Arguments& arguments) {
        arguments.End();
        return RequireDesign().type;
    }

    Value SetDesignSettings(Arguments& arguments) {
        BlockReader settings(arguments.List(), "argument 1", "Design Settings Data");
        const bool allowOverride = settings.Flag("Allow Material Override:=");
        settings.End();
        BlockReader(arguments.List(), "argument 2", "Model Validation Settings").End();
        arguments.End();
        RequireDesign().allowMaterialOverride = allowOverride;
        MarkChanged();
        return {};
    }

    Value SetActiveEditor(Arguments& arguments) {
        const std::string& name = arguments.Text();
        arguments.End();
        RequireOneOf(name, {"3D Modeler"}, "argument 1");
        RequireDesign();
        return MakeEditor(SharedSession(), SharedDesign());
    }

    Value GetModule(Arguments& arguments) {
        const std::string& name = arguments.Text();
        arguments.End();
        RequireDesign();
        using Maker = Value::Object (*)(SessionPointer, DesignReference);
        static const std::vector<std::pair<std::string, Maker>> modules = {
            {"AnalysisSetup", MakeSetupModule},        {"OutputVariable", MakeOutputVariableModule},
            {"VeltrixParameterSetup", MakeLoadModule}, {"ReportSetup", MakeReportModule},
            {"FieldsReporter", MakeFieldsModule},
        };
        for (const auto& [moduleName, make] : modules) {
            if (moduleName == name) {
                return make(SharedSession(), SharedDesign());
            }
        }
        throw DesktopError(ErrorCode::ModuleNotFound, "there is no module " + Quoted(name));
    }

    Value GetChildNames(Arguments& arguments) {
        arguments.End();
        RequireDesign();
        return Value::Texts({"Paravant", "Results"});
    }

    Value GetChildObject(Arguments& arguments) {
        const std::string& name = arguments.Text();
        arguments.End();
        RequireDesign();
        RequireOneOf(name, {"Paravant", "Results"}, "argument 1");
        return name == "Paravant" ? MakeParametricSetups(SharedSession(), SharedDesign())
                                  : MakeResults(SharedSession(), SharedDesign());
    }

    Value GetProperties(Arguments& arguments) {
        arguments.Literal(variableTab);
        arguments.Literal(variableServer);
        arguments.End();
        return Value::Texts(model::NamesOf(RequireDesign().variables.All()));
    }

    Value ChangeProperty(Arguments& arguments) {
        BlockReader tabs(arguments.List(), "argument 1", "AllTabs");
        BlockReader tab = tabs.Block(variableTab);
        tabs.End();
        arguments.End();
        BlockReader servers = tab.Block("PropServers");
        if (servers.BareText() != variableServer) {
            FailBadValue("\"NAME:PropServers\": only " + Quoted(variableServer) + " is known");
        }
        servers.End();
        BlockReader properties = tab.Block();
        tab.End();
        RequireOneOf(properties.Name(), {"NewProps", "ChangedProps"}, "\"NAME:LocalVariableTab\", element 3");
        const bool isNew = properties.Name() == "NewProps";
        std::vector<Variable> variables;
        while (!properties.AtEnd()) {
            variables.push_back(isNew ? ReadNewVariable(properties.Block()) : ReadChangedVariable(properties.Block()));
        }
        if (isNew) {
            RequireDesign().variables.Add(variables);
        } else {
            RequireDesign().variables.Change(variables);
        }
        MarkModelChanged();
        return {};
    }

    /// Solves a setup.
    /// @return 0 as VT_I4, or the script error code when the solve fails; the reason is in the messages.
    Value Analyze(Arguments& arguments) {
        const std::string& name = arguments.Text();
        arguments.End();
        const model::AnalysisSetup* setup = model::FindByName(RequireDesign().setups, name);
        if (!setup) {
            FailBadValue("there is no setup " + Quoted(name) +
                         "; the setups are: " + model::QuotedList(model::NamesOf(RequireDesign().setups)));
        }
        if (!setup->enabled) {
            FailBadValue("the setup " + Quoted(name) + " is not enabled");
        }
        const auto report = [this](model::Severity severity, const std::string& text) {
            Report(severity, "Analyze: " + text);
        };
        MarkChanged();
        const bool solved =
            analysis::SolveDesign(RequireProject(), TheDesktop().library, RequireDesign(), *setup, report);
        return Value::Long(solved ? 0 : static_cast<std::int32_t>(ErrorCode::SolutionError));
    }
};

const ScriptObject::MethodTable DesignObject::methods = {
    {"GetName", Bound<&DesignObject::GetName>::Handle},
    {"GetDesignType", Bound<&DesignObject::GetDesignType>::Handle},
    {"SetDesignSettings", Bound<&DesignObject::SetDesignSettings>::Handle},
    {"SetActiveEditor", Bound<&DesignObject::SetActiveEditor>::Handle},
    {"GetModule", Bound<&DesignObject::GetModule>::Handle},
    {"GetChildNames", Bound<&DesignObject::GetChildNames>::Handle},
    {"GetChildObject", Bound<&DesignObject::GetChildObject>::Handle},
    {"GetProperties", Bound<&DesignObject::GetProperties>::Handle},
    {"ChangeProperty", Bound<&DesignObject::ChangeProperty>::Handle},
    {"Analyze", Bound<&DesignObject::Analyze>::Handle},
};

} // namespace

Value::Object MakeDesign(SessionPointer session, DesignReference design) {
    return std::make_shared<DesignObject>(std::move(session), std::move(design));
}

} // namespace vantor::commands
