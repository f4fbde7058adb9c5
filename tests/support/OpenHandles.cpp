#include "tests/support/OpenHandles.h"

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace {

/// The system's list of all handles, as the driver kit documents it.
struct HandleEntry {
    void* object;
    std::uintptr_t processId;
    std::uintptr_t handle;
    std::uint32_t access;
    std::uint16_t backTrace;
    std::uint16_t type;
    std::uint32_t attributes;
    std::uint32_t reserved;
};
struct HandleList {
    std::uintptr_t count;
    std::uintptr_t reserved;
    HandleEntry entries[1];
};

constexpr int systemExtendedHandleInformation = 64;
constexpr long statusInfoLengthMismatch = static_cast<long>(0xC0000004);
using QuerySystemInformation = long(WINAPI*)(int, void*, unsigned long, unsigned long*);

} // namespace

std::size_t OpenHandles(unsigned long processId) {
    const auto query = reinterpret_cast<QuerySystemInformation>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation")));
    std::vector<std::uintptr_t> buffer(1 << 14);
    long status = statusInfoLengthMismatch;
    while (status == statusInfoLengthMismatch) {
        buffer.resize(2 * buffer.size());
        status = query(systemExtendedHandleInformation, buffer.data(),
                       static_cast<unsigned long>(buffer.size() * sizeof buffer.front()), nullptr);
    }
    if (status != 0) {
        return 0;
    }
    const auto* list = reinterpret_cast<const HandleList*>(buffer.data());
    return static_cast<std::size_t>(
        std::count_if(list->entries, list->entries + list->count,
                      [&](const HandleEntry& entry) { return entry.processId == processId; }));
}
