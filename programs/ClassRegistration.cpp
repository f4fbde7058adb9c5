#include "programs/ClassRegistration.h"

#include <objbase.h>

namespace kinora::programs {
namespace {

const std::wstring classes = L"Software\\Classes\\";

std::wstring ClassIdText(const CLSID& classId) {
    wchar_t text[40] = {};
    StringFromGUID2(classId, text, 40);
    return text;
}

/// @param name  null for the key's default value
bool SetValue(HKEY root, const std::wstring& key, const wchar_t* name, const std::wstring& value) {
    const auto bytes = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
    return RegSetKeyValueW(root, (classes + key).c_str(), name, REG_SZ, value.c_str(), bytes) == ERROR_SUCCESS;
}

/// The default value of a key; empty when there is none.
std::wstring GetValue(HKEY root, const std::wstring& key) {
    wchar_t text[1024] = {};
    DWORD bytes = sizeof(text);
    const LSTATUS status = RegGetValueW(root, (classes + key).c_str(), nullptr, RRF_RT_REG_SZ, nullptr, text, &bytes);
    return status == ERROR_SUCCESS ? std::wstring(text) : std::wstring();
}

bool LeadsTo(const std::wstring& progId, const CLSID& classId) {
    CLSID found = {};
    return SUCCEEDED(CLSIDFromProgID(progId.c_str(), &found)) && IsEqualCLSID(found, classId);
}

/// True when the system looks at the user's own classes: proven by a key of this purpose alone, since what stands there
/// for the machine may be the same.
bool UserClassesCount(const ClassEntry& entry) {
    const std::wstring probe = entry.progIds.front() + L".Probe";
    const bool counts = SetValue(HKEY_CURRENT_USER, probe + L"\\CLSID", nullptr, ClassIdText(entry.classId)) &&
                        LeadsTo(probe, entry.classId);
    RegDeleteTreeW(HKEY_CURRENT_USER, (classes + probe).c_str());
    return counts;
}

bool WriteClass(HKEY root, const ClassEntry& entry) {
    const std::wstring key = L"CLSID\\" + ClassIdText(entry.classId);
    const std::wstring server = key + L"\\" + entry.serverKey;
    return SetValue(root, key, nullptr, entry.title) && SetValue(root, server, nullptr, entry.server) &&
           (entry.threadingModel.empty() || SetValue(root, server, L"ThreadingModel", entry.threadingModel)) &&
           SetValue(root, key + L"\\ProgID", nullptr, entry.progIds.front());
}

/// The class id comes first: by it Remove knows the key again.
bool WriteProgId(HKEY root, const std::wstring& progId, const ClassEntry& entry) {
    return SetValue(root, progId + L"\\CLSID", nullptr, ClassIdText(entry.classId)) &&
           SetValue(root, progId, nullptr, entry.title);
}

bool WriteEntry(HKEY root, const ClassEntry& entry) {
    bool isWritten = WriteClass(root, entry);
    for (const std::wstring& progId : entry.progIds) {
        isWritten = isWritten && WriteProgId(root, progId, entry);
    }
    return isWritten;
}

void Remove(HKEY root, const ClassEntry& entry) {
    const std::wstring classId = ClassIdText(entry.classId);
    for (const std::wstring& progId : entry.progIds) {
        if (GetValue(root, progId + L"\\CLSID") == classId) {
            RegDeleteTreeW(root, (classes + progId + L"\\CLSID").c_str());
            RegDeleteKeyW(root, (classes + progId).c_str());
        }
    }
    RegDeleteTreeW(root, (classes + L"CLSID\\" + classId).c_str());
}

/// Registers in one place; takes back what does not lead to the class from a client's view.
bool RegisterIn(HKEY root, const ClassEntry& entry) {
    if (WriteEntry(root, entry) && LeadsTo(entry.progIds.front(), entry.classId)) {
        return true;
    }
    Remove(root, entry);
    return false;
}

std::wstring Joined(const std::vector<std::wstring>& progIds) {
    std::wstring text;
    for (const std::wstring& progId : progIds) {
        text += (text.empty() ? L"" : L" and ") + progId;
    }
    return text;
}

} // namespace

RegistrationResult WriteRegistration(const ClassEntry& entry) {
    const std::wstring done = L"Registered " + Joined(entry.progIds) + L" for ";
    const bool userCounts = UserClassesCount(entry);
    if (userCounts && RegisterIn(HKEY_CURRENT_USER, entry)) {
        return {true, done + L"this user.\n"};
    }
    // A registration of the user's own would hide this one.
    Remove(HKEY_CURRENT_USER, entry);
    if (RegisterIn(HKEY_LOCAL_MACHINE, entry)) {
        return {true, done + L"this machine" +
                          (userCounts ? L"" : L" (classes of the user alone are not looked at here)") + L".\n"};
    }
    return {false, L"The registry cannot be written: run this as a user who may.\n"};
}

RegistrationResult RemoveRegistration(const ClassEntry& entry) {
    Remove(HKEY_CURRENT_USER, entry);
    Remove(HKEY_LOCAL_MACHINE, entry);
    const std::wstring& progId = entry.progIds.front();
    if (LeadsTo(progId, entry.classId)) {
        return {false, L"The registration cannot be removed: run this as a user who may.\n"};
    }
    return {true, L"Unregistered " + progId + L".\n"};
}

bool IsTaken(const std::wstring& progId, const CLSID& classId) {
    CLSID found = {};
    return SUCCEEDED(CLSIDFromProgID(progId.c_str(), &found)) && !IsEqualCLSID(found, classId);
}

} // namespace kinora::programs
