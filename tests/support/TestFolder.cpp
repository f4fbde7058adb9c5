#include "tests/support/TestFolder.h"

#include <windows.h>

#include <array>
#include <filesystem>
#include <gtest/gtest.h>
#include <vector>

namespace fake {
namespace {

HANDLE OpenFileHandle(const std::wstring& path, DWORD access, DWORD disposition) {
    return CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, disposition,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

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
    const std::wstring server = L"kinora-" + std::to_wstring(GetCurrentProcessId());
    const std::wstring path = L"\\\\" + server + L"\\share\\folder";
    const std::wstring unixPath = prefix + (L"/dosdevices/unc/" + server) + L"/share/folder";
    return MakeBelowWine(path, {L"mkdir", L"-p", unixPath}) ? path : std::wstring();
}

} // namespace

TestFolder::TestFolder() {
    std::array<wchar_t, MAX_PATH> temporary{};
    GetTempPathW(static_cast<DWORD>(temporary.size()), temporary.data());
    const std::wstring start =
        std::wstring(temporary.data()) + L"kinora-" + std::to_wstring(GetCurrentProcessId()) + L"-";
    static unsigned number = 0;
    // A process of the same number that was ended may have left its folders.
    do {
        m_path = start + std::to_wstring(++number);
    } while (FileExists(m_path));
    MakeFolder(m_path);
}

TestFolder::~TestFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(std::filesystem::path(m_path), ignored);
}

void WriteFileBytes(const std::wstring& path, const std::string& bytes) {
    const HANDLE file = OpenFileHandle(path, GENERIC_WRITE, CREATE_ALWAYS);
    DWORD written = 0;
    EXPECT_TRUE(WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr));
    CloseHandle(file);
}

std::string ReadFileBytes(const std::wstring& path) {
    const HANDLE file = OpenFileHandle(path, GENERIC_READ, OPEN_EXISTING);
    if (file == INVALID_HANDLE_VALUE) {
        ADD_FAILURE() << "cannot read " << std::filesystem::path(path);
        return {};
    }
    std::string bytes(GetFileSize(file, nullptr), '\0');
    DWORD read = 0;
    EXPECT_TRUE(ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr));
    CloseHandle(file);
    return bytes;
}

bool FileExists(const std::wstring& path) {
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

void MakeFolder(const std::wstring& path) {
    EXPECT_TRUE(CreateDirectoryW(path.c_str(), nullptr));
}

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
