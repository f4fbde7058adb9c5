#pragma once

#include "trace/core/Session.h"

#include <ostream>

namespace kinora::trace {

/// Writes a session as a VBScript that makes the same calls in the same order, and prints every number that a call
/// gives back. Types are kept where VBScript has them. Calls that failed may fail again; what has no counterpart in
/// VBScript (named arguments, calls without a known name) becomes a remark.
void WriteScript(const Session& session, std::ostream& out);

} // namespace kinora::trace
