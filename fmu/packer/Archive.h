#pragma once

#include <string>

namespace kinora::fmu {

/// A ZIP archive in memory. Equal contents give equal bytes, whenever and wherever they are packed.
class Archive {
public:
    Archive();
    ~Archive();
    Archive(const Archive&) = delete;
    Archive& operator=(const Archive&) = delete;

    /// @param name  path within the archive, with forward slashes, UTF-8
    /// @throws programs::RunError  the library refuses it
    void Add(const std::string& name, const std::string& content);

    /// Ends the archive, to which nothing may be added any more.
    /// @throws programs::RunError  the library refuses it
    std::string Bytes();

private:
    std::string m_bytes;
    void* m_zip = nullptr;
};

} // namespace kinora::fmu
