#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace kinora::programs {

/// A COM class as it stands in the registry.
struct ClassEntry {
    CLSID classId = {};
    std::wstring title;
    /// ProgIDs that lead to the class, its own first.
    std::vector<std::wstring> progIds;
    /// "LocalServer32" for a program, "InprocServer32" for a DLL.
    std::wstring serverKey;
    /// What stands there: the program's command line, or the DLL's path.
    std::wstring server;
    /// Of a DLL; empty for a program.
    std::wstring threadingModel;
};

/// What a registration did, as lines for the user.
struct RegistrationResult {
    bool succeeded = false;
    std::wstring text;
};

/// Registers a class for the current user; for the machine where the system does not look at the user's classes or
/// these cannot be written. What does not lead to the class from a client's view is taken back.
RegistrationResult WriteRegistration(const ClassEntry& entry);

/// Takes back what WriteRegistration wrote, for the user and for the machine, and nothing else: a ProgID that leads to
/// another class stays.
RegistrationResult RemoveRegistration(const ClassEntry& entry);

/// True when a ProgID leads to another class, from a client's view.
bool IsTaken(const std::wstring& progId, const CLSID& classId);

} // namespace kinora::programs
