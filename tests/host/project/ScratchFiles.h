#pragma once

#include "scenario/Text.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace kinora::host {

/// A folder with blanks and umlauts in its name for each test, gone with it.
class ScratchFiles : public testing::Test {
protected:
    void SetUp() override {
        m_folder = std::filesystem::temp_directory_path() /
                   scenario::PathFromUtf8("kinora project t\xC3\xA4st " + std::to_string(std::random_device()()));
        std::filesystem::create_directories(m_folder);
    }
    void TearDown() override { std::filesystem::remove_all(m_folder); }

    std::filesystem::path Write(const std::string& name, const std::string& content) const {
        std::filesystem::path file = m_folder / scenario::PathFromUtf8(name);
        std::ofstream(file, std::ios::binary) << content;
        return file;
    }

    std::filesystem::path m_folder;
};

} // namespace kinora::host
