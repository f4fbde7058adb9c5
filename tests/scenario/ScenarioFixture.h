#pragma once

#include "scenario/Errors.h"
#include "scenario/ScenarioReader.h"
#include "scenario/Text.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <random>
#include <regex>
#include <string>
#include <vector>

namespace kinora::scenario {

using nlohmann::json;

/// A folder with a geometry file, and the smallest scenario that is right.
class ScenarioFixture : public testing::Test {
protected:
    void SetUp() override {
        m_folder =
            std::filesystem::temp_directory_path() / ("kinora-scenario-" + std::to_string(std::random_device()()));
        std::filesystem::create_directories(m_folder);
        std::ofstream(m_folder / "magnets.obj") << "# geometry\n";
    }

    void TearDown() override { std::filesystem::remove_all(m_folder); }

    void WriteGeometry(const std::vector<std::string>& objects) const {
        std::ofstream stream(m_folder / "magnets.obj");
        for (const std::string& object : objects) {
            stream << "o " << object << "\nf 1 2 3\n";
        }
    }

    static json Smallest() {
        return {{"project", {{"file", "run.vantor"}}},
                {"geometry", {{"file", "magnets.obj"}, {"units", "mm"}}},
                {"bodies", {{{"name", "rotor"}, {"objects", {"magnet"}}, {"mass", 0.1}}}},
                {"solver", {{"step", 0.01}, {"end", 1}}}};
    }

    static json Slider() {
        return {{"name", "slide"},
                {"type", "slider"},
                {"axis", {0, 0, 2}},
                {"bodies", {"rotor"}},
                {"free", json::object()}};
    }

    /// The smallest scenario with a joint.
    static json With(const json& joint) {
        json document = Smallest();
        document["joints"] = json::array({joint});
        return document;
    }

    Scenario Read(const json& document) const { return ReadText(document.dump(1)); }
    Scenario ReadText(const std::string& text) const { return ParseScenario(text, m_folder / "scenario.json"); }

    std::string ErrorOf(const json& document) const { return ErrorOfText(document.dump(1)); }
    std::string ErrorOfText(const std::string& text) const {
        try {
            ReadText(text);
        } catch (const InputError& error) {
            return error.what();
        }
        return "no error";
    }

    /// The findings without the file and line that each begins with: pointer and text.
    std::string FindingsOf(const json& document) const {
        return std::regex_replace(WithoutFile(ErrorOf(document)), std::regex("(^|\\n)[0-9]+: "), "$1");
    }

    /// Findings without the file that each begins with.
    std::string WithoutFile(std::string text) const {
        const std::string start = Utf8FromPath(m_folder / "scenario.json") + ":";
        for (std::size_t at = text.find(start); at != std::string::npos; at = text.find(start)) {
            text.erase(at, start.size());
        }
        return text;
    }

    std::filesystem::path m_folder;
};

} // namespace kinora::scenario
