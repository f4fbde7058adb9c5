#include "simulator/automation/Registration.h"

#include "simulator/automation/ClassFactory.h"

#include <windows.h>

#include <objbase.h>

#include <vector>

namespace vantor::automation {
namespace {

constexpr const wchar_t* title = L"Simulator of the QUORIX Vantor Desktop";

std::wstring ClassIdText(const CLSID& classId) {
    wchar_t text[40] = {};
    StringFromGUID2(classId, text, 40);
    return text;
}

std::wstring ProgramPath() {
    std::vector<wchar_t> path(32768);
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return std::wstring(path.data(), length);
}

bool SetValue(HKEY root, const std::wstring& key, const std::wstring& value) {
    const auto size = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
    HKEY opened = nullptr;
    if (RegCreateKeyExW(root, key.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &opened, nullptr) != ERROR_SUCCESS) {
        return false;
    }
    const LSTATUS status =
        RegSetValueExW(opened, nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()), size);
    RegCloseKey(opened);
    return status == ERROR_SUCCESS;
}

/// The default value of a key; empty when there is none.
std::wstring GetValue(HKEY root, const std::wstring& key) {
    wchar_t text[1024] = {};
    DWORD size = sizeof(text);
    const LSTATUS status = RegGetValueW(root, key.c_str(), nullptr, RRF_RT_REG_SZ, nullptr, text, &size);
    return status == ERROR_SUCCESS ? std::wstring(text) : std::wstring();
}

const std::wstring classes = L"Software\\Classes\\";

/// The class that a ProgID leads to, in the view that clients have.
bool ResolvesToSimulator(const wchar_t* progId) {
    CLSID found = {};
    return SUCCEEDED(CLSIDFromProgID(progId, &found)) && IsEqualCLSID(found, simulatorClassId);
}

bool IsTaken(const wchar_t* progId) {
    CLSID found = {};
    return SUCCEEDED(CLSIDFromProgID(progId, &found)) && !IsEqualCLSID(found, simulatorClassId);
}

/// True when the system looks at the user's own classes: proven by a key of this purpose alone, since what stands there
/// for the machine may be the same.
bool UserClassesCount() {
    constexpr const wchar_t* probe = L"Pellux.VantorDesktop.Simulator.Probe";
    const std::wstring key = classes + probe;
    CLSID found = {};
    const bool counts = SetValue(HKEY_CURRENT_USER, key + L"\\CLSID", ClassIdText(simulatorClassId)) &&
                        SUCCEEDED(CLSIDFromProgID(probe, &found));
    RegDeleteTreeW(HKEY_CURRENT_USER, key.c_str());
    return counts;
}

bool WriteClass(HKEY root) {
    const std::wstring key = classes + L"CLSID\\" + ClassIdText(simulatorClassId);
    return SetValue(root, key, title) && SetValue(root, key + L"\\LocalServer32", L"\"" + ProgramPath() + L"\"") &&
           SetValue(root, key + L"\\ProgID", simulatorProgId);
}

bool WriteProgId(HKEY root, const wchar_t* progId) {
    const std::wstring key = classes + progId;
    return SetValue(root, key, title) && SetValue(root, key + L"\\CLSID", ClassIdText(simulatorClassId));
}

bool Write(HKEY root, bool withDefault) {
    return WriteClass(root) && WriteProgId(root, simulatorProgId) && (!withDefault || WriteProgId(root, desktopProgId));
}

void Remove(HKEY root) {
    const std::wstring classId = ClassIdText(simulatorClassId);
    for (const wchar_t* progId : {simulatorProgId, desktopProgId}) {
        if (GetValue(root, classes + progId + L"\\CLSID") == classId) {
            RegDeleteTreeW(root, (classes + progId + L"\\CLSID").c_str());
            RegDeleteKeyW(root, (classes + progId).c_str());
        }
    }
    RegDeleteTreeW(root, (classes + L"CLSID\\" + classId).c_str());
}

std::wstring Described(const wchar_t* whom, bool withDefault) {
    return L"Registered " + std::wstring(simulatorProgId) + (withDefault ? L" and " : L"") +
           (withDefault ? desktopProgId : L"") + L" for " + whom + L".\n";
}

} // namespace

RegistrationResult RegisterServer(bool alsoDefault) {
    RegistrationResult result;
    const bool withDefault = alsoDefault && !IsTaken(desktopProgId);
    if (alsoDefault && !withDefault) {
        result.text = L"Another program holds " + std::wstring(desktopProgId) + L": it is left as it is.\n";
    }
    if (UserClassesCount() && Write(HKEY_CURRENT_USER, withDefault)) {
        result.succeeded = true;
        result.text += Described(L"this user", withDefault);
        return result;
    }
    Remove(HKEY_CURRENT_USER);
    result.succeeded = Write(HKEY_LOCAL_MACHINE, withDefault) && ResolvesToSimulator(simulatorProgId);
    result.text += result.succeeded
                       ? Described(L"this machine (classes of the user alone are not looked at here)", withDefault)
                       : L"The registry cannot be written: run this as a user who may.\n";
    return result;
}

RegistrationResult UnregisterServer() {
    Remove(HKEY_CURRENT_USER);
    Remove(HKEY_LOCAL_MACHINE);
    RegistrationResult result;
    result.succeeded = !ResolvesToSimulator(simulatorProgId);
    result.text = result.succeeded ? L"Unregistered " + std::wstring(simulatorProgId) + L".\n"
                                   : L"The registration cannot be removed: run this as a user who may.\n";
    return result;
}

} // namespace vantor::automation
