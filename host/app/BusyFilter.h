#pragma once

#include "host/core/BusyWait.h"

#include <windows.h>

#include <objidl.h>

namespace kinora::host {

/// Waits out a desktop that turns calls away, for as long as it lives. Needs a ComScope around it.
class BusyFilter : private IMessageFilter {
public:
    explicit BusyFilter(BusyWait wait);
    /// Puts back the filter that was there before.
    virtual ~BusyFilter();
    BusyFilter(const BusyFilter&) = delete;
    BusyFilter& operator=(const BusyFilter&) = delete;

private:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID wanted, void** object) override;
    /// It lives on the stack; nobody's reference keeps it.
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    DWORD STDMETHODCALLTYPE HandleInComingCall(DWORD type, HTASK caller, DWORD elapsedMs,
                                               LPINTERFACEINFO info) override;
    DWORD STDMETHODCALLTYPE RetryRejectedCall(HTASK callee, DWORD elapsedMs, DWORD type) override;
    DWORD STDMETHODCALLTYPE MessagePending(HTASK callee, DWORD elapsedMs, DWORD type) override;

    BusyWait m_wait;
    IMessageFilter* m_previous = nullptr;
};

} // namespace kinora::host
