#include "simulator/automation/ClassFactory.h"

#include "programs/ComObject.h"

#include <windows.h>

#include <new>

namespace vantor::automation {

const CLSID simulatorClassId = {0x6e8c1b52, 0x4b7d, 0x4e0f, {0x9c, 0x55, 0x2d, 0x0a, 0x7f, 0x3b, 0x91, 0xc4}};

namespace {

class ClassFactory final : public kinora::programs::ComObject<IClassFactory, IID_IClassFactory> {
public:
    explicit ClassFactory(Server& server) : m_server(server) {}

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** result) override {
        if (!result) {
            return E_POINTER;
        }
        *result = nullptr;
        if (outer) {
            return CLASS_E_NOAGGREGATION;
        }
        try {
            IDispatch* application = m_server.NewClient();
            if (!application) {
                return CO_E_SERVER_STOPPING;
            }
            const HRESULT status = application->QueryInterface(iid, result);
            application->Release();
            return status;
        } catch (const std::bad_alloc&) {
            return E_OUTOFMEMORY;
        }
    }

    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
        if (lock != FALSE) {
            m_server.ItsLifetime().AddObject();
        } else {
            m_server.ItsLifetime().RemoveObject();
        }
        return S_OK;
    }

private:
    Server& m_server;
};

} // namespace

IClassFactory* MakeClassFactory(Server& server) {
    return new ClassFactory(server);
}

} // namespace vantor::automation
