#pragma once

#include <filesystem>
#include <string>

namespace kinora::host {

/// A file of a project.
struct ProjectFile {
    std::string name;
    std::string content;
    bool isProgram = false;
};

/// What runs the scenario.json of its own folder on Windows: run.cmd, for a double click too. It takes kinora-run where
/// it is now and otherwise from the PATH, hands its arguments over, and keeps its window open to the next key unless
/// the first of them is --no-pause.
/// @param program  kinora-run's own file
/// @param options  for kinora-run, before the arguments; may be empty
ProjectFile RunCmd(const std::filesystem::path& program, const std::string& options);

/// The same elsewhere: run.sh, which pauses never.
ProjectFile RunSh(const std::filesystem::path& program, const std::string& options);

/// One command that starts such a script, for people to copy.
std::string AdviceToRun(const std::filesystem::path& script);

} // namespace kinora::host
