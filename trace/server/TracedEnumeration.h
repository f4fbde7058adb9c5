#pragma once

#include "programs/ComObject.h"
#include "trace/server/CallRecord.h"

#include <windows.h>

#include <oaidl.h>

#include <atomic>

namespace kinora::trace {

class Tracer;

/// Stands for the enumeration of a collection's elements: passes everything on, records it, and gives wrappers in place
/// of the objects. Enumerations have no identity that clients look at; each gets a wrapper of its own.
class TracedEnumeration final : public programs::ComObject<IEnumVARIANT, IID_IEnumVARIANT> {
public:
    /// A wrapper with one reference for the caller; it holds one on the enumeration.
    /// @return null when memory is lacking
    static IEnumVARIANT* Make(Tracer& tracer, IEnumVARIANT* enumeration, const std::string& path) noexcept;

    HRESULT STDMETHODCALLTYPE Next(ULONG count, VARIANT* elements, ULONG* fetched) override;
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) override;
    HRESULT STDMETHODCALLTYPE Reset() override;
    HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** result) override;

private:
    TracedEnumeration(Tracer& tracer, IEnumVARIANT* enumeration, ObjectLabel label);
    ~TracedEnumeration() override;

    CallRecord Begin(const char* method, const ULONG* count) noexcept;
    /// What the next element is called in the trace; empty when memory is lacking.
    std::string ElementPath() noexcept;

    Tracer& m_tracer;
    IEnumVARIANT* const m_enumeration;
    const ObjectLabel m_label;
    /// Index of the next element.
    std::atomic<ULONG> m_next{0};
};

} // namespace kinora::trace
