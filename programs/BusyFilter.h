#pragma once

#include <windows.h>

#include <objidl.h>

#include <cstdint>
#include <functional>
#include <optional>

namespace kinora::programs {

/// Repeats the calls of this thread that a busy server turns away, for as long as it lives. COM has to be initialised
/// on the thread, single-threaded, from before it to its end.
class BusyFilter : private IMessageFilter {
public:
    /// A call was turned away: takes the milliseconds since it was first made, and gives those until the next try;
    /// nothing to give the call up.
    using OnRejected = std::function<std::optional<std::uint32_t>(std::uint32_t elapsedMs)>;

    explicit BusyFilter(OnRejected onRejected);
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

    OnRejected m_onRejected;
    IMessageFilter* m_previous = nullptr;
};

} // namespace kinora::programs
