#pragma once

#include "tests/support/DispatchBase.h"

#include <cstddef>
#include <functional>

/// What happens to the calls that go through the interposers of one launch.
struct CallMeter {
    /// Calls begun; every name lookup begins one.
    std::size_t calls = 0;
    /// Run at the begin of a call, before its name is looked up.
    std::function<void(std::size_t number)> beforeLookup;
    /// Run when its name is known, before the invocation is handed on.
    std::function<void(std::size_t number)> beforeInvocation;
};

/// Stands between the library and an object of a desktop in another process: hands every call on, and gives an
/// interposer in place of every object that comes back.
class Interposer final : public DispatchBase {
public:
    /// Takes over the caller's reference on the target; the new object has one reference.
    Interposer(IDispatch* target, CallMeter& meter);

    /// Interposers that live now.
    static long Live();

    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO* exception, UINT* argumentError) override;

private:
    ~Interposer();

    IDispatch* m_target;
    CallMeter& m_meter;
    ULONG m_references = 1;
};
