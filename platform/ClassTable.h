#pragma once

/// @file
/// The classes of this process, which stand for the registry and the servers that it leads to.

#include <unknwn.h>

#include <string>

#pragma GCC visibility push(default)

namespace platform {

/// Gives the class object of a class, as a server's DllGetClassObject does.
using ClassObjectGetter = HRESULT (*)(REFCLSID classId, REFIID iid, void** object);

/// While one lives, a class of this process is found under its ProgID and its class id. A further one of the same name
/// hides it for as long.
class RegisteredClass {
public:
    RegisteredClass(std::wstring progId, const CLSID& classId, ClassObjectGetter getter);
    ~RegisteredClass();
    RegisteredClass(const RegisteredClass&) = delete;
    RegisteredClass& operator=(const RegisteredClass&) = delete;
};

} // namespace platform

#pragma GCC visibility pop
