#include "comutils/ComUtils.h"
#include "comutils/Dispatch.h"
#include "comutils/Names.h"

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

bool CreateReport(IDispatch* reportModule, const std::string& reportName, const char* display,
                  const std::string& setupName, const std::vector<std::string>& variables, CValue data) {
    return Dispatch::Call(reportModule, L"CreateReport",
                          {reportName, Names::magnetostatic, display, Names::Solution(setupName), CValue(),
                           Families(variables), std::move(data)});
}

} // namespace

std::set<std::string> CComUtils::GetReportNames(IDispatch* design) {
    const std::vector<std::string> names = ReadStringArray(Dispatch::QueryReportNames(design).Get());
    return {names.begin(), names.end()};
}

bool CComUtils::CreateEmptyReport(IDispatch* reportModule, const std::string& reportName, const std::string& setupName,
                                  const std::vector<std::string>& variables) {
    if (variables.empty())
        return false;
    return CreateReport(reportModule, reportName, "Rectangular Plot", setupName, variables,
                        {"X Component:=", Names::timeVariable, "Y Component:=", CValue::EmptyList()});
}

bool CComUtils::ClearAndImportReport(IDispatch* reportModule, const std::string& reportName,
                                     const std::string& filePath) {
    CValue result;
    if (!Dispatch::Call(reportModule, L"GetReportTraceNames", {reportName}, result))
        return false;
    const std::vector<std::string> traces = ReadStringArray(result.Get());
    if (!traces.empty() &&
        !Dispatch::Call(reportModule, L"DeleteTraces", {{reportName + ":=", CListBuilder::OfTexts(traces)}}))
        return false;
    return Dispatch::Call(reportModule, L"ImportIntoReport", {reportName, filePath});
}

bool CComUtils::CreateDataTable(IDispatch* reportModule, const std::string& bodyName, const std::string& setupName,
                                const std::vector<std::string>& variables) {
    if (variables.empty())
        return false;
    const auto outputs = Names::OutputVariables(bodyName);
    CListBuilder names(outputs.size());
    for (const auto& [name, expression] : outputs)
        names.Add(name);
    return CreateReport(reportModule, "Output Variables for " + bodyName, "Data Table", setupName, variables,
                        {"X Component:=", variables.front(), "Y Component:=", names.Finish()});
}
