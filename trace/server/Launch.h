#pragma once

#include "trace/server/Tracer.h"

#include <string>

namespace kinora::trace {

/// The tracer of this process; made, and its file named, at the first call.
Tracer& ProcessTracer();
bool HasProcessTracer();

/// ProgID of the desktop that stands behind the trace: the plain one, or the version that VANTOR_TRACE_TARGET names.
std::wstring TargetProgId();

/// Creates a desktop and gives its traced application object, with one reference for the caller.
/// @return what the platform says when there is no such desktop or it does not start; E_INVALIDARG when the target is
///         the trace itself
HRESULT LaunchTraced(Tracer& tracer, const std::wstring& progId, IDispatch** application);

} // namespace kinora::trace
