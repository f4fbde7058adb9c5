#pragma once

#include "trace/server/VariantVisit.h"

#include <windows.h>

#include <oaidl.h>

#include <set>
#include <string>
#include <vector>

namespace kinora::trace {

class Tracer;

/// The arguments of one call as the object is to see them: with the objects themselves in place of their wrappers. A
/// block without wrappers is the client's own, passed on untouched. Values are changed in a copy; what is passed by
/// reference is changed where it stands, because the object may change it there too, and changed back afterwards.
class PassedArguments {
public:
    /// @param parameters  the client's; may be null, as the client passed it
    PassedArguments(Tracer& tracer, DISPPARAMS* parameters) noexcept;
    ~PassedArguments();
    PassedArguments(const PassedArguments&) = delete;
    PassedArguments& operator=(const PassedArguments&) = delete;

    /// E_OUTOFMEMORY when the copy could not be made; the call must not go on then.
    HRESULT Status() const { return m_status; }
    DISPPARAMS* ForObject() { return m_isCopied ? &m_copy : m_client; }

    /// True when an argument is passed by reference.
    bool HasReferences() const { return m_hasReferences; }

    /// After the call: puts wrappers in place of the desktop's objects that references hold now. The client's own
    /// objects stay.
    /// @param path  what new objects are called in the trace
    void TakeBack(const std::string& path) noexcept;

private:
    VARIANT* Begin() const { return m_client == nullptr ? nullptr : m_client->rgvarg; }
    UINT Count() const { return m_client == nullptr || m_client->rgvarg == nullptr ? 0 : m_client->cArgs; }
    void Prepare();
    void CopyBlock();
    void ReplaceValue(VARIANT& argument);
    void ReplaceReferred();

    Tracer& m_tracer;
    DISPPARAMS* const m_client;
    DISPPARAMS m_copy = {};
    std::vector<VARIANT> m_block;
    /// Arrays that the copy owns.
    std::vector<SAFEARRAY*> m_arrays;
    /// Wrappers taken out of references, with the references that these held.
    std::vector<IUnknown*> m_kept;
    /// The client's own objects in references.
    std::set<IUnknown*> m_foreign;
    HRESULT m_status = S_OK;
    bool m_isCopied = false;
    bool m_hasReferences = false;
};

} // namespace kinora::trace
