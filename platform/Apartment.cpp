#include "platform/Apartment.h"

#include <objbase.h>

namespace platform {
namespace {

struct Apartment {
    unsigned count = 0;
    DWORD model = COINIT_MULTITHREADED;
};

thread_local Apartment apartment;

} // namespace

bool HasApartment() {
    return apartment.count > 0;
}

} // namespace platform

using platform::apartment;

HRESULT CoInitialize(void* reserved) {
    return CoInitializeEx(reserved, COINIT_APARTMENTTHREADED);
}

// cppcheck-suppress constParameter ; the platform's signature
HRESULT CoInitializeEx(void* reserved, DWORD model) {
    if (reserved) {
        return E_INVALIDARG;
    }
    const DWORD wanted = model & COINIT_APARTMENTTHREADED;
    if (apartment.count > 0 && apartment.model != wanted) {
        return RPC_E_CHANGED_MODE;
    }
    apartment.model = wanted;
    return apartment.count++ == 0 ? S_OK : S_FALSE;
}

HRESULT CoGetApartmentType(APTTYPE* type, APTTYPEQUALIFIER* qualifier) {
    if (!type || !qualifier) {
        return E_INVALIDARG;
    }
    if (!platform::HasApartment()) {
        return CO_E_NOTINITIALIZED;
    }
    *type = apartment.model == COINIT_MULTITHREADED ? APTTYPE_MTA : APTTYPE_STA;
    *qualifier = APTTYPEQUALIFIER_NONE;
    return S_OK;
}

void CoUninitialize() {
    if (apartment.count > 0) {
        --apartment.count;
    }
}
