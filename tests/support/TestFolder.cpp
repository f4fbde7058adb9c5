#include "tests/support/TestFolder.h"

#include <windows.h>

#include <array>
#include <filesystem>
#include <gtest/gtest.h>

namespace fake {
namespace {

HANDLE OpenFileHandle(const std::wstring& path, DWORD access, DWORD disposition) {
    return CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, disposition,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

} // namespace

TestFolder::TestFolder() {
    std::array<wchar_t, MAX_PATH> temporary{};
    GetTempPathW(static_cast<DWORD>(temporary.size()), temporary.data());
    const std::wstring start =
        std::wstring(temporary.data()) + L"kinora-" + std::to_wstring(GetCurrentProcessId()) + L"-";
    static unsigned number = 0;
    // A process of the same number that was ended may have left its folders.
    do {
        m_path = start + std::to_wstring(++number);
    } while (FileExists(m_path));
    MakeFolder(m_path);
}

TestFolder::~TestFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(std::filesystem::path(m_path), ignored);
}

void WriteFileBytes(const std::wstring& path, const std::string& bytes) {
    const HANDLE file = OpenFileHandle(path, GENERIC_WRITE, CREATE_ALWAYS);
    DWORD written = 0;
    EXPECT_TRUE(WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr));
    CloseHandle(file);
}

std::string ReadFileBytes(const std::wstring& path) {
    const HANDLE file = OpenFileHandle(path, GENERIC_READ, OPEN_EXISTING);
    if (file == INVALID_HANDLE_VALUE) {
        ADD_FAILURE() << "cannot read " << std::filesystem::path(path);
        return {};
    }
    std::string bytes(GetFileSize(file, nullptr), '\0');
    DWORD read = 0;
    EXPECT_TRUE(ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr));
    CloseHandle(file);
    return bytes;
}

bool FileExists(const std::wstring& path) {
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

void MakeFolder(const std::wstring& path) {
    EXPECT_TRUE(CreateDirectoryW(path.c_str(), nullptr));
}

} // namespace fake
