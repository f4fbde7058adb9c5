#include "comutils/ReportCommands.h"

#include "comutils/Names.h"
#include "comutils/ObjectCommands.h"

namespace ReportCommands {
namespace {

/// The first variable takes all its values, the others their nominal one.
CValue Families(const std::vector<std::string>& variables) {
    CListBuilder families(2 * variables.size());
    const char* values = "All";
    for (const std::string& variable : variables) {
        families.Add(variable + ":=");
        families.Add({values});
        values = "Nominal";
    }
    return families.Finish();
}

bool CreateReport(IDispatch* module, std::string_view report, const char* display, const std::string& setup,
                  const std::vector<std::string>& variables, CValue data) {
    return Dispatch::Call(module, L"CreateReport",
                          {report, Names::magnetostatic, display, Names::Solution(setup), CValue(), Families(variables),
                           std::move(data)});
}

} // namespace

CValue GetReportNames(IDispatch* design) {
    CValue names;
    ObjectCommands::GetChildNames(ObjectCommands::GetChildObject(design, Names::resultsChild).get(), names);
    return names;
}

bool CreateEmptyReport(IDispatch* module, std::string_view report, const std::string& setup,
                       const std::vector<std::string>& variables) {
    if (variables.empty()) {
        return false;
    }
    return CreateReport(module, report, "Rectangular Plot", setup, variables,
                        {"X Component:=", Names::timeVariable, "Y Component:=", CValue::EmptyList()});
}

bool CreateDataTable(IDispatch* module, const std::string& body, const std::string& setup,
                     const std::vector<std::string>& variables) {
    if (variables.empty()) {
        return false;
    }
    const auto outputs = Names::OutputVariables(body);
    CListBuilder names(outputs.size());
    for (const auto& [name, expression] : outputs) {
        names.Add(name);
    }
    return CreateReport(module, "Output Variables for " + body, "Data Table", setup, variables,
                        {"X Component:=", variables.front(), "Y Component:=", names.Finish()});
}

bool ClearAndImport(IDispatch* module, const std::string& report, std::string_view path) {
    CValue result;
    if (!Dispatch::Call(module, L"GetReportTraceNames", {report}, result)) {
        return false;
    }
    const std::vector<std::string> traces = result.ToTexts();
    if (!traces.empty() && !Dispatch::Call(module, L"DeleteTraces", {{report + ":=", CListBuilder::OfTexts(traces)}})) {
        return false;
    }
    return Dispatch::Call(module, L"ImportIntoReport", {report, path});
}

} // namespace ReportCommands
