#pragma once

#include "trace/core/Session.h"

#include <ostream>
#include <string>

namespace kinora::trace {

/// What of a session is shown, and how.
struct ShowOptions {
    bool isColoured = false;
    /// Only what failed or never came back.
    bool onlyFailed = false;
    /// Only calls that took at least so many milliseconds; negative for all.
    double slowMilliseconds = -1.0;
    /// Only calls whose object, method, arguments, result or error contain this text, upper and lower case alike.
    std::string containing;
    /// Whole lists and texts.
    bool isFull = false;
};

/// Writes a session as a tree: objects as headings, indented by how deep they lie, and their calls below. Look-ups that
/// succeeded are left out, because a call follows them.
/// @return how many calls were shown
std::size_t Show(const Session& session, const ShowOptions& options, std::ostream& out);

/// A call as people write it: Method("a", 1), Property = 2, Method("a", #3:=true) with the number of a named argument.
std::string CallText(const Record& record, bool isFull);

/// A call's outcome in words, for example: = 0.5, or: failed, 0x80020009 DISP_E_EXCEPTION: ...; empty for nothing.
std::string OutcomeText(const Record& record, bool isFull);

} // namespace kinora::trace
