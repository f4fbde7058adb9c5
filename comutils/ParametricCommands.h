#pragma once

#include "comutils/Dispatch.h"

#include <string>
#include <vector>

/// Commands on the parametric setup that records the steps of a run, one of the children of the design's "Paravant".
namespace ParametricCommands {

/// @param rows  one row of values per step, in the order of the variables
/// @return the argument that describes the setup, made without a copy of the history, which grows with every step;
///         nothing (VT_EMPTY) without rows, and when the first row is shorter than the variables
CValue HistoryArgument(const std::vector<std::string>& variables, const std::vector<std::vector<std::string>>& rows);

/// @return true when the setup is among the children
bool HasHistory(IDispatch* setups);

/// "InsertSetup".
bool InsertHistory(IDispatch* setups, CValue history);

/// "EditSetup".
bool EditHistory(IDispatch* setups, CValue history);

/// "DeleteSetups".
bool DeleteHistory(IDispatch* setups);

} // namespace ParametricCommands
