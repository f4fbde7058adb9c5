#pragma once

#include <windows.h>

#include <objbase.h>

#include <memory>
#include <string>

namespace fake {

/// Gives the class object of a registered class: what a server exports as DllGetClassObject.
HRESULT FindClassObject(REFCLSID classId, REFIID iid, void** object);

/// While one lives, the system finds a class of this process under a ProgID: by the registry, with the test program as
/// its own in-process server, or by the table of classes where there is no registry.
class ClassEntry {
public:
    explicit ClassEntry(const std::wstring& progId);
    ~ClassEntry();
    ClassEntry(const ClassEntry&) = delete;
    ClassEntry& operator=(const ClassEntry&) = delete;

    const CLSID& ClassId() const { return m_classId; }

private:
    struct Place;

    CLSID m_classId;
    std::unique_ptr<Place> m_place;
};

/// Sets a variable of this process's environment, or removes it (nullptr).
void SetEnvironment(const char* name, const char* value);

} // namespace fake
