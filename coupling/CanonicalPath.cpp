#include "coupling/CanonicalPath.h"

#include "comutils/Text.h"

#include <windows.h>

#include <memory>
#include <system_error>

namespace {

/// The system has none longer.
constexpr DWORD longestPath = 32768;

struct CloseFile {
    void operator()(HANDLE file) const noexcept { CloseHandle(file); }
};
using File = std::unique_ptr<void, CloseFile>;

/// Opened for nothing but its name, so that nobody who holds the file is in the way. Folders need the flag.
File Open(const std::filesystem::path& path) {
    const HANDLE file =
        CreateFileW(Text::OfPath(path).c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        const std::error_code code(static_cast<int>(GetLastError()), std::system_category());
        throw std::filesystem::filesystem_error("canonical", path, code);
    }
    return File(file);
}

/// What is left where a file system cannot tell what its files are called, as that of some network and memory drives.
std::filesystem::path FullPath(const std::filesystem::path& path) {
    std::wstring name(longestPath, L'\0');
    name.resize(GetFullPathNameW(Text::OfPath(path).c_str(), longestPath, name.data(), nullptr));
    const std::filesystem::path full = Text::ToPath(name);
    return full.has_filename() ? full : full.parent_path();
}

bool BeginsWith(const std::wstring& text, const std::wstring& start) {
    return text.compare(0, start.size(), start) == 0;
}

} // namespace

std::wstring WithoutPathMark(const std::wstring& path) {
    const std::wstring mark = L"\\\\?\\";
    const std::wstring networkMark = mark + L"UNC\\";
    if (BeginsWith(path, networkMark)) {
        return L"\\\\" + path.substr(networkMark.size());
    }
    const bool hasDrive = BeginsWith(path, mark) && path.compare(mark.size() + 1, 2, L":\\") == 0;
    return hasDrive ? path.substr(mark.size()) : path;
}

std::filesystem::path CanonicalPath(const std::filesystem::path& path) {
    const File file = Open(path);
    std::wstring name(longestPath, L'\0');
    const DWORD length =
        GetFinalPathNameByHandleW(file.get(), name.data(), longestPath, FILE_NAME_NORMALIZED | VOLUME_NAME_DOS);
    if (length == 0) {
        return FullPath(path);
    }
    name.resize(length);
    return Text::ToPath(WithoutPathMark(name));
}
