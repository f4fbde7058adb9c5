#include "tests/support/Registration.h"

#include "tests/support/ThisProgram.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace fake {
namespace {

constexpr const char* versionVariable = "KINORA_VELTRIX_VTDK_VERSION";
std::vector<Registration*> registrations;

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

private:
    Registration* m_registration = nullptr;
};

HRESULT FindClassObject(REFCLSID classId, REFIID iid, void** object) {
    for (Registration* const registration : registrations) {
        if (IsEqualCLSID(registration->ClassId(), classId)) {
            return ClassFactory::Of(*registration).QueryInterface(iid, object);
        }
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}

Registration::Registration(const std::wstring& progId) : m_entry(progId) {
    registrations.push_back(this);
}

Registration::~Registration() {
    registrations.erase(std::remove(registrations.begin(), registrations.end(), this), registrations.end());
}

std::string Registration::UniqueVersion() {
    return "Test" + std::to_string(ThisProcess());
}

std::wstring Registration::UniqueProgId() {
    return L"Pellux.VantorDesktop.Test" + std::to_wstring(ThisProcess());
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
    if (before) {
        m_before = before;
    }
    SetEnvironment(versionVariable, version);
}

VersionVariable::~VersionVariable() {
    SetEnvironment(versionVariable, m_before ? m_before->c_str() : nullptr);
}

} // namespace fake
