#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <cwchar>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

thread_local DWORD lastError = ERROR_SUCCESS;

struct File {
    int descriptor;
};

struct Search {
    std::string folder;
    DIR* stream;
};

/// What the system says, in the words of the platform's functions.
void SetError(int error) {
    switch (error) {
    case EPERM:
    case EROFS:
    case EISDIR:
        lastError = ERROR_ACCESS_DENIED;
        return;
    case ENOTDIR:
        lastError = ERROR_PATH_NOT_FOUND;
        return;
    default:
        lastError = static_cast<DWORD>(error);
    }
}

/// @param outcome  what a function of the system answers: negative for failure
BOOL Succeeded(int outcome) {
    if (outcome < 0) {
        SetError(errno);
        return FALSE;
    }
    return TRUE;
}

/// A path as the system takes it.
/// @return empty for what is no text, which no file has as its name
std::string Native(LPCWSTR path) {
    const int size = WideCharToMultiByte(CP_UTF8, 0, path, -1, nullptr, 0, nullptr, nullptr);
    std::string native(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, path, -1, native.data(), size, nullptr, nullptr);
    native.resize(native.size() - 1);
    return native;
}

/// Writes a name with its closing zero.
/// @return its length; when it has no room, what it needs
DWORD Give(const std::string& text, LPWSTR name, DWORD capacity) {
    const int length = static_cast<int>(text.size()) + 1;
    const int needed = MultiByteToWideChar(CP_UTF8, 0, text.c_str(), length, nullptr, 0);
    if (static_cast<DWORD>(needed) > capacity) {
        SetError(ENAMETOOLONG);
        return static_cast<DWORD>(needed);
    }
    MultiByteToWideChar(CP_UTF8, 0, text.c_str(), length, name, needed);
    return static_cast<DWORD>(needed - 1);
}

/// Opens a file for appending, and makes it when it is not there; the last error tells which.
int OpenOrMake(const std::string& path) {
    constexpr int how = O_WRONLY | O_APPEND | O_CLOEXEC;
    for (;;) {
        const int made = open(path.c_str(), how | O_CREAT | O_EXCL, 0666);
        if (made >= 0 || errno != EEXIST) {
            lastError = ERROR_SUCCESS;
            return made;
        }
        const int found = open(path.c_str(), how);
        // It may have gone between the two.
        if (found >= 0 || errno != ENOENT || std::filesystem::is_symlink(path)) {
            lastError = ERROR_ALREADY_EXISTS;
            return found;
        }
    }
}

/// @return negative, and errno, for failure
int Open(const std::string& path, DWORD access, DWORD disposition) {
    if (access == FILE_APPEND_DATA && disposition == OPEN_ALWAYS) {
        return OpenOrMake(path);
    }
    if (access == 0 && disposition == OPEN_EXISTING) {
        return open(path.c_str(), O_PATH | O_CLOEXEC);
    }
    errno = EINVAL;
    return -1;
}

DWORD AttributesOf(const struct stat& entry) {
    if (S_ISLNK(entry.st_mode)) {
        return FILE_ATTRIBUTE_REPARSE_POINT;
    }
    DWORD attributes = S_ISDIR(entry.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : 0;
    if ((entry.st_mode & S_IWUSR) == 0) {
        attributes |= FILE_ATTRIBUTE_READONLY;
    }
    return attributes == 0 ? FILE_ATTRIBUTE_NORMAL : attributes;
}

/// @return INVALID_FILE_ATTRIBUTES, and the last error, for failure
DWORD AttributesOf(const std::string& path) {
    struct stat entry = {};
    return Succeeded(lstat(path.c_str(), &entry)) ? AttributesOf(entry) : INVALID_FILE_ATTRIBUTES;
}

} // namespace

DWORD GetLastError() {
    return lastError;
}

void SetLastError(DWORD error) {
    lastError = error;
}

HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD, SECURITY_ATTRIBUTES*, DWORD disposition, DWORD, HANDLE) {
    const int descriptor = Open(Native(path), access, disposition);
    return Succeeded(descriptor) ? new File{descriptor} : INVALID_HANDLE_VALUE;
}

BOOL WriteFile(HANDLE file, const void* data, DWORD size, DWORD* written, OVERLAPPED*) {
    const char* next = static_cast<const char*>(data);
    const char* const end = next + size;
    *written = 0;
    while (next != end) {
        const ssize_t count = write(static_cast<File*>(file)->descriptor, next, static_cast<std::size_t>(end - next));
        if (count < 0 && errno != EINTR) {
            return Succeeded(-1);
        }
        next += std::max<ssize_t>(count, 0);
        *written = static_cast<DWORD>(next - static_cast<const char*>(data));
    }
    return TRUE;
}

BOOL CloseHandle(HANDLE file) {
    const std::unique_ptr<File> closing(static_cast<File*>(file));
    return Succeeded(close(closing->descriptor));
}

DWORD GetFileAttributesW(LPCWSTR path) {
    return AttributesOf(Native(path));
}

BOOL SetFileAttributesW(LPCWSTR path, DWORD attributes) {
    const std::string native = Native(path);
    struct stat entry = {};
    if (!Succeeded(stat(native.c_str(), &entry))) {
        return FALSE;
    }
    constexpr mode_t writable = S_IWUSR;
    const bool isReadOnly = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    return Succeeded(chmod(native.c_str(), isReadOnly ? entry.st_mode & ~writable : entry.st_mode | writable));
}

BOOL DeleteFileW(LPCWSTR path) {
    const std::string native = Native(path);
    const DWORD attributes = AttributesOf(native);
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY)) {
        SetError(EPERM);
        return FALSE;
    }
    return Succeeded(unlink(native.c_str()));
}

BOOL CreateDirectoryW(LPCWSTR path, SECURITY_ATTRIBUTES*) {
    return Succeeded(mkdir(Native(path).c_str(), 0777));
}

BOOL RemoveDirectoryW(LPCWSTR path) {
    return Succeeded(rmdir(Native(path).c_str()));
}

HANDLE FindFirstFileW(LPCWSTR pattern, WIN32_FIND_DATAW* entry) {
    const std::filesystem::path native = Native(pattern);
    if (native.filename() != "*") {
        SetError(EINVAL);
        return INVALID_HANDLE_VALUE;
    }
    auto search = std::make_unique<Search>(Search{native.parent_path().string(), nullptr});
    search->stream = opendir(search->folder.empty() ? "." : search->folder.c_str());
    if (!search->stream) {
        SetError(errno);
        return INVALID_HANDLE_VALUE;
    }
    // Every folder has an entry: the one for itself.
    FindNextFileW(search.get(), entry);
    return search.release();
}

BOOL FindNextFileW(HANDLE handle, WIN32_FIND_DATAW* entry) {
    const auto& search = *static_cast<Search*>(handle);
    errno = 0;
    const dirent* const next = readdir(search.stream);
    if (!next) {
        SetError(errno == 0 ? ENODATA : errno);
        return FALSE;
    }
    struct stat status = {};
    // One that is gone already is given all the same: who deletes it finds out.
    entry->dwFileAttributes = fstatat(dirfd(search.stream), next->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0
                                  ? AttributesOf(status)
                                  : FILE_ATTRIBUTE_NORMAL;
    Give(next->d_name, entry->cFileName, sizeof(entry->cFileName) / sizeof(WCHAR));
    return TRUE;
}

BOOL FindClose(HANDLE handle) {
    const std::unique_ptr<Search> search(static_cast<Search*>(handle));
    return Succeeded(closedir(search->stream));
}

DWORD GetFullPathNameW(LPCWSTR path, DWORD capacity, LPWSTR name, LPWSTR*) {
    std::error_code error;
    const std::filesystem::path full = std::filesystem::absolute(Native(path), error).lexically_normal();
    if (error) {
        SetError(error.value());
        return 0;
    }
    return Give(full.string(), name, capacity);
}

DWORD GetFinalPathNameByHandleW(HANDLE file, LPWSTR name, DWORD capacity, DWORD) {
    std::error_code error;
    const std::string link = "/proc/self/fd/" + std::to_string(static_cast<File*>(file)->descriptor);
    const std::filesystem::path path = std::filesystem::read_symlink(link, error);
    if (error) {
        SetError(error.value());
        return 0;
    }
    return Give(path.string(), name, capacity);
}
