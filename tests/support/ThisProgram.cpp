#include "tests/support/ThisProgram.h"

#include <windows.h>

#include <array>

namespace fake {

std::wstring ThisProgram() {
    std::array<wchar_t, 1024> path{};
    GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return path.data();
}

std::wstring BesideThisProgram(const std::wstring& name) {
    const std::wstring program = ThisProgram();
    return program.substr(0, program.find_last_of(L'\\') + 1) + name;
}

} // namespace fake
