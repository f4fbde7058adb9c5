#include "programs/BusyFilter.h"

#include <objbase.h>

#include <utility>

namespace kinora::programs {

BusyFilter::BusyFilter(OnRejected onRejected) : m_onRejected(std::move(onRejected)) {
    // Without the filter a busy desktop fails calls at once; that is worse, but no reason to stop.
    (void)CoRegisterMessageFilter(this, &m_previous);
}

BusyFilter::~BusyFilter() {
    IMessageFilter* self = nullptr;
    (void)CoRegisterMessageFilter(m_previous, &self);
    if (m_previous) {
        m_previous->Release();
    }
}

HRESULT BusyFilter::QueryInterface(REFIID wanted, void** object) {
    if (wanted != IID_IUnknown && wanted != IID_IMessageFilter) {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    *object = static_cast<IMessageFilter*>(this);
    return S_OK;
}

DWORD BusyFilter::HandleInComingCall(DWORD, HTASK, DWORD, LPINTERFACEINFO) {
    return SERVERCALL_ISHANDLED;
}

DWORD BusyFilter::RetryRejectedCall(HTASK, DWORD elapsedMs, DWORD) {
    constexpr DWORD giveUp = static_cast<DWORD>(-1);
    return m_onRejected(elapsedMs).value_or(giveUp);
}

DWORD BusyFilter::MessagePending(HTASK, DWORD, DWORD) {
    return PENDINGMSG_WAITDEFPROCESS;
}

} // namespace kinora::programs
