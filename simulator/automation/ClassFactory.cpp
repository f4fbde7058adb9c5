#include "simulator/automation/ClassFactory.h"

#include "programs/ComObject.h"

#include <windows.h>

#include <new>
#include <utility>

namespace vantor::automation {
namespace {

class ClassFactory final : public kinora::programs::ComObject<IClassFactory, IID_IClassFactory> {
public:
    ClassFactory(std::function<IDispatch*()> newClient, std::function<void(bool)> lock)
        : m_newClient(std::move(newClient)), m_lock(std::move(lock)) {}

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** result) override {
        if (!result) {
            return E_POINTER;
        }
        *result = nullptr;
        if (outer) {
            return CLASS_E_NOAGGREGATION;
        }
        try {
            IDispatch* application = m_newClient();
            if (!application) {
                return CO_E_SERVER_STOPPING;
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
        m_lock(lock != FALSE);
        return S_OK;
    }

private:
    std::function<IDispatch*()> m_newClient;
    std::function<void(bool)> m_lock;
};

} // namespace

IClassFactory* MakeClassFactory(std::function<IDispatch*()> newClient, std::function<void(bool)> lock) {
    return new ClassFactory(std::move(newClient), std::move(lock));
}

} // namespace vantor::automation
