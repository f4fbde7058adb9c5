#pragma once

#include "tests/support/ClassEntry.h"

#include <oleauto.h>

#include <optional>
#include <string>

namespace fake {

/// Registers a class of this process under "Pellux.VantorDesktop." + version (the plain base for no version), so that a
/// launch gets the object that the test names. The class lives in the test program itself, so a launch works on every
/// thread.
class Registration {
public:
    explicit Registration(const std::wstring& progId);
    ~Registration();
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

    /// A version text that no other process uses.
    static std::string UniqueVersion();
    /// The program id of that version.
    static std::wstring UniqueProgId();

    /// What the next creations give: a failure, or success and this object (which may be null).
    void Create(IDispatch* application) { m_application = application; }
    void RefuseWith(HRESULT code) { m_refusal = code; }
    unsigned Creations() const { return m_creations; }
    /// False when a creation asked for something else than IDispatch of an object that stands alone.
    bool AskedForDispatchOnly() const { return m_askedForDispatchOnly; }
    const CLSID& ClassId() const { return m_entry.ClassId(); }

private:
    friend class ClassFactory;

    HRESULT CreateInstance(IUnknown* outer, REFIID iid, void** object);

    ClassEntry m_entry;
    IDispatch* m_application = nullptr;
    HRESULT m_refusal = S_OK;
    unsigned m_creations = 0;
    bool m_askedForDispatchOnly = true;
};

/// Sets or removes (nullptr) the environment variable that selects the desktop's version, and restores it at the end.
class VersionVariable {
public:
    explicit VersionVariable(const char* version);
    ~VersionVariable();
    VersionVariable(const VersionVariable&) = delete;
    VersionVariable& operator=(const VersionVariable&) = delete;

private:
    std::optional<std::string> m_before;
};

} // namespace fake
