#include "programs/FolderLock.h"

#include "programs/Errors.h"

#include <fstream>
#include <iterator>
#include <system_error>

#ifdef _WIN32
#include <windows.h>
#else
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace kinora::programs {
namespace {

[[noreturn]] void FailToWrite(const std::filesystem::path& file, int error) {
    throw InputError(file.u8string() + ": cannot be written (" + std::system_category().message(error) +
                     "); check the folder and your rights in it.");
}

[[noreturn]] void FailAsHeld(const std::filesystem::path& file, const std::string& process) {
    throw InputError(file.parent_path().u8string() + ": another run works in this folder" +
                     (process.empty() ? std::string() : " (process " + process + ")") +
                     "; wait for its end, or write elsewhere with --out.");
}

} // namespace

#ifdef _WIN32

/// The open file. The system deletes it with the last handle.
class FolderLock::Held {
public:
    explicit Held(const std::filesystem::path& file)
        : m_handle(CreateFileW(file.c_str(), GENERIC_WRITE | DELETE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                               FILE_ATTRIBUTE_NORMAL | FILE_FLAG_DELETE_ON_CLOSE, nullptr)) {
        if (m_handle == INVALID_HANDLE_VALUE) {
            const DWORD error = GetLastError();
            if (error == ERROR_SHARING_VIOLATION) {
                FailAsHeld(file, Holder(file));
            }
            FailToWrite(file, static_cast<int>(error));
        }
        const std::string process = std::to_string(GetCurrentProcessId());
        DWORD written = 0;
        WriteFile(m_handle, process.data(), static_cast<DWORD>(process.size()), &written, nullptr);
    }
    ~Held() { CloseHandle(m_handle); }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;

private:
    /// Empty when the file cannot be read: its holder may just be gone.
    static std::string Holder(const std::filesystem::path& file) {
        const HANDLE handle =
            CreateFileW(file.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (handle == INVALID_HANDLE_VALUE) {
            return {};
        }
        char text[16] = {};
        DWORD size = 0;
        ReadFile(handle, text, sizeof(text), &size, nullptr);
        CloseHandle(handle);
        return {text, size};
    }

    HANDLE m_handle;
};

#else

/// The open file with an advisory lock on it.
class FolderLock::Held {
public:
    explicit Held(const std::filesystem::path& file) : m_file(file) {
        do {
            Open();
            // The holder before may have removed the very file that has just been locked.
        } while (!IsInPlace());
        const std::string process = std::to_string(getpid());
        if (ftruncate(m_handle, 0) != 0 || write(m_handle, process.data(), process.size()) < 0) {
            const int error = errno;
            close(m_handle);
            FailToWrite(m_file, error);
        }
    }
    ~Held() {
        unlink(m_file.c_str());
        close(m_handle);
    }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;

private:
    void Open() {
        m_handle = open(m_file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
        if (m_handle < 0) {
            FailToWrite(m_file, errno);
        }
        if (flock(m_handle, LOCK_EX | LOCK_NB) != 0) {
            close(m_handle);
            std::ifstream stream(m_file);
            FailAsHeld(m_file, {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()});
        }
    }

    bool IsInPlace() {
        struct stat here = {};
        struct stat there = {};
        if (fstat(m_handle, &here) == 0 && stat(m_file.c_str(), &there) == 0 && here.st_ino == there.st_ino) {
            return true;
        }
        close(m_handle);
        return false;
    }

    std::filesystem::path m_file;
    int m_handle = -1;
};

#endif

FolderLock::FolderLock(const std::filesystem::path& file) : m_held(std::make_unique<Held>(file)) {}

FolderLock::~FolderLock() = default;

} // namespace kinora::programs
