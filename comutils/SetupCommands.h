#pragma once

#include "comutils/Dispatch.h"

#include <string>
#include <string_view>

/// Commands that make, change and solve a design's setups.
namespace SetupCommands {

/// "InsertSetup" of whatever keeps setups: the module of analysis setups, the child of parametric ones.
/// @param type  what the keeper calls the kind of setup
bool InsertSetup(IDispatch* setups, std::string_view type, CValue definition);

/// "EditSetup" of whatever keeps setups.
bool EditSetup(IDispatch* setups, std::string_view name, CValue definition);

/// "GetSetups". @return the name of the design's alphabetically first analysis setup (byte order); empty without one
std::string GetFirstSetup(IDispatch* design);

/// Inserts a magnetostatic setup of at most 15 passes and 0.5 percent error.
bool InsertAnalysisSetup(IDispatch* module, std::string_view name);

/// Inserts the default setup unless the design has a setup. @return true when there is one afterwards
bool EnsureSetup(IDispatch* design);

/// "Analyze".
/// @param status  untouched on success and when the call itself fails; else the low 16 bits of the solver's answer,
///                sign-extended
/// @return true when the answer is a 32-bit integer (VT_I4) whose low 16 bits are 0
bool Analyze(IDispatch* design, std::string_view setup, int& status);

/// Adds the body's six output variables to the expression cache of the first setup.
bool InsertExpressionCaches(IDispatch* design, const std::string& body);

} // namespace SetupCommands
