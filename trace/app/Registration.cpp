#include "trace/app/Registration.h"

#include "trace/server/ClassId.h"

#include <windows.h>

#include <objbase.h>

#include <filesystem>
#include <vector>

namespace kinora::trace {
namespace {

constexpr const wchar_t* title = L"Trace of the QUORIX Vantor Desktop";
const std::wstring classes = L"Software\\Classes\\";

std::wstring ClassIdText() {
    wchar_t text[40] = {};
    StringFromGUID2(traceClassId, text, 40);
    return text;
}

std::filesystem::path ServerFile() {
    std::vector<wchar_t> path(32768);
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return std::filesystem::path(std::wstring(path.data(), length)).parent_path() / L"vantor-trace-server.dll";
}

bool Set(HKEY root, const std::wstring& key, const wchar_t* name, const std::wstring& value) {
    const auto bytes = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
    return RegSetKeyValueW(root, (classes + key).c_str(), name, REG_SZ, value.c_str(), bytes) == ERROR_SUCCESS;
}

bool Write(HKEY root, const std::wstring& server) {
    const std::wstring classKey = L"CLSID\\" + ClassIdText();
    return Set(root, classKey, nullptr, title) && Set(root, classKey + L"\\ProgID", nullptr, traceProgId) &&
           Set(root, classKey + L"\\InprocServer32", nullptr, server) &&
           Set(root, classKey + L"\\InprocServer32", L"ThreadingModel", L"Both") &&
           Set(root, traceProgId, nullptr, title) &&
           Set(root, traceProgId + std::wstring(L"\\CLSID"), nullptr, ClassIdText());
}

void Remove(HKEY root) {
    RegDeleteTreeW(root, (classes + traceProgId).c_str());
    RegDeleteTreeW(root, (classes + L"CLSID\\" + ClassIdText()).c_str());
}

bool IsFound() {
    CLSID found = {};
    return SUCCEEDED(CLSIDFromProgID(traceProgId, &found)) && IsEqualCLSID(found, traceClassId);
}

/// Registers in one place; takes back what does not lead to the server from a client's view.
bool RegisterIn(HKEY root, const std::wstring& server) {
    if (Write(root, server) && IsFound()) {
        return true;
    }
    Remove(root);
    return false;
}

} // namespace

RegistrationResult RegisterServer() {
    const std::filesystem::path server = ServerFile();
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(server, ignored)) {
        return {false, server.wstring() + L" is missing: it must lie beside this program.\n"};
    }
    if (RegisterIn(HKEY_LOCAL_MACHINE, server.wstring())) {
        // A registration of the user's own would hide this one.
        Remove(HKEY_CURRENT_USER);
        return {true, std::wstring(L"Registered ") + traceProgId + L" for this machine.\n"};
    }
    if (RegisterIn(HKEY_CURRENT_USER, server.wstring())) {
        return {true, std::wstring(L"Registered ") + traceProgId + L" for this user.\n"};
    }
    return {false, L"The registry cannot be written: run this as a user who may.\n"};
}

RegistrationResult UnregisterServer() {
    Remove(HKEY_CURRENT_USER);
    Remove(HKEY_LOCAL_MACHINE);
    return IsFound() ? RegistrationResult{false, L"The registration cannot be removed: run this as a user who may.\n"}
                     : RegistrationResult{true, std::wstring(L"Unregistered ") + traceProgId + L".\n"};
}

} // namespace kinora::trace
