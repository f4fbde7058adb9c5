#include "programs/StayLoaded.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace kinora::programs {

void StayLoaded() {
#ifdef _WIN32
    HMODULE self = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<const wchar_t*>(&StayLoaded), &self);
#endif
}

} // namespace kinora::programs
