#include "trace/server/TracedEnumeration.h"

#include "trace/server/Stopwatch.h"
#include "trace/server/Tracer.h"

#include <algorithm>

namespace kinora::trace {
namespace {

/// A number as a VARIANT.
VARIANT Number(ULONG number) {
    VARIANT value;
    VariantInit(&value);
    V_VT(&value) = VT_UI4;
    V_UI4(&value) = number;
    return value;
}

} // namespace

IEnumVARIANT* TracedEnumeration::Make(Tracer& tracer, IEnumVARIANT* enumeration, const std::string& path) noexcept {
    try {
        return new TracedEnumeration(tracer, enumeration, {tracer.NextId(), path});
    } catch (...) {
        return nullptr;
    }
}

TracedEnumeration::TracedEnumeration(Tracer& tracer, IEnumVARIANT* enumeration, ObjectLabel label)
    : m_tracer(tracer), m_enumeration(enumeration), m_label(std::move(label)) {
    m_enumeration->AddRef();
}

TracedEnumeration::~TracedEnumeration() {
    m_enumeration->Release();
}

CallRecord TracedEnumeration::Begin(const char* method, const ULONG* count) noexcept {
    VARIANT argument = Number(count == nullptr ? 0 : *count);
    const DISPPARAMS parameters = {&argument, nullptr, count == nullptr ? 0U : 1U, 0};
    return CallRecord::Call(m_tracer, m_label, method, DISPID_UNKNOWN, DISPATCH_METHOD, &parameters);
}

HRESULT TracedEnumeration::Next(ULONG count, VARIANT* elements, ULONG* fetched) {
    CallRecord record = Begin("Next", &count);
    const Stopwatch watch;
    // Without a count of its own a client may ask for one element only.
    const HRESULT code = m_enumeration->Next(count, elements, fetched);
    const double duration = watch.Microseconds();
    const ULONG given = fetched != nullptr ? *fetched : code == S_OK ? count : 0;
    for (ULONG i = 0; SUCCEEDED(code) && elements != nullptr && i < given && i < count; ++i) {
        m_tracer.Wrap(elements[i], ElementPath());
    }
    if (SUCCEEDED(code) && elements) {
        record.AddElements(elements, std::min(given, count));
    }
    record.Finish(code, duration);
    return code;
}

std::string TracedEnumeration::ElementPath() noexcept {
    try {
        return m_label.path + "[" + std::to_string(m_next++) + "]";
    } catch (...) {
        return {};
    }
}

HRESULT TracedEnumeration::Skip(ULONG count) {
    CallRecord record = Begin("Skip", &count);
    const Stopwatch watch;
    const HRESULT code = m_enumeration->Skip(count);
    m_next += count;
    record.Finish(code, watch.Microseconds());
    return code;
}

HRESULT TracedEnumeration::Reset() {
    CallRecord record = Begin("Reset", nullptr);
    const Stopwatch watch;
    const HRESULT code = m_enumeration->Reset();
    m_next = 0;
    record.Finish(code, watch.Microseconds());
    return code;
}

HRESULT TracedEnumeration::Clone(IEnumVARIANT** result) {
    CallRecord record = Begin("Clone", nullptr);
    const Stopwatch watch;
    const HRESULT code = m_enumeration->Clone(result);
    record.Finish(code, watch.Microseconds());
    IEnumVARIANT* const wrapper =
        SUCCEEDED(code) && result && *result ? Make(m_tracer, *result, m_label.path) : nullptr;
    if (wrapper) {
        (*result)->Release();
        *result = wrapper;
    }
    return code;
}

} // namespace kinora::trace
