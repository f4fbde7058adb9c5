#include "comutils/DesktopCommands.h"
#include "comutils/Text.h"
#include "coupling/LaunchErrors.h"
#include "coupling/Operation.h"

#include <windows.h>

#include <objbase.h>

#include <cstdlib>

namespace {

constexpr char versionVariable[] = "KINORA_VELTRIX_VTDK_VERSION";

std::string DesktopProgId() {
    const char* version = std::getenv(versionVariable);
    return version ? std::string(desktopProgId) + "." + version : desktopProgId;
}

CLSID DesktopClass(const std::string& progId) {
    CLSID desktopClass;
    if (FAILED(CLSIDFromProgID(Text::ToWide(progId).c_str(), &desktopClass))) {
        throw LaunchDesktopExeption(desktopNotInstalled);
    }
    return desktopClass;
}

IDispatch* CreateApplication(const CLSID& desktopClass) {
    IDispatch* application = nullptr;
    const HRESULT outcome =
        CoCreateInstance(desktopClass, nullptr, CLSCTX_SERVER, IID_IDispatch, reinterpret_cast<void**>(&application));
    if (FAILED(outcome) || !application) {
        throw LaunchDesktopExeption(desktopNotStarted);
    }
    return application;
}

} // namespace

bool CKinoraVeltrixCoupling::LaunchDesktop() {
    const Operation operation(*this);
    return operation.HasBegun() && Launch();
}

bool CKinoraVeltrixCoupling::Launch() {
    return m_pApplication || Launch(DesktopProgId());
}

bool CKinoraVeltrixCoupling::Launch(const std::string& progId) {
    const CLSID desktopClass = DesktopClass(progId);
    // Fails harmlessly on a thread that is initialised already.
    (void)CoInitialize(nullptr);
    m_pApplication = CreateApplication(desktopClass);
    CObject desktop;
    if (!DesktopCommands::GetAppDesktop(m_pApplication, desktop)) {
        return false;
    }
    m_pDesktop = desktop.release();
    return true;
}

bool CKinoraVeltrixCoupling::LaunchWhenNeeded() {
    return m_pDesktop || Launch();
}

bool CKinoraVeltrixCoupling::QuitApplication() {
    const Operation operation(*this);
    if (!operation.HasBegun()) {
        return false;
    }
    if (m_pProject) {
        const OwnCalls calls(*this);
        if (!SaveProject() || !CloseProject()) {
            return false;
        }
    }
    if (m_pDesktop) {
        DesktopCommands::QuitApplication(m_pDesktop);
    }
    ReleaseReference(m_pDesktop);
    ReleaseReference(m_pApplication);
    CoUninitialize();
    return true;
}

bool CKinoraVeltrixCoupling::ReleaseApplication() {
    const Operation operation(*this);
    if (!operation.HasBegun()) {
        return false;
    }
    ReleaseReference(m_pDesign);
    ReleaseReference(m_pProject);
    ReleaseReference(m_pDesktop);
    ReleaseReference(m_pApplication);
    CoUninitialize();
    return true;
}
