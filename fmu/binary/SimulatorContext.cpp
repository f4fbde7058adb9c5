#include "fmu/binary/SimulatorContext.h"

#include "fmu/binary/Errors.h"
#include "fmu/core/Packing.h"

#include <windows.h>

#include <filesystem>
#include <string>

namespace kinora::fmu {
namespace {

/// The folder of this binary.
std::wstring OwnFolder() {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&OwnFolder), &module);
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size())));
    return path.substr(0, path.find_last_of(L'\\'));
}

} // namespace

SimulatorContext::SimulatorContext(bool isWanted) {
    if (!isWanted) {
        return;
    }
    // The file that it names, this one, is looked for beside it.
    const std::wstring source = OwnFolder() + L"\\" + std::filesystem::path(manifestFile).wstring();
    ACTCTXW description = {};
    description.cbSize = sizeof(description);
    description.lpSource = source.c_str();
    const HANDLE context = CreateActCtxW(&description);
    ULONG_PTR cookie = 0;
    if (context == INVALID_HANDLE_VALUE || !ActivateActCtx(context, &cookie)) {
        throw FmuError("The simulator within the FMU cannot be found by Windows (" + std::to_string(GetLastError()) +
                       "): unpack the FMU anew.");
    }
    m_activation.reset(context, [cookie](void* activated) {
        DeactivateActCtx(0, cookie);
        // The threads that took it over hold it.
        ReleaseActCtx(activated);
    });
}

SimulatorContext::~SimulatorContext() = default;

} // namespace kinora::fmu
