#pragma once

#include "trace/server/CallRecord.h"

#include <windows.h>

#include <oaidl.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>

namespace kinora::trace {

class Tracer;

/// Stands for one automation object: passes every look-up and call on to it, as it comes, and records it. Holds one
/// reference on the object. Belongs to the apartment in which the object was received, as the object itself does.
class TracedObject final : public IDispatch {
public:
    /// @param identity  the object's IUnknown; not counted, because `object` keeps it
    TracedObject(Tracer& tracer, IDispatch* object, IUnknown* identity, TracedPlace place);

    IDispatch* Object() const { return m_object; }
    IUnknown* Identity() const { return m_identity; }
    const TracedPlace& Place() const { return m_place; }

    /// Takes a reference unless the last one has gone already.
    bool TryAddRef();

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** result) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override { return m_object->GetTypeInfoCount(count); }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override {
        return m_object->GetTypeInfo(index, locale, info);
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO* exception, UINT* argumentError) override;

private:
    ~TracedObject();

    void Remember(DISPID id, const std::string& name) noexcept;
    /// The name under which a member was looked up last; "#12" when it was not, "_NewEnum" for an enumeration.
    std::string NameOf(DISPID id) const;

    Tracer& m_tracer;
    IDispatch* const m_object;
    IUnknown* const m_identity;
    const TracedPlace m_place;
    std::atomic<ULONG> m_references{1};
    mutable std::mutex m_mutex;
    std::map<DISPID, std::string> m_names;
};

} // namespace kinora::trace
