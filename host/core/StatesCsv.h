#pragma once

#include "host/core/RunRecords.h"

#include <fstream>

namespace kinora::host {

/// The host's own states, one line per step: poses of the bodies; coordinate, speed, forces and energies of the joints.
/// Comma-separated with a header that names quantity and unit; numbers keep every bit.
class StatesCsv {
public:
    /// Starts a file, or goes on with one that has a header already.
    /// @throws RunError  the file cannot be written
    StatesCsv(const std::filesystem::path& file, const scenario::Scenario& scenario, bool goesOn);

    /// @throws RunError  the line cannot be written
    void Append(const StepRecord& record);

private:
    std::filesystem::path m_file;
    std::ofstream m_stream;
    /// In the joints' order.
    std::vector<bool> m_isFree;
};

} // namespace kinora::host
