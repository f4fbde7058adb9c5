#include "host/app/ComScope.h"

#include "scenario/Errors.h"

#include <windows.h>

#include <objbase.h>

#include <fmt/format.h>

namespace kinora::host {

ComScope::ComScope() {
    const HRESULT result = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    if (FAILED(result)) {
        throw scenario::RunError(fmt::format("COM cannot be initialised ({:#x}).", static_cast<unsigned>(result)));
    }
}

ComScope::~ComScope() {
    CoUninitialize();
}

} // namespace kinora::host
