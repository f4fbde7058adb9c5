#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <new>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace {

thread_local DWORD lastError = ERROR_SUCCESS;

struct File {
    int descriptor;
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

/// A path as the system takes it; empty for one that is too long, which no file has. No function of the platform
/// throws, so nothing is allocated.
class NativePath {
public:
    NativePath(LPCWSTR path) { // NOLINT(*-member-init): only what is written is read
        if (WideCharToMultiByte(CP_UTF8, 0, path, -1, m_text, sizeof(m_text), nullptr, nullptr) == 0) {
            m_text[0] = '\0';
        }
    }
    operator const char*() const { return m_text; }

private:
    char m_text[PATH_MAX];
};

/// Writes a name with its closing zero.
/// @return its length; when it has no room, what it needs
DWORD Give(const char* text, LPWSTR name, DWORD capacity) {
    const int needed = MultiByteToWideChar(CP_UTF8, 0, text, -1, nullptr, 0);
    if (static_cast<DWORD>(needed) > capacity) {
        SetError(ENAMETOOLONG);
        return static_cast<DWORD>(needed);
    }
    MultiByteToWideChar(CP_UTF8, 0, text, -1, name, needed);
    return static_cast<DWORD>(needed - 1);
}

bool IsLink(const char* path) {
    struct stat entry = {};
    return lstat(path, &entry) == 0 && S_ISLNK(entry.st_mode);
}

/// Opens a file for appending, and makes it when it is not there; the last error tells which.
int OpenOrMake(const char* path) {
    constexpr int how = O_WRONLY | O_APPEND | O_CLOEXEC;
    for (;;) {
        const int made = open(path, how | O_CREAT | O_EXCL, 0666);
        if (made >= 0 || errno != EEXIST) {
            lastError = ERROR_SUCCESS;
            return made;
        }
        const int found = open(path, how);
        // It may have gone between the two.
        if (found >= 0 || errno != ENOENT || IsLink(path)) {
            lastError = ERROR_ALREADY_EXISTS;
            return found;
        }
    }
}

/// @return negative, and errno, for failure
int Open(const char* path, DWORD access, DWORD disposition) {
    if (access == FILE_APPEND_DATA && disposition == OPEN_ALWAYS) {
        return OpenOrMake(path);
    }
    if (access == 0 && disposition == OPEN_EXISTING) {
        return open(path, O_PATH | O_CLOEXEC);
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
DWORD AttributesOf(const char* path) {
    struct stat entry = {};
    return Succeeded(lstat(path, &entry)) ? AttributesOf(entry) : INVALID_FILE_ATTRIBUTES;
}

} // namespace

DWORD GetLastError() {
    return lastError;
}

void SetLastError(DWORD error) {
    lastError = error;
}

HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD, SECURITY_ATTRIBUTES*, DWORD disposition, DWORD, HANDLE) {
    const int descriptor = Open(NativePath(path), access, disposition);
    if (!Succeeded(descriptor)) {
        return INVALID_HANDLE_VALUE;
    }
    const DWORD whetherItWasThere = GetLastError();
    auto* const file = new (std::nothrow) File{descriptor};
    if (!file) {
        close(descriptor);
        SetError(ENOMEM);
        return INVALID_HANDLE_VALUE;
    }
    SetLastError(whetherItWasThere);
    return file;
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
    return AttributesOf(NativePath(path));
}

BOOL SetFileAttributesW(LPCWSTR path, DWORD attributes) {
    const NativePath native(path);
    struct stat entry = {};
    if (!Succeeded(stat(native, &entry))) {
        return FALSE;
    }
    constexpr mode_t writable = S_IWUSR;
    const bool isReadOnly = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    return Succeeded(chmod(native, isReadOnly ? entry.st_mode & ~writable : entry.st_mode | writable));
}

BOOL DeleteFileW(LPCWSTR path) {
    const NativePath native(path);
    const DWORD attributes = AttributesOf(native);
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY)) {
        SetError(EPERM);
        return FALSE;
    }
    return Succeeded(unlink(native));
}

BOOL CreateDirectoryW(LPCWSTR path, SECURITY_ATTRIBUTES*) {
    return Succeeded(mkdir(NativePath(path), 0777));
}

BOOL RemoveDirectoryW(LPCWSTR path) {
    return Succeeded(rmdir(NativePath(path)));
}

HANDLE FindFirstFileW(LPCWSTR pattern, WIN32_FIND_DATAW* entry) {
    const std::wstring_view whole(pattern);
    const std::size_t folderLength = whole.rfind(L'/') + 1;
    wchar_t folder[PATH_MAX] = L".";
    if (whole.substr(folderLength) != L"*" || folderLength >= PATH_MAX) {
        SetError(EINVAL);
        return INVALID_HANDLE_VALUE;
    }
    whole.copy(folder, folderLength);
    DIR* const search = opendir(NativePath(folder));
    if (!search) {
        SetError(errno);
        return INVALID_HANDLE_VALUE;
    }
    // Every folder has an entry: the one for itself.
    (void)FindNextFileW(search, entry);
    return search;
}

BOOL FindNextFileW(HANDLE search, WIN32_FIND_DATAW* entry) {
    auto* const stream = static_cast<DIR*>(search);
    errno = 0;
    const dirent* const next = readdir(stream);
    if (!next) {
        SetError(errno == 0 ? ENODATA : errno);
        return FALSE;
    }
    struct stat status = {};
    // One that is gone already is given all the same: who deletes it finds out.
    entry->dwFileAttributes = fstatat(dirfd(stream), next->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0
                                  ? AttributesOf(status)
                                  : FILE_ATTRIBUTE_NORMAL;
    Give(next->d_name, entry->cFileName, sizeof(entry->cFileName) / sizeof(WCHAR));
    return TRUE;
}

BOOL FindClose(HANDLE search) {
    return Succeeded(closedir(static_cast<DIR*>(search)));
}

DWORD GetFullPathNameW(LPCWSTR path, DWORD capacity, LPWSTR name, LPWSTR*) {
    try {
        const std::filesystem::path full = std::filesystem::absolute(NativePath(path).operator const char*());
        return Give(full.lexically_normal().c_str(), name, capacity);
    } catch (const std::filesystem::filesystem_error& error) {
        SetError(error.code().value());
    } catch (const std::bad_alloc&) {
        SetError(ENOMEM);
    }
    return 0;
}

DWORD GetFinalPathNameByHandleW(HANDLE file, LPWSTR name, DWORD capacity, DWORD) {
    char link[32];
    std::snprintf(link, sizeof(link), "/proc/self/fd/%d", static_cast<File*>(file)->descriptor);
    char path[PATH_MAX] = {};
    return Succeeded(static_cast<int>(readlink(link, path, sizeof(path) - 1))) ? Give(path, name, capacity) : 0;
}
