#include "bench/soak/Counters.h"

#include "tests/support/OpenHandles.h"

#include <windows.h>

#include <psapi.h>
#include <tlhelp32.h>

namespace {

Counters OfProcess(HANDLE process) {
    Counters counters;
    PROCESS_MEMORY_COUNTERS memory = {};
    memory.cb = sizeof memory;
    if (GetProcessMemoryInfo(process, &memory, sizeof memory)) {
        counters.privateBytes = memory.PagefileUsage;
    }
    counters.handles = OpenHandles(GetProcessId(process));
    return counters;
}

DWORD ProcessId(const std::wstring& fileName) {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof entry;
    DWORD id = 0;
    for (BOOL more = Process32FirstW(snapshot, &entry); more && id == 0; more = Process32NextW(snapshot, &entry)) {
        if (fileName == entry.szExeFile) {
            id = entry.th32ProcessID;
        }
    }
    CloseHandle(snapshot);
    return id;
}

} // namespace

Counters OfThisProcess() {
    return OfProcess(GetCurrentProcess());
}

Counters OfProgram(const std::wstring& fileName) {
    const HANDLE process = OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, ProcessId(fileName));
    if (!process) {
        return {};
    }
    const Counters counters = OfProcess(process);
    CloseHandle(process);
    return counters;
}
