#include "programs/Environment.h"

#ifdef _WIN32
#include "programs/Utf.h"

#include <windows.h>

#include <algorithm>
#include <vector>
#endif

#include <cstdlib>

namespace kinora::programs {

std::string EnvironmentValue(const char* name) {
#ifdef _WIN32
    // Asked of the system: the C runtime keeps a copy that others do not change.
    const std::wstring wideName = WideFromUtf8(name);
    std::vector<wchar_t> value(GetEnvironmentVariableW(wideName.c_str(), nullptr, 0));
    if (value.empty()) {
        return {};
    }
    const DWORD length = GetEnvironmentVariableW(wideName.c_str(), value.data(), static_cast<DWORD>(value.size()));
    return Utf8FromWide({value.data(), std::min<std::size_t>(length, value.size() - 1)});
#else
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
#endif
}

void SetEnvironmentValue(const char* name, const std::string& value) {
#ifdef _WIN32
    _putenv_s(name, value.c_str());
#else
    setenv(name, value.c_str(), 1);
#endif
}

bool IsWine() {
#ifdef _WIN32
    const HMODULE system = GetModuleHandleW(L"ntdll.dll");
    return system != nullptr && GetProcAddress(system, "wine_get_version") != nullptr;
#else
    return false;
#endif
}

} // namespace kinora::programs
