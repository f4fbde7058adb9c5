#pragma once

#include "scenario/Scenario.h"

#include <filesystem>
#include <optional>

namespace kinora::host {

/// Where the files of a run are.
struct RunFiles {
    std::filesystem::path project;
    /// Written by the coupling: project name + ".reports" beside the project.
    std::filesystem::path reportsFolder;
    std::filesystem::path couplingLog;
    /// What --resume needs.
    std::filesystem::path state;
    std::optional<std::filesystem::path> csv;
};

RunFiles FilesOf(const scenario::Scenario& scenario);

} // namespace kinora::host
