#pragma once

#include "report/core/CouplingLog.h"

namespace kinora::report {

/// A quantity of a joint, over the rows of the log; NaN where the host has no value.
struct StateSeries {
    /// Name of the joint.
    std::string group;
    std::string name;
    std::string unit;
    Column values;
};

/// The host's own states, brought onto the rows of a coupling log.
struct HostStates {
    /// Times with every bit, one per row of the log; absent when not every row has its state.
    std::optional<Column> times;
    /// Those that have a value at all.
    std::vector<StateSeries> series;
    /// Steps that the table lacks, and energy books that do not close.
    std::vector<Notice> notices;
};

/// Reads the table of the joints that `kinora-run` writes. Its rows and the log's are matched in order by their times,
/// which the log has with six digits only. Columns of the bodies, which the log has too, are left out. An empty cell is
/// no value.
/// @throws scenario::InputError  the file is no such table
HostStates ParseHostStates(const std::string& text, const std::string& fileName, const CouplingLog& log);

} // namespace kinora::report
