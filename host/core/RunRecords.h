#pragma once

#include "host/core/Mechanism.h"

#include <vector>

namespace kinora::host {

/// Everything known after a step.
struct StepRecord {
    int step = 0;
    /// Seconds.
    double time = 0.0;
    /// In the bodies' order.
    std::vector<scenario::Pose> poses;
    /// As the desktop gave them, in the bodies' order.
    std::vector<IKinoraVeltrixInterface::Result> results;
    /// In the joints' order.
    std::vector<JointRecord> joints;
};

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
