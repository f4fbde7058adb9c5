#include "tests/support/Registration.h"

#include "tests/support/ThisProgram.h"

#include <windows.h>

#include <objbase.h>
#include <oleauto.h>

#include <array>
#include <cstdlib>
#include <gtest/gtest.h>
#include <vector>

namespace fake {
namespace {

constexpr const char* versionVariable = "KINORA_VELTRIX_VTDK_VERSION";
std::vector<Registration*> registrations;

std::wstring ClassIdText(const CLSID& classId) {
    std::array<wchar_t, 40> text{};
    StringFromGUID2(classId, text.data(), static_cast<int>(text.size()));
    return text.data();
}

bool WriteKey(HKEY root, const std::wstring& key, const std::wstring& value, const wchar_t* name = nullptr) {
    const auto size = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
    return RegSetKeyValueW(root, (L"Software\\Classes\\" + key).c_str(), name, REG_SZ, value.c_str(), size) ==
           ERROR_SUCCESS;
}

} // namespace

class ClassFactory final : public IClassFactory {
public:
    static ClassFactory& Of(Registration& registration) {
        static ClassFactory factory;
        factory.m_registration = &registration;
        return factory;
    }
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        const bool isKnown = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IClassFactory);
        *object = isKnown ? this : nullptr;
        return isKnown ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
        return m_registration->CreateInstance(outer, iid, object);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

    static HRESULT Find(REFCLSID classId, REFIID iid, void** object) {
        for (Registration* const registration : registrations) {
            if (IsEqualCLSID(registration->m_classId, classId)) {
                return Of(*registration).QueryInterface(iid, object);
            }
        }
        return CLASS_E_CLASSNOTAVAILABLE;
    }

private:
    Registration* m_registration = nullptr;
};

Registration::Registration(const std::wstring& progId) : m_progId(progId) {
    CoCreateGuid(&m_classId);
    registrations.push_back(this);
    // Per user where the system merges that into what it looks up, else for the machine.
    for (const HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
        if (Register(root)) {
            m_root = root;
            return;
        }
        Unregister(root);
    }
    ADD_FAILURE() << "cannot register a class for the test";
}

Registration::~Registration() {
    for (std::size_t index = 0; index < registrations.size(); ++index) {
        if (registrations[index] == this) {
            registrations.erase(registrations.begin() + static_cast<std::ptrdiff_t>(index));
        }
    }
    if (m_root) {
        Unregister(m_root);
    }
}

bool Registration::Register(HKEY root) {
    const std::wstring serverKey = L"CLSID\\" + ClassIdText(m_classId) + L"\\InprocServer32";
    CLSID found{};
    return WriteKey(root, m_progId + L"\\CLSID", ClassIdText(m_classId)) && WriteKey(root, serverKey, ThisProgram()) &&
           WriteKey(root, serverKey, L"Both", L"ThreadingModel") && CLSIDFromProgID(m_progId.c_str(), &found) == S_OK &&
           IsEqualCLSID(found, m_classId);
}

void Registration::Unregister(HKEY root) const {
    RegDeleteTreeW(root, (L"Software\\Classes\\" + m_progId).c_str());
    RegDeleteTreeW(root, (L"Software\\Classes\\CLSID\\" + ClassIdText(m_classId)).c_str());
}

std::string Registration::UniqueVersion() {
    return "Test" + std::to_string(GetCurrentProcessId());
}

std::wstring Registration::UniqueProgId() {
    return L"Pellux.VantorDesktop.Test" + std::to_wstring(GetCurrentProcessId());
}

HRESULT Registration::CreateInstance(IUnknown* outer, REFIID iid, void** object) {
    ++m_creations;
    m_askedForDispatchOnly = m_askedForDispatchOnly && outer == nullptr && IsEqualIID(iid, IID_IDispatch);
    *object = nullptr;
    if (FAILED(m_refusal) || !m_application) {
        return m_refusal;
    }
    return m_application->QueryInterface(iid, object);
}

VersionVariable::VersionVariable(const char* version) {
    const char* const before = std::getenv(versionVariable);
    m_before = before == nullptr ? "" : before;
    _putenv_s(versionVariable, !version ? "" : version);
}

VersionVariable::~VersionVariable() {
    _putenv_s(versionVariable, m_before.c_str());
}

} // namespace fake

/// Exported by exports.def: the test program is the in-process server of its own classes.
STDAPI DllGetClassObject(REFCLSID classId, REFIID iid, void** object) {
    return fake::ClassFactory::Find(classId, iid, object);
}
