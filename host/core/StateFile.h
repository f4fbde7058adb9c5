#pragma once

#include "host/core/RunFiles.h"
#include "host/core/RunIdentity.h"
#include "host/core/RunRecords.h"

namespace kinora::host {

/// What a resumed run starts from.
struct SavedState {
    /// The last finished step; -1 before the first one.
    int step = -1;
    /// At that step; empty before the first one.
    MechanismRecord mechanism;
    /// What the run was made of.
    RunIdentity identity;
    /// Of its files, after that step.
    FileSizes sizes;
};

/// Replaces the state file; numbers keep every bit.
/// @throws RunError  it cannot be written
void WriteState(const std::filesystem::path& file, const scenario::Scenario& scenario, const SavedState& state);

/// @throws InputError  there is no such file, it is damaged, or it belongs to a scenario with other joints,
///                     springs or bushings, or with another step
SavedState ReadState(const std::filesystem::path& file, const scenario::Scenario& scenario);

/// True for the state of a run that has not finished a step: of its project nothing would be missed. False for a file
/// that is missing or cannot be read.
bool IsBeforeFirstStep(const std::filesystem::path& file);

} // namespace kinora::host
