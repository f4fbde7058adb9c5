#pragma once

#include "trace/core/Session.h"

#include <ostream>

namespace kinora::trace {

/// Compares two sessions call by call: objects by their paths, methods, arguments, results and errors, in order. Times,
/// threads and successful look-ups do not matter. Differences are written one per line:
///
///     - 12 desktop.ClearMessages(..)      only in the first session
///     + 14 desktop.AddMessage(..)         only in the second
///     ~ 15 / 17 module.GetValue(..)       in both, and below it what differs, in lists the elements alone:
///         argument 2 [3][1]: was "1mm", is "2mm"
///         result: was 0.5, is 0.6
///
/// @param isFull  whole lists and texts, and every element that differs
/// @return the number of differences
std::size_t Diff(const Session& first, const Session& second, bool isFull, std::ostream& out);

} // namespace kinora::trace
