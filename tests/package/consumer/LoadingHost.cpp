// Finds the factory in the DLL at run time.

#include "interface/IKinoraVeltrixInterface.h"

#include <windows.h>

#include <cstdio>

int main() {
    const HMODULE library = LoadLibraryW(L"KinoraVeltrixCoupling.dll");
    if (!library) {
        return 1;
    }
    using Factory = IKinoraVeltrixInterface* (*)();
    const auto factory =
        reinterpret_cast<Factory>(reinterpret_cast<void*>(GetProcAddress(library, "GetKinoraVeltrixFactoryInterface")));
    const bool works = factory && factory() && !factory()->CloseProject();
    if (works) {
        std::puts("the factory gives the coupling object");
    }
    FreeLibrary(library);
    return works ? 0 : 2;
}
