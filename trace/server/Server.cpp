// The COM server: gives traced desktops to clients of this process.
#include "trace/server/ClassId.h"
#include "trace/server/Launch.h"

#include <windows.h>

#include <objbase.h>

#include <atomic>
#include <new>

namespace kinora::trace {
namespace {

std::atomic<long> serverLocks{0};

/// The factory has no state and lives as long as the DLL.
class ClassFactory final : public IClassFactory {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** result) override {
        if (!result) {
            return E_POINTER;
        }
        const bool isKnown = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IClassFactory);
        *result = isKnown ? static_cast<IClassFactory*>(this) : nullptr;
        return isKnown ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** result) override {
        if (!result) {
            return E_POINTER;
        }
        *result = nullptr;
        if (outer) {
            return CLASS_E_NOAGGREGATION;
        }
        try {
            IDispatch* application = nullptr;
            const HRESULT code = LaunchTraced(ProcessTracer(), TargetProgId(), &application);
            if (FAILED(code)) {
                return code;
            }
            const HRESULT status = application->QueryInterface(iid, result);
            application->Release();
            return status;
        } catch (const std::bad_alloc&) {
            return E_OUTOFMEMORY;
        } catch (...) {
            return E_UNEXPECTED;
        }
    }

    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
        serverLocks += lock != FALSE ? 1 : -1;
        return S_OK;
    }
};

} // namespace
} // namespace kinora::trace

STDAPI DllGetClassObject(REFCLSID classId, REFIID iid, void** result) {
    static kinora::trace::ClassFactory factory;
    if (!result) {
        return E_POINTER;
    }
    *result = nullptr;
    return IsEqualCLSID(classId, kinora::trace::traceClassId) ? factory.QueryInterface(iid, result)
                                                              : CLASS_E_CLASSNOTAVAILABLE;
}

STDAPI DllCanUnloadNow() {
    // Once it has traced something the server stays: its file belongs to the whole process.
    return kinora::trace::serverLocks > 0 || kinora::trace::HasProcessTracer() ? S_FALSE : S_OK;
}
