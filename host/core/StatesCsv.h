#pragma once

#include "host/core/RunRecords.h"

#include <fstream>

namespace kinora::host {

/// The host's own states, one line per step: poses of the bodies; coordinate, speed, forces and energies of the joints.
/// Comma-separated with a header that names quantity and unit; numbers keep every bit.
class StatesCsv {
public:
    /// Starts a file, or goes on with one.
    /// @param lastStep  -1 starts anew; otherwise the lines up to this step are kept and the others dropped
    /// @throws RunError  the file cannot be written
    StatesCsv(const std::filesystem::path& file, const scenario::Scenario& scenario, int lastStep);

    /// @throws RunError  the line cannot be written
    void Append(const StepRecord& record);

private:
    std::filesystem::path m_file;
    std::ofstream m_stream;
};

} // namespace kinora::host
