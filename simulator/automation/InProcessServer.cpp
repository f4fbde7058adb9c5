// The DLL that brings the simulator into its client's process.
#include "programs/StayLoaded.h"
#include "simulator/automation/InProcess.h"

#include <windows.h>

#include <objbase.h>

STDAPI DllGetClassObject(REFCLSID classId, REFIID iid, void** result) {
    const HRESULT status = vantor::automation::GetInProcessClassObject(classId, iid, result);
    if (SUCCEEDED(status)) {
        // The desktop lives as long as the process, and the system unloads DLLs without asking when a process lets go
        // of automation.
        kinora::programs::StayLoaded();
    }
    return status;
}

STDAPI DllCanUnloadNow() {
    return vantor::automation::IsInProcessClassInUse() ? S_FALSE : S_OK;
}
