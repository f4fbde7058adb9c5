#pragma once

#include "report/core/CouplingLog.h"

namespace kinora::report {

/// What the columns of a log are.
struct LogHeader {
    /// Where a column's values go.
    struct Place {
        enum class Kind { Step, Time, Body, Unknown };
        Kind kind = Kind::Unknown;
        std::size_t body = 0;
        BodyColumn column = X;
    };
    std::vector<Place> places;
    std::vector<std::string> bodies;
    std::vector<std::string> unknown;
};

/// Takes a header line apart. Bodies are known by their twelve labels in a row, whatever their names contain, commas
/// included; a label that stands elsewhere is taken for what it looks like.
LogHeader ParseLogHeader(std::string_view line);

/// The label of a body's column in the log.
std::string ColumnLabel(std::string_view body, BodyColumn column);

} // namespace kinora::report
