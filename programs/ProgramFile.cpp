#include "programs/ProgramFile.h"

#ifdef _WIN32
#include <windows.h>

#include <string>
#endif

namespace kinora::programs {

std::filesystem::path ProgramFile() {
#ifdef _WIN32
    constexpr std::size_t longestPath = 32768;
    std::wstring name(longestPath, L'\0');
    name.resize(GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size())));
    return name;
#else
    std::error_code ignored;
    return std::filesystem::read_symlink("/proc/self/exe", ignored);
#endif
}

} // namespace kinora::programs
