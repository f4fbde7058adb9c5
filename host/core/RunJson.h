#pragma once

#include "host/core/RunResults.h"
#include "scenario/Overrides.h"

#include <filesystem>
#include <map>

namespace kinora::host {

/// What other programs read of a run, as JSON.

/// What the scenario does not say about a complete run.
struct RunFacts {
    std::filesystem::path scenarioFile;
    scenario::Overrides overrides;
    /// Of this time's part of the run.
    double wallSeconds = 0.0;
    /// Of the programs that took part, by their names.
    std::map<std::string, std::string> versions;
    /// None when absent.
    std::optional<std::filesystem::path> reportPage;
};

/// The parameters with their values, and the results that a run will have.
std::string DeclarationsJson(const scenario::Scenario& scenario);

/// What the result file of a complete run holds.
/// @pre  the scenario names the file
std::string ResultJson(const scenario::Scenario& scenario, const RunFacts& facts,
                       const std::vector<RunResult>& results);

/// Writes the result file, whole or not at all.
/// @pre  the scenario names the file
/// @throws RunError  it cannot be written
void WriteResult(const scenario::Scenario& scenario, const RunFacts& facts, const std::vector<RunResult>& results);

} // namespace kinora::host
