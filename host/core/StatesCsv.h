#pragma once

#include "host/core/RunRecords.h"

#include <fstream>
#include <functional>
#include <optional>
#include <string>

namespace kinora::host {

/// A quantity of the states: "name.Quantity [unit]", and its value at a step; nothing where it means nothing.
struct StateColumn {
    std::string head;
    std::function<std::optional<double>(const StepRecord&)> value;
};

/// The head line's cells: "Step", "Time [s]", and "name.Quantity [unit]" for each quantity.
std::vector<std::string> StateHeads(const scenario::Scenario& scenario);

/// The host's own states, one line per step: places of the bodies and loads on them; places, speeds, forces and
/// energies of the joints; forces and energies of springs and bushings. Comma-separated with a header that names
/// quantity and unit; numbers keep every bit.
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
    std::vector<StateColumn> m_columns;
};

} // namespace kinora::host
