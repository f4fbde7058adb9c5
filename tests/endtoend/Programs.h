#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace endtoend {

/// How a program ended, and everything that it wrote to its output and error streams.
struct Outcome {
    int exitCode = -1;
    std::string output;
};

/// A folder of this test run that is deleted with everything in it at the end.
class ScratchFolder {
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    std::filesystem::path operator/(const std::string& name) const { return m_path / name; }
    const std::filesystem::path& Path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

/// Runs a program to its end. Its arguments are UTF-8.
Outcome RunProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments);
/// One of the programs that lie beside the test program, by its name without the system's ending.
std::filesystem::path ProgramBeside(const std::string& name);
/// RunProgram for kinora-run.
Outcome RunHost(const std::vector<std::string>& arguments);

/// The examples' folder.
std::filesystem::path Examples();

/// A whole file, byte for byte; fails the test when it cannot be read.
std::string Content(const std::filesystem::path& file);

/// A text file's lines, without their ends.
std::vector<std::string> Lines(const std::string& text);

/// One column of a comma-separated file by its header; fails the test when there is none.
std::vector<double> Column(const std::filesystem::path& file, const std::string& header);

/// Expects numbers beside as many others.
/// @param tolerance  allowed deviation as a share of the largest expected one
void ExpectNear(const std::vector<double>& actual, const std::vector<double>& expected, double tolerance);

} // namespace endtoend
