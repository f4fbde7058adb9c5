#pragma once

#include "report/core/CouplingLog.h"

namespace kinora::report {

/// Where a column's values go.
struct ColumnTarget {
    enum class Kind { Step, Time, Body, Unknown };
    Kind kind = Kind::Unknown;
    /// Index into LogHeader::bodies; with `column` for the kind Body only.
    std::size_t body = 0;
    BodyColumn column = X;
};

/// What the columns of a log are.
struct LogHeader {
    /// One per column.
    std::vector<ColumnTarget> targets;
    std::vector<std::string> bodies;
    std::vector<std::string> unknown;
};

/// Takes a header line apart. Bodies are known by their twelve labels in a row, whatever their names contain, commas
/// included; a label that stands elsewhere is taken for what it looks like.
LogHeader ParseLogHeader(std::string_view line);

/// The label of a body's column in the log.
std::string ColumnLabel(std::string_view body, BodyColumn column);

} // namespace kinora::report
