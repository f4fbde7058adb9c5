#pragma once

#include "scenario/Scenario.h"

#include <optional>
#include <string>
#include <vector>

namespace kinora::host {

/// A number that was wanted of a run (Scenario::results).
struct RunResult {
    std::string name;
    /// Nothing where the column has no number.
    std::optional<double> value;
    /// Empty for a plain number.
    std::string unit;
};

/// Sees to it that every result's column will be there. Where one is of the host's states, and the scenario has no file
/// for these, it gets one: "<project>.states.csv" beside the project.
/// @throws InputError  one line for each result whose column a run of the scenario does not have
void PrepareResults(scenario::Scenario& scenario);

/// The results as far as they are known before a run: names and units.
/// @pre  PrepareResults has been called
std::vector<RunResult> ResultsToCome(const scenario::Scenario& scenario);

/// The results of a complete run, from the files that it has written.
/// @pre  PrepareResults has been called
/// @throws RunError    a file is not as the run has written it
/// @throws InputError  a file cannot be read
std::vector<RunResult> TakeResults(const scenario::Scenario& scenario);

} // namespace kinora::host
