#pragma once

#include "host/core/RunRecords.h"

namespace kinora::host {

/// What a resumed run starts from: the last finished step and the joints at it.
struct SavedState {
    int step = 0;
    std::vector<JointRecord> joints;
};

/// Replaces the state file; numbers keep every bit.
/// @throws RunError  it cannot be written
void WriteState(const std::filesystem::path& file, const scenario::Scenario& scenario, const StepRecord& record);

/// @throws InputError  there is no such file, it is damaged, or it belongs to a scenario with other joints or
///                     with another step
SavedState ReadState(const std::filesystem::path& file, const scenario::Scenario& scenario);

} // namespace kinora::host
