#pragma once

#include "comutils/Dispatch.h"

#include <string>
#include <string_view>
#include <vector>

/// Commands that make and fill a design's reports.
namespace ReportCommands {

/// @return the list of the names of the design's reports (children of "Results") as the desktop gives it, to be read
/// when
///         it is needed
CValue GetReportNames(IDispatch* design);

/// "CreateReport": a rectangular plot over the simulation time without traces.
/// @param variables  design variables: the first is swept over all its values, the others are nominal; none: false
///                   without a call
bool CreateEmptyReport(IDispatch* module, std::string_view report, const std::string& setup,
                       const std::vector<std::string>& variables);

/// "CreateReport": the table of a body's output variables.
/// @param variables  design variables: the first is the X component; none: false without a call
bool CreateDataTable(IDispatch* module, const std::string& body, const std::string& setup,
                     const std::vector<std::string>& variables);

/// "GetReportTraceNames", "DeleteTraces" (when there are traces), "ImportIntoReport".
bool ClearAndImport(IDispatch* module, const std::string& report, std::string_view path);

} // namespace ReportCommands
