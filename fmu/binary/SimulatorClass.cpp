// What Windows asks a DLL with a class in it: the simulator is part of this one.
#include "simulator/automation/InProcess.h"

#include <windows.h>

#include <objbase.h>

STDAPI DllGetClassObject(REFCLSID classId, REFIID iid, void** result) {
    return vantor::automation::GetInProcessClassObject(classId, iid, result);
}

STDAPI DllCanUnloadNow() {
    return S_FALSE; // the functions of the standard are in it
}
