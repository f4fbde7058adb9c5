#include "bench/memory/LiveBytes.h"

#include <windows.h>

#include <malloc.h>

namespace {

std::size_t BusyBytes(HANDLE heap) {
    std::size_t bytes = 0;
    PROCESS_HEAP_ENTRY entry = {};
    while (HeapWalk(heap, &entry)) {
        if (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) {
            bytes += entry.cbData;
        }
    }
    return bytes;
}

} // namespace

std::size_t LiveBytes() {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the run-time library gives its heap's handle as a number
    const HANDLE runTime = reinterpret_cast<HANDLE>(_get_heap_handle());
    return BusyBytes(GetProcessHeap()) + (runTime == GetProcessHeap() ? 0 : BusyBytes(runTime));
}
