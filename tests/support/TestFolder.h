#pragma once

#include <string>

namespace fake {

/// A folder of its own for one test, removed with everything in it at the end. Paths are wide and use back slashes.
class TestFolder {
public:
    TestFolder();
    ~TestFolder();
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    /// Without a separator at its end.
    const std::wstring& Path() const { return m_path; }
    std::wstring operator/(const std::wstring& name) const { return m_path + L"\\" + name; }

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

/// A folder that is reached by a network path; removed with everything in it at the end. Under Wine, where it is one of
/// the prefix's own; elsewhere the path is empty.
class NetworkFolder {
public:
    NetworkFolder();
    ~NetworkFolder();
    NetworkFolder(const NetworkFolder&) = delete;
    NetworkFolder& operator=(const NetworkFolder&) = delete;

    const std::wstring& Path() const { return m_path; }
    std::wstring operator/(const std::wstring& name) const { return m_path + L"\\" + name; }

private:
    std::wstring m_path;
};

} // namespace fake
