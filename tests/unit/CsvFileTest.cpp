#include "coupling/CsvFile.h"

#include "tests/support/Texts.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

namespace {

std::string Bytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class CsvFile : public testing::Test {
protected:
    void SetUp() override { std::filesystem::remove(m_path); }
    void TearDown() override { std::filesystem::remove(m_path); }

    const std::string m_name = fake::ToAnsi(L"csv-file-test \u00E9.csv");
    const std::filesystem::path m_path = fake::ToPath(L"csv-file-test \u00E9.csv");
};

} // namespace

TEST_F(CsvFile, AFileThatCannotBeOpenedIsNoError) {
    CCsvFile file("no-such-folder/file.csv");
    file << "text";
    file.EndLine();
    EXPECT_FALSE(file.IsOpen());
    EXPECT_TRUE(file.IsNew());
}

TEST_F(CsvFile, AnEmptyFileIsNotNew) {
    EXPECT_TRUE(CCsvFile(m_name).IsOpen());
    std::ofstream(m_path).close();
    EXPECT_FALSE(CCsvFile(m_name).IsNew());
}

TEST_F(CsvFile, LinesEndAsTextFilesDo) {
    {
        CCsvFile file(m_name);
        const double numbers[3] = {1.0, -0.0, 1e6};
        file << "head" << 0.5 << numbers;
        file.EndLine();
    }
    EXPECT_EQ(Bytes(m_path), "head0.5,1,-0,1e+06\r\n");
}

TEST_F(CsvFile, IsNewOnlyOnce) {
    EXPECT_TRUE(CCsvFile(m_name).IsNew());
    EXPECT_FALSE(CCsvFile(m_name).IsNew());
}

TEST_F(CsvFile, AppendsWhileOthersHaveItOpen) {
    CCsvFile(m_name) << "open line";
    std::ofstream meanwhile(m_path, std::ios::app | std::ios::binary);
    {
        CCsvFile file(m_name);
        file << ",more";
        file.EndLine();
        EXPECT_EQ(Bytes(m_path), "open line");
    }
    EXPECT_EQ(Bytes(m_path), "open line,more\r\n");
}
