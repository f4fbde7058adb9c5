#include "tests/support/TestFolder.h"

#include "tests/support/Texts.h"
#include "tests/support/ThisProgram.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

namespace fake {
TestFolder::TestFolder() {
    const std::filesystem::path temporary = std::filesystem::temp_directory_path();
    const std::wstring start = L"kinora-" + std::to_wstring(ThisProcess()) + L"-";
    static unsigned number = 0;
    // A process of the same number that was ended may have left its folders.
    do {
        m_path = OfPath(temporary / ToPath(start + std::to_wstring(++number)));
    } while (FileExists(m_path));
    MakeFolder(m_path);
}

TestFolder::~TestFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(ToPath(m_path), ignored);
}

std::wstring TestFolder::PathWithSeparator() const {
    return OfPath(ToPath(m_path) / "");
}

std::wstring TestFolder::operator/(const std::wstring& name) const {
    return PathWithSeparator() + name;
}

void WriteFileBytes(const std::wstring& file, const std::string& bytes) {
    std::ofstream stream(ToPath(file), std::ios::binary);
    EXPECT_TRUE(stream << bytes << std::flush);
}

std::string ReadFileBytes(const std::wstring& file) {
    std::ifstream stream(ToPath(file), std::ios::binary);
    if (!stream) {
        ADD_FAILURE() << "cannot read " << ToPath(file);
        return {};
    }
    return {std::istreambuf_iterator<char>(stream), {}};
}

bool FileExists(const std::wstring& file) {
    std::error_code ignored;
    return std::filesystem::exists(std::filesystem::symlink_status(ToPath(file), ignored));
}

void MakeFolder(const std::wstring& folder) {
    EXPECT_TRUE(std::filesystem::create_directory(ToPath(folder)));
}

} // namespace fake
