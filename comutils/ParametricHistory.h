#pragma once

#include "comutils/Value.h"

#include <string>
#include <vector>

/// The parametric setup that records the steps of a run.
namespace ParametricHistory {

inline constexpr char setupName[] = "KinoraHistory";

/// What `CComUtils::GetParavantArgument` gives, without a copy of the history, which grows with every step.
CValue Argument(const std::vector<std::string>& variables, const std::vector<std::vector<std::string>>& rows);

} // namespace ParametricHistory
