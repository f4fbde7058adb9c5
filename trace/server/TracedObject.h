#pragma once

#include "programs/ComObject.h"
#include "trace/server/CallRecord.h"

#include <windows.h>

#include <oaidl.h>

#include <cstdint>
#include <map>
#include <mutex>
#include <string>

namespace kinora::trace {

class Tracer;

/// Stands for one automation object: passes every look-up and call on to it, as it comes, and records it. Holds one
/// reference on the object. Belongs to the apartment in which the object was received, as the object itself does. Has
/// no other interface: that would be another identity, and its calls could not be recorded.
class TracedObject final : public programs::ComObject<IDispatch, IID_IDispatch> {
public:
    /// @param identity  the object's IUnknown; not counted, because `object` keeps it
    TracedObject(Tracer& tracer, IDispatch* object, IUnknown* identity, ObjectLabel label);

    IDispatch* Object() const { return m_object; }
    IUnknown* Identity() const { return m_identity; }
    const ObjectLabel& Label() const { return m_label; }

    /// Takes a reference unless the last one has gone already.
    bool TryAddRef() { return AddRefUnlessEnding(); }

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override { return m_object->GetTypeInfoCount(count); }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override {
        return m_object->GetTypeInfo(index, locale, info);
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO* exception, UINT* argumentError) override;

private:
    ~TracedObject() override;

    void Remember(DISPID id, const std::string& name) noexcept;
    /// The name under which a member was looked up last; "#12" when it was not, "_NewEnum" for an enumeration.
    std::string NameOf(DISPID id) const;

    Tracer& m_tracer;
    IDispatch* const m_object;
    IUnknown* const m_identity;
    const ObjectLabel m_label;
    mutable std::mutex m_mutex;
    std::map<DISPID, std::string> m_names;
};

} // namespace kinora::trace
