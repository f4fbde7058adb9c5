#include "tests/support/ClassEntry.h"

#include "tests/support/ThisProgram.h"

#include <array>
#include <cstdlib>
#include <gtest/gtest.h>

namespace fake {
namespace {

const std::wstring classes = L"Software\\Classes\\";

std::wstring ClassIdText(const CLSID& classId) {
    std::array<wchar_t, 40> text{};
    StringFromGUID2(classId, text.data(), static_cast<int>(text.size()));
    return text.data();
}

CLSID NewClassId() {
    CLSID classId{};
    CoCreateGuid(&classId);
    return classId;
}

bool WriteKey(HKEY root, const std::wstring& key, const std::wstring& value, const wchar_t* name = nullptr) {
    const auto size = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
    return RegSetKeyValueW(root, (classes + key).c_str(), name, REG_SZ, value.c_str(), size) == ERROR_SUCCESS;
}

bool Register(HKEY root, const std::wstring& progId, const CLSID& classId) {
    const std::wstring serverKey = L"CLSID\\" + ClassIdText(classId) + L"\\InprocServer32";
    CLSID found{};
    return WriteKey(root, progId + L"\\CLSID", ClassIdText(classId)) && WriteKey(root, serverKey, ThisProgram()) &&
           WriteKey(root, serverKey, L"Both", L"ThreadingModel") && CLSIDFromProgID(progId.c_str(), &found) == S_OK &&
           IsEqualCLSID(found, classId);
}

void Unregister(HKEY root, const std::wstring& progId, const CLSID& classId) {
    RegDeleteTreeW(root, (classes + progId).c_str());
    RegDeleteTreeW(root, (classes + L"CLSID\\" + ClassIdText(classId)).c_str());
}

} // namespace

/// Where in the registry the class stands.
struct ClassEntry::Place {
    HKEY root;
    std::wstring progId;
};

ClassEntry::ClassEntry(const std::wstring& progId) : m_classId(NewClassId()) {
    // Per user where the system merges that into what it looks up, else for the machine.
    for (const HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
        if (Register(root, progId, m_classId)) {
            m_place = std::make_unique<Place>(Place{root, progId});
            return;
        }
        Unregister(root, progId, m_classId);
    }
    ADD_FAILURE() << "cannot register a class for the test";
}

ClassEntry::~ClassEntry() {
    if (m_place) {
        Unregister(m_place->root, m_place->progId, m_classId);
    }
}

void SetEnvironment(const char* name, const char* value) {
    _putenv_s(name, !value ? "" : value);
}

} // namespace fake

/// Exported by exports.def: the test program is the in-process server of its own classes.
STDAPI DllGetClassObject(REFCLSID classId, REFIID iid, void** object) {
    return fake::FindClassObject(classId, iid, object);
}
