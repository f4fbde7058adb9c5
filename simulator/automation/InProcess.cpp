#include "simulator/automation/InProcess.h"

#include "simulator/automation/ClassFactory.h"
#include "simulator/automation/ClassIds.h"
#include "simulator/automation/DesktopSetup.h"
#include "simulator/automation/Server.h"

#include <windows.h>

#include <atomic>
#include <new>

namespace vantor::automation {
namespace {

std::atomic<bool> isInUse{false};

/// The desktop that the clients of this process find, as long as none has quit it.
///
/// Safe to use from any thread.
class ProcessDesktop {
public:
    IDispatch* NewClient() {
        for (;;) {
            const std::shared_ptr<Server> server = Current();
            if (IDispatch* application = server->NewClient()) {
                return application;
            }
            // It is being quit at this moment.
            Forget(server.get());
        }
    }

private:
    std::shared_ptr<Server> Current() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_server) {
            m_server = MakeServer();
        }
        return m_server;
    }

    std::shared_ptr<Server> MakeServer() {
        const std::shared_ptr<model::Desktop> desktop = SetUpDesktop(usualUpdateReports);
        auto server = std::make_shared<Server>(desktop);
        server->OnQuit([this, desktop, server = server.get()] {
            desktop->CloseProjects();
            Forget(server);
        });
        return server;
    }

    /// The next client gets another desktop.
    void Forget(const Server* server) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        // The caller has it too, so that it does not end under the mutex.
        if (m_server.get() == server) {
            m_server.reset();
        }
    }

    std::mutex m_mutex;
    std::shared_ptr<Server> m_server;
};

ProcessDesktop& TheProcessDesktop() {
    // Never destroyed: objects may be released until the process has ended.
    static ProcessDesktop& desktop = *new ProcessDesktop;
    return desktop;
}

} // namespace

HRESULT GetInProcessClassObject(REFCLSID classId, REFIID iid, void** result) {
    if (!result) {
        return E_POINTER;
    }
    *result = nullptr;
    if (!IsEqualCLSID(classId, inProcessClassId)) {
        return CLASS_E_CLASSNOTAVAILABLE;
    }
    try {
        // Nothing unloads what carries the desktop, locked or not.
        IClassFactory* factory = MakeClassFactory([] { return TheProcessDesktop().NewClient(); }, [](bool) {});
        const HRESULT status = factory->QueryInterface(iid, result);
        factory->Release();
        if (SUCCEEDED(status)) {
            isInUse = true;
        }
        return status;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

bool IsInProcessClassInUse() {
    return isInUse;
}

} // namespace vantor::automation
