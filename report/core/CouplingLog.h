#pragma once

#include "report/core/Notice.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kinora::report {

/// Values of one column, one per row; NaN where the log has no finite number.
using Column = std::vector<double>;

/// The columns of a body, in the log's order.
enum BodyColumn { X, Y, Z, Phi, Theta, Psi, ForceX, ForceY, ForceZ, TorqueX, TorqueY, TorqueZ, bodyColumnCount };

/// A body of the log: metres, radians, newtons, millinewton-metres. A column that the log lacks is absent.
struct LogBody {
    std::string name;
    std::array<std::optional<Column>, bodyColumnCount> columns;
};

/// A coupling log as far as it can be understood.
struct CouplingLog {
    std::size_t rows = 0;
    /// Absent when the log has no such column.
    std::optional<Column> steps;
    std::optional<Column> times;
    std::vector<LogBody> bodies;
    /// What was left out or looks wrong.
    std::vector<Notice> notices;
};

/// Reads a coupling log. Incomplete lines, values that are not numbers, unknown and missing columns are left out and
/// told in the notices. A step that failed leaves a line without its end, which the next step's line continues: the
/// whole step is taken from such a line.
/// @param text      the file; UTF-8, or else Windows-1252
/// @param fileName  for the messages
/// @throws scenario::InputError  the file is no coupling log
CouplingLog ParseCouplingLog(const std::string& text, const std::string& fileName);

/// A number as C++ streams and the run-time libraries write them; NaN for what is not a finite one.
double ParseNumber(std::string_view text);

} // namespace kinora::report
