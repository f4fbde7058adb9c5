#include "coupling/ReportsFolder.h"

#include "comutils/Text.h"

#include <windows.h>

#include <filesystem>
#include <memory>
#include <system_error>

namespace {

constexpr wchar_t separator = std::filesystem::path::preferred_separator;

struct EndSearch {
    void operator()(HANDLE search) const noexcept { FindClose(search); }
};
using Search = std::unique_ptr<void, EndSearch>;

[[noreturn]] void Fail(const std::wstring& path, DWORD error) {
    throw std::filesystem::filesystem_error("cannot prepare the reports folder", Text::ToPath(path),
                                            std::error_code(static_cast<int>(error), std::system_category()));
}

/// What the system answers while somebody else has a file open, or has it open although it is deleted.
bool MayPass(DWORD error) {
    return error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED || error == ERROR_DIR_NOT_EMPTY ||
           error == ERROR_DELETE_PENDING;
}

/// Empties and makes one folder, within the time that it may take altogether to wait for others.
class CFolderWork {
public:
    /// Of a link the link goes, not what it leads to. (The standard library's `remove_all` is not used: some of them
    /// end the process when memory runs out in the middle of it.)
    void DeleteTree(const std::wstring& path, DWORD attributes) const {
        if (attributes & FILE_ATTRIBUTE_READONLY) {
            SetFileAttributesW(path.c_str(), attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY));
        }
        if (!(attributes & FILE_ATTRIBUTE_DIRECTORY)) {
            return Repeat(DeleteFileW, path, ERROR_FILE_NOT_FOUND);
        }
        if (!(attributes & FILE_ATTRIBUTE_REPARSE_POINT)) {
            DeleteContents(path);
        }
        Repeat(RemoveDirectoryW, path, ERROR_FILE_NOT_FOUND);
    }

    void Make(const std::wstring& path) const {
        const auto make = [](const wchar_t* folder) { return CreateDirectoryW(folder, nullptr); };
        Repeat(make, path, ERROR_ALREADY_EXISTS);
    }

private:
    void DeleteContents(const std::wstring& folder) const {
        WIN32_FIND_DATAW entry;
        const HANDLE handle = FindFirstFileW((folder + separator + L"*").c_str(), &entry);
        if (handle == INVALID_HANDLE_VALUE) {
            Fail(folder, GetLastError());
        }
        const Search search(handle);
        do {
            const std::wstring name = entry.cFileName;
            if (name != L"." && name != L"..") {
                DeleteTree(folder + separator + name, entry.dwFileAttributes);
            }
        } while (FindNextFileW(handle, &entry));
        if (GetLastError() != ERROR_NO_MORE_FILES) {
            Fail(folder, GetLastError());
        }
    }

    /// @param attempt  answers like a function of the platform: not zero, or zero and an error
    /// @param done     the error that says that nothing is left to do
    template <class Attempt>
    void Repeat(Attempt attempt, const std::wstring& path, DWORD done) const {
        while (!attempt(path.c_str())) {
            const DWORD error = GetLastError();
            if (error == done) {
                return;
            }
            if (!MayPass(error) || GetTickCount64() > m_end) {
                Fail(path, error);
            }
            Sleep(10);
        }
    }

    const ULONGLONG m_end = GetTickCount64() + 1000;
};

} // namespace

void PrepareReportsFolder(const std::string& narrowFolder, bool isFirst) {
    const std::wstring folder = Text::ToWide(narrowFolder);
    if (folder.find(L'\0') != std::wstring::npos) {
        // The system would take what stands before it for the whole, and that is somebody else's.
        Fail(folder, ERROR_INVALID_PARAMETER);
    }
    const DWORD attributes = GetFileAttributesW(folder.c_str());
    const bool exists = attributes != INVALID_FILE_ATTRIBUTES;
    const CFolderWork work;
    if (exists && isFirst) {
        work.DeleteTree(folder, attributes);
    }
    if (!exists || isFirst) {
        work.Make(folder);
    }
}
