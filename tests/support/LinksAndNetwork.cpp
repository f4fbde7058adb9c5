#include "tests/support/TestFolder.h"
#include "tests/support/ThisProgram.h"

#include <windows.h>

#include <filesystem>
#include <vector>

namespace fake {
namespace {

/// The path of a folder in the system below Wine; empty on Windows.
std::wstring UnixPath(const std::wstring& path) {
    using Convert = char* (*)(const wchar_t*);
    const FARPROC found = GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name");
    const auto convert = reinterpret_cast<Convert>(reinterpret_cast<void*>(found));
    // A link is not there yet: its folder is.
    const std::size_t separator = path.find_last_of(L'\\');
    char* const unixFolder = convert ? convert(path.substr(0, separator).c_str()) : nullptr;
    if (!unixFolder) {
        return {};
    }
    const std::wstring folder = std::filesystem::u8path(unixFolder).wstring();
    HeapFree(GetProcessHeap(), 0, unixFolder);
    return folder + L"/" + path.substr(separator + 1);
}

/// Starts a command of the system below Wine, which gives no handle to wait for.
/// @return true when what it makes is there; false on Windows, and when it fails
bool MakeBelowWine(const std::wstring& made, const std::vector<std::wstring>& words) {
    std::wstring command;
    for (const std::wstring& word : words) {
        command += L"\"" + word + L"\" ";
    }
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!CreateProcessW((L"Z:\\bin\\" + words[0]).c_str(), command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                        &startup, &process)) {
        return false;
    }
    constexpr int longestTries = 1000;
    for (int tries = 0; tries < longestTries && !FileExists(made); ++tries) {
        Sleep(10);
    }
    return FileExists(made);
}

/// @return the path of a new folder that is reached through the network; empty where there is none
std::wstring MakeNetworkFolder() {
    const wchar_t* const prefix = _wgetenv(L"WINEPREFIX");
    if (!prefix) {
        return {};
    }
    // Wine looks for \\server\share in this folder of its prefix.
    const std::wstring server = L"kinora-" + std::to_wstring(ThisProcess());
    const std::wstring path = L"\\\\" + server + L"\\share\\folder";
    const std::wstring unixPath = prefix + (L"/dosdevices/unc/" + server) + L"/share/folder";
    return MakeBelowWine(path, {L"mkdir", L"-p", unixPath}) ? path : std::wstring();
}

} // namespace

bool MakeFolderLink(const std::wstring& link, const std::wstring& target) {
    constexpr DWORD unprivileged = 2; // SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE
    if (CreateSymbolicLinkW(link.c_str(), target.c_str(), SYMBOLIC_LINK_FLAG_DIRECTORY | unprivileged) &&
        FileExists(link)) {
        return true;
    }
    // Wine 8 makes none itself; the system below it does.
    return MakeBelowWine(link, {L"ln", L"-s", UnixPath(target), UnixPath(link)});
}

NetworkFolder::NetworkFolder() : TestFolder(MakeNetworkFolder()) {}

} // namespace fake
