// The DLL that brings the simulator into its client's process.
#include "simulator/automation/InProcess.h"

#include <windows.h>

#include <objbase.h>

namespace {

/// The desktop lives as long as the process, and the system unloads DLLs without asking when a process lets go of
/// automation.
void StayLoaded() {
    HMODULE self = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<const wchar_t*>(&StayLoaded), &self);
}

} // namespace

STDAPI DllGetClassObject(REFCLSID classId, REFIID iid, void** result) {
    const HRESULT status = vantor::automation::GetInProcessClassObject(classId, iid, result);
    if (SUCCEEDED(status)) {
        StayLoaded();
    }
    return status;
}

STDAPI DllCanUnloadNow() {
    return vantor::automation::IsInProcessClassInUse() ? S_FALSE : S_OK;
}
