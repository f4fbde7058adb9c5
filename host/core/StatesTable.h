#pragma once

#include "scenario/Scenario.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kinora::host {

/// Times and values of a column, row by row; NaN where a cell has no number.
struct Series {
    std::vector<double> times;
    std::vector<double> values;
};

/// A head of the states, "rotor.Torque_x [mN m]", without its unit, and the unit.
std::pair<std::string, std::string> TakeHeadApart(const std::string& head);

/// Where a column stands among heads of the states, by its head or by its head without the unit.
std::optional<std::size_t> FindState(const std::vector<std::string>& heads, const std::string& column);

/// The cells of a line of a file of states.
std::vector<std::string> StateCells(const std::string& line);

/// A column of a file of states.
/// @throws RunError    the column is not there
/// @throws InputError  the file cannot be read
Series ReadState(const std::filesystem::path& file, const std::string& column);

/// On the straight line between the rows about a time; behind the last row its value.
double ValueAt(const Series& series, double time);

/// Where the scenario has no file for the host's states it gets one: "<project>.states.csv" beside the project.
void RequireStatesFile(scenario::Scenario& scenario);

} // namespace kinora::host
