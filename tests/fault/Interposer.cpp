#include "tests/fault/Interposer.h"

namespace {

long liveInterposers = 0;

} // namespace

Interposer::Interposer(IDispatch* target, CallMeter& meter) : m_target(target), m_meter(meter) {
    ++liveInterposers;
}

Interposer::~Interposer() {
    m_target->Release();
    --liveInterposers;
}

long Interposer::Live() {
    return liveInterposers;
}

ULONG Interposer::AddRef() {
    return ++m_references;
}

ULONG Interposer::Release() {
    const ULONG left = --m_references;
    if (left == 0) {
        delete this;
    }
    return left;
}

HRESULT Interposer::GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) {
    ++m_meter.calls;
    if (m_meter.beforeLookup) {
        m_meter.beforeLookup(m_meter.calls);
    }
    return m_target->GetIDsOfNames(iid, names, count, locale, ids);
}

HRESULT Interposer::Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                           EXCEPINFO* exception, UINT* argumentError) {
    if (m_meter.beforeInvocation) {
        m_meter.beforeInvocation(m_meter.calls);
    }
    const HRESULT outcome = m_target->Invoke(id, iid, locale, flags, parameters, result, exception, argumentError);
    if (SUCCEEDED(outcome) && result && result->vt == VT_DISPATCH && result->pdispVal) {
        result->pdispVal = new Interposer(result->pdispVal, m_meter);
    }
    return outcome;
}
