#include "tests/endtoend/Programs.h"

#include "programs/ProgramFile.h"
#include "tests/endtoend/Child.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sstream>

namespace endtoend {
namespace {

#ifdef _WIN32
constexpr const char* programSuffix = ".exe";
#else
constexpr const char* programSuffix = "";
#endif

/// Makes a folder that was not there before.
std::filesystem::path NewFolder() {
    for (int count = 1;; ++count) {
        std::filesystem::path folder =
            std::filesystem::temp_directory_path() / ("kinora-endtoend-" + std::to_string(count));
        if (std::filesystem::create_directory(folder)) {
            return folder;
        }
    }
}

} // namespace

ScratchFolder::ScratchFolder() : m_path(NewFolder()) {}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

Outcome RunProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments) {
    const ScratchFolder folder;
    const std::filesystem::path output = folder / "output.txt";
    Outcome outcome;
    outcome.exitCode = RunChild(program, arguments, output);
    outcome.output = Content(output);
    // On Windows the program's text streams end lines that system's way.
    outcome.output.erase(std::remove(outcome.output.begin(), outcome.output.end(), '\r'), outcome.output.end());
    return outcome;
}

std::filesystem::path ProgramBeside(const std::string& name) {
    return kinora::programs::ProgramFile().parent_path() / (name + programSuffix);
}

Outcome RunHost(const std::vector<std::string>& arguments) {
    return RunProgram(ProgramBeside("kinora-run"), arguments);
}

std::filesystem::path Examples() {
    return std::filesystem::u8path(KINORA_SOURCE_DIR) / "examples";
}

std::string Content(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    EXPECT_TRUE(stream.is_open()) << file.u8string();
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::vector<std::string> Lines(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        lines.push_back(line);
    }
    return lines;
}

std::vector<double> Column(const std::filesystem::path& file, const std::string& header) {
    std::vector<double> values;
    std::size_t wanted = std::string::npos;
    for (const std::string& line : Lines(Content(file))) {
        std::istringstream cells(line);
        std::size_t index = 0;
        for (std::string cell; std::getline(cells, cell, ','); ++index) {
            if (wanted == std::string::npos && cell == header) {
                wanted = index;
                break;
            }
            if (index == wanted) {
                values.push_back(std::strtod(cell.c_str(), nullptr));
            }
        }
        if (wanted == std::string::npos) {
            ADD_FAILURE() << file.u8string() << " has no column \"" << header << "\"";
            return values;
        }
    }
    return values;
}

void ExpectNear(const std::vector<double>& actual, const std::vector<double>& expected, double tolerance) {
    ASSERT_EQ(actual.size(), expected.size());
    double largest = 0.0;
    for (const double value : expected) {
        largest = std::fmax(largest, std::fabs(value));
    }
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(actual[i], expected[i], tolerance * largest) << "step " << i;
    }
}

} // namespace endtoend
