#pragma once

#include "tests/endtoend/Programs.h"

#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace endtoend {

/// The cube magnets with parts of the scenario's text replaced, in a folder of its own.
class CubeMagnets : public testing::Test {
protected:
    void SetUp() override {
        std::filesystem::copy_file(Examples() / "cube-magnets" / "cube-magnets.obj", m_folder / "cube-magnets.obj");
        m_text = Content(Examples() / "cube-magnets" / "scenario.json");
    }

    void Replace(const std::string& old, const std::string& text) {
        const std::size_t at = m_text.find(old);
        ASSERT_NE(at, std::string::npos) << old;
        m_text.replace(at, old.size(), text);
    }

    Outcome Run(std::vector<std::string> arguments = {}) {
        std::ofstream(m_folder / "scenario.json", std::ios::binary) << m_text;
        arguments.insert(arguments.begin(), (m_folder / "scenario.json").u8string());
        return RunHost(arguments);
    }

    ScratchFolder m_folder;
    std::string m_text;
};

} // namespace endtoend
