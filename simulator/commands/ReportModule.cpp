#include "simulator/commands/ReportModule.h"

#include "simulator/commands/DesignBound.h"
#include "simulator/commands/Names.h"
#include "simulator/commands/Pairs.h"
#include "simulator/commands/Requirements.h"
#include "simulator/model/DesktopError.h"
#include "simulator/model/Files.h"
#include "simulator/model/ReportData.h"
#include "simulator/model/Text.h"

#include <iterator>
#include <set>
#include <tuple>

namespace vantor::commands {
namespace {

using model::DesktopError;
using model::ErrorCode;
using model::Quoted;

/// The module "ReportSetup".
class ReportModule : public DesignBound {
public:
    ReportModule(SessionPointer session, DesignReference design)
        : DesignBound(methods, std::move(session), std::move(design)) {}

private:
    static const MethodTable methods;

    model::Report& RequireReport(const std::string& name) const {
        return RequireNamed(RequireDesign().reports, name, "report");
    }

    /// A report that is there already stays with its traces when it is defined in the same way, so that an opened
    /// project can be initialised again.
    void KeepPresent(const model::Report& present, const model::Report& wanted) const {
        const auto definition = [](const model::Report& report) {
            return std::tie(report.reportType, report.displayType, report.solution, report.families, report.xComponent,
                            report.yComponents);
        };
        if (definition(present) != definition(wanted)) {
            FailBadValue("a report named " + Quoted(wanted.name) + " exists already and is defined otherwise");
        }
        Report(model::Severity::Info, "CreateReport: the report " + Quoted(wanted.name) + " is there already");
    }

    Value CreateReport(Arguments& arguments) {
        model::Report report;
        report.name = arguments.Text();
        report.reportType = arguments.Text();
        RequireOneOf(report.reportType, {magnetostatic}, "argument 2");
        report.displayType = arguments.Text();
        RequireOneOf(report.displayType, {"Rectangular Plot", "Data Table"}, "argument 3");
        report.solution = arguments.Text();
        if (!arguments.Any().IsEmpty()) {
            FailBadValue("argument 5: a context is not supported, nothing (VT_EMPTY) is needed");
        }
        report.families = ReadFamilies(arguments.List());
        ReadComponents(arguments.List(), report);
        arguments.End();
        model::RequireSetupOfSolution(RequireDesign(), report.solution);
        if (report.name.empty()) {
            FailBadValue("argument 1: a report needs a name");
        }
        if (const model::Report* present = model::FindByName(RequireDesign().reports, report.name)) {
            KeepPresent(*present, report);
            return {};
        }
        RequireDesign().reports.push_back(report);
        MarkChanged();
        return {};
    }

    void RequireVariable(const std::string& name, const std::string& location) const {
        if (!RequireDesign().variables.Has(name)) {
            FailBadValue(location + ": there is no variable " + Quoted(name));
        }
    }

    std::vector<std::pair<std::string, std::vector<std::string>>> ReadFamilies(const Value::List& elements) const {
        std::vector<std::pair<std::string, std::vector<std::string>>> families;
        std::set<std::string> seen;
        for (const auto& [variable, value] : ReadPairs(elements, "argument 6")) {
            const std::string location = "argument 6, " + Quoted(variable + ":=");
            RequireVariable(variable, location);
            if (!seen.insert(variable).second) {
                FailBadValue(location + " stands there twice");
            }
            families.emplace_back(variable, RequireTexts(*value, location));
            if (families.back().second.empty()) {
                FailBadValue(location + ": \"All\", \"Nominal\" or values are needed");
            }
        }
        return families;
    }

    void ReadComponents(const Value::List& elements, model::Report& report) const {
        const auto pairs = ReadPairs(elements, "argument 7");
        if (pairs.size() != 2 || pairs[0].first != "X Component" || pairs[1].first != "Y Component") {
            throw DesktopError(ErrorCode::InvalidArgument,
                               "argument 7: \"X Component:=\" and \"Y Component:=\" are needed, in this order");
        }
        report.xComponent = RequireText(*pairs[0].second, "argument 7, \"X Component:=\"");
        RequireVariable(report.xComponent, "argument 7, \"X Component:=\"");
        report.yComponents = RequireTexts(*pairs[1].second, "argument 7, \"Y Component:=\"");
        for (const auto& name : report.yComponents) {
            if (!model::FindByName(RequireDesign().outputVariables, name)) {
                FailBadValue("argument 7, \"Y Component:=\": there is no output variable " + Quoted(name));
            }
        }
    }

    Value GetReportTraceNames(Arguments& arguments) {
        const std::string& name = arguments.Text();
        arguments.End();
        return Value::Texts(model::NamesOf(RequireReport(name).traces));
    }

    Value DeleteTraces(Arguments& arguments) {
        const Value::List& list = arguments.List();
        arguments.End();
        const auto pairs = ReadPairs(list, "argument 1");
        for (const auto& [name, traces] : pairs) {
            for (const auto& trace : RequireTexts(*traces, "argument 1, " + Quoted(name + ":="))) {
                if (!model::FindByName(RequireReport(name).traces, trace)) {
                    FailBadValue("the report " + Quoted(name) + " has no trace " + Quoted(trace));
                }
            }
        }
        for (const auto& [name, value] : pairs) {
            model::EraseNamed(RequireReport(name).traces, RequireTexts(*value, "argument 1"));
        }
        MarkChanged();
        return {};
    }

    Value ImportIntoReport(Arguments& arguments) {
        const std::string& name = arguments.Text();
        const std::string& file = arguments.Text();
        arguments.End();
        model::Report& report = RequireReport(name);
        std::vector<model::Trace> traces = model::ReadTraceFile(model::PathFromUtf8(file));
        for (const auto& trace : traces) {
            if (model::FindByName(report.traces, trace.name)) {
                FailBadValue("the report " + Quoted(name) + " has a trace " + Quoted(trace.name) + " already");
            }
        }
        std::move(traces.begin(), traces.end(), std::back_inserter(report.traces));
        MarkChanged();
        return {};
    }
};

const ScriptObject::MethodTable ReportModule::methods = {
    {"CreateReport", Bound<&ReportModule::CreateReport>::Handle},
    {"GetReportTraceNames", Bound<&ReportModule::GetReportTraceNames>::Handle},
    {"DeleteTraces", Bound<&ReportModule::DeleteTraces>::Handle},
    {"ImportIntoReport", Bound<&ReportModule::ImportIntoReport>::Handle},
};

} // namespace

Value::Object MakeReportModule(SessionPointer session, DesignReference design) {
    return std::make_shared<ReportModule>(std::move(session), std::move(design));
}

} // namespace vantor::commands
