#pragma once

#include <string>
#include <utility>

namespace fake {

/// A folder of its own for one test, removed with everything in it at the end. Paths are wide, with the system's own
/// separators.
class TestFolder {
public:
    TestFolder();
    ~TestFolder();
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    /// Without a separator at its end.
    const std::wstring& Path() const { return m_path; }
    /// As the desktop gives its folders.
    std::wstring PathWithSeparator() const;
    std::wstring operator/(const std::wstring& name) const;

protected:
    /// A folder that is there already; empty for none.
    explicit TestFolder(std::wstring path) : m_path(std::move(path)) {}

private:
    std::wstring m_path;
};

/// @name Files
/// @{
void WriteFileBytes(const std::wstring& path, const std::string& bytes);
/// The file's bytes as they are; a test failure and nothing when it cannot be read.
std::string ReadFileBytes(const std::wstring& path);
bool FileExists(const std::wstring& path);
void MakeFolder(const std::wstring& path);
/// @return false where links to folders cannot be made
bool MakeFolderLink(const std::wstring& link, const std::wstring& target);
/// @}

/// A test's folder that is reached by a network path. Under Wine, where it is one of the prefix's own; elsewhere the
/// path is empty.
class NetworkFolder : public TestFolder {
public:
    NetworkFolder();
};

} // namespace fake
