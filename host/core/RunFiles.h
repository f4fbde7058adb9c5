#pragma once

#include "scenario/Scenario.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kinora::host {

/// Where the files of a run are.
struct RunFiles {
    std::filesystem::path project;
    /// Written by the coupling: project name + ".reports" beside the project. Emptied when a run begins.
    std::filesystem::path reportsFolder;
    std::filesystem::path couplingLog;
    /// What --resume needs.
    std::filesystem::path state;
    std::optional<std::filesystem::path> csv;
    /// There when, and only when, the run is complete.
    std::optional<std::filesystem::path> result;
    /// Held while a run works in the output folder.
    std::filesystem::path lock;
};

RunFiles FilesOf(const scenario::Scenario& scenario);

/// By what they are, not by how they are spelt. Of files that are still to be made folder and name count, upper and
/// lower case as the same.
bool IsSameFile(const std::filesystem::path& a, const std::filesystem::path& b);

/// A file and what it is to the user ("the geometry").
struct NamedFile {
    std::string what;
    std::filesystem::path file;
};

/// Sees to it that no file of a run is another one, or one that it reads, by what they are and not by how they are
/// spelt, and that nothing lies in the reports folder, which is emptied.
/// @param inputs   what is read
/// @param outputs  what is written besides the files of FilesOf
/// @throws InputError  one line for each pair
void RequireDistinctFiles(const RunFiles& files, const std::vector<NamedFile>& inputs,
                          const std::vector<NamedFile>& outputs);

/// Sees to it that what a run writes besides its project can be written, whether it is there or not.
/// @param outputs  further files
/// @throws InputError  one line for each file that cannot
void RequireWritableFiles(const RunFiles& files, const std::vector<NamedFile>& outputs);

/// Sizes of the files that grow by every step, bytes.
struct FileSizes {
    /// By name, in the reports folder.
    std::map<std::string, std::uintmax_t> reports;
    std::optional<std::uintmax_t> csv;
};

FileSizes SizesOf(const RunFiles& files);

/// Which of the files of an earlier run are missing or shorter than they were, a line for each.
std::vector<std::string> MissingParts(const RunFiles& files, const FileSizes& wanted);

/// Cuts what a killed step has left: every file to the size that it had, and in any case to its last whole line.
/// @throws RunError  a file cannot be cut
void CutFiles(const RunFiles& files, const FileSizes& wanted);

} // namespace kinora::host
