#include "coupling/ReportsFolder.h"

#include "comutils/Text.h"

#include <windows.h>

#include <filesystem>
#include <memory>
#include <system_error>

namespace {

struct EndSearch {
    void operator()(HANDLE search) const noexcept { FindClose(search); }
};
using Search = std::unique_ptr<void, EndSearch>;

void Require(BOOL done, const std::wstring& path) {
    if (!done) {
        throw std::filesystem::filesystem_error(
            "cannot empty the reports folder", path,
            std::error_code(static_cast<int>(GetLastError()), std::system_category()));
    }
}

void DeleteTree(const std::wstring& path, DWORD attributes);

void DeleteContents(const std::wstring& folder) {
    WIN32_FIND_DATAW entry;
    const HANDLE handle = FindFirstFileW((folder + L"\\*").c_str(), &entry);
    Require(handle != INVALID_HANDLE_VALUE, folder);
    const Search search(handle);
    do {
        const std::wstring name = entry.cFileName;
        if (name != L"." && name != L"..") {
            DeleteTree(folder + L"\\" + name, entry.dwFileAttributes);
        }
    } while (FindNextFileW(handle, &entry));
    Require(GetLastError() == ERROR_NO_MORE_FILES, folder);
}

/// Of a link the link goes, not what it leads to. (The standard library's `remove_all` is not used: some of them end
/// the process when memory runs out in the middle of it.)
void DeleteTree(const std::wstring& path, DWORD attributes) {
    if (!(attributes & FILE_ATTRIBUTE_DIRECTORY)) {
        return Require(DeleteFileW(path.c_str()), path);
    }
    if (!(attributes & FILE_ATTRIBUTE_REPARSE_POINT)) {
        DeleteContents(path);
    }
    Require(RemoveDirectoryW(path.c_str()), path);
}

} // namespace

void PrepareReportsFolder(const std::string& narrowFolder, bool isFirst) {
    const std::wstring folder = Text::ToWide(narrowFolder);
    const DWORD attributes = GetFileAttributesW(folder.c_str());
    const bool exists = attributes != INVALID_FILE_ATTRIBUTES;
    if (exists && isFirst) {
        DeleteTree(folder, attributes);
    }
    if (!exists || isFirst) {
        std::filesystem::create_directory(folder);
    }
}
