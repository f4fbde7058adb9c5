#include "platform/Memory.h"

#include <objidl.h>

#include <cstdlib>

namespace {

IMallocSpy* spy = nullptr;

} // namespace

namespace platform {

void* Allocate(std::size_t bytes) {
    if (!spy) {
        return std::malloc(bytes);
    }
    const std::size_t granted = spy->PreAlloc(bytes);
    return spy->PostAlloc(granted == 0 ? nullptr : std::malloc(granted));
}

void Free(void* block) {
    if (!block) {
        return;
    }
    if (!spy) {
        std::free(block);
        return;
    }
    std::free(spy->PreFree(block, TRUE));
    spy->PostFree(TRUE);
}

} // namespace platform

HRESULT CoRegisterMallocSpy(IMallocSpy* newSpy) {
    if (!newSpy) {
        return E_INVALIDARG;
    }
    if (spy) {
        return CO_E_OBJISREG;
    }
    spy = newSpy;
    return S_OK;
}
