#pragma once

#include <filesystem>
#include <memory>

namespace kinora::programs {

/// Keeps a folder for one living process: a file in it that is held open and carries the process id. The system lets go
/// of it when the process ends, however it ends.
class FolderLock {
public:
    /// @param file  the lock file; its folder must exist
    /// @throws InputError  another living process has it (the text has its id), or it cannot be written
    explicit FolderLock(const std::filesystem::path& file);
    /// Removes the file.
    ~FolderLock();
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

private:
    class Held;
    std::unique_ptr<Held> m_held;
};

} // namespace kinora::programs
