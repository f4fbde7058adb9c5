#include "trace/server/Launch.h"

#include "programs/Environment.h"
#include "programs/Utf.h"
#include "trace/server/CallRecord.h"
#include "trace/server/ClassId.h"
#include "trace/server/Stopwatch.h"

#include <objbase.h>

#include <atomic>

namespace kinora::trace {
namespace {

std::atomic<bool> hasTracer{false};

HRESULT CreateTarget(const std::wstring& progId, IDispatch** application) {
    CLSID classId = {};
    const HRESULT code = CLSIDFromProgID(progId.c_str(), &classId);
    if (FAILED(code)) {
        return code;
    }
    if (IsEqualCLSID(classId, traceClassId)) {
        return E_INVALIDARG;
    }
    const HRESULT created =
        CoCreateInstance(classId, nullptr, CLSCTX_SERVER, IID_IDispatch, reinterpret_cast<void**>(application));
    return SUCCEEDED(created) && *application == nullptr ? E_POINTER : created;
}

} // namespace

Tracer& ProcessTracer() {
    // Never destroyed: objects may be released until the process has ended.
    static Tracer& tracer = *new Tracer(RecorderSettings::FromEnvironment());
    hasTracer = true;
    return tracer;
}

bool HasProcessTracer() {
    return hasTracer;
}

std::wstring TargetProgId() {
    const std::wstring version = programs::WideFromUtf8(programs::EnvironmentValue("VANTOR_TRACE_TARGET"));
    return version.empty() ? desktopProgId : std::wstring(desktopProgId) + L"." + version;
}

HRESULT LaunchTraced(Tracer& tracer, const std::wstring& progId, IDispatch** application) {
    CallRecord record = CallRecord::Create(tracer, progId);
    const Stopwatch watch;
    IDispatch* target = nullptr;
    HRESULT code = CreateTarget(progId, &target);
    const double duration = watch.Microseconds();
    if (SUCCEEDED(code)) {
        VARIANT result;
        VariantInit(&result);
        V_VT(&result) = VT_DISPATCH;
        V_DISPATCH(&result) = target;
        tracer.Wrap(result, "application");
        record.AddResult(result);
        *application = V_DISPATCH(&result);
    }
    record.Finish(code, duration);
    return code;
}

} // namespace kinora::trace
