#pragma once

#include "scenario/Overrides.h"
#include "scenario/Scenario.h"

namespace kinora::scenario {

/// What a scenario is read for.
enum class Purpose {
    /// A run that is to be done: everything must be right.
    Run,
    /// The report of a run that is over: what the geometry file or the desktop does not know is only warned of.
    Report
};

/// Reads and checks a scenario file (JSON, comments allowed; host/scenario.schema.json describes it).
///
/// Relative input files are taken from the scenario's folder. Output files are taken from the output folder, which is
/// relative to the scenario's folder.
/// @param desktopVersion  wins over the version that the scenario names, unless it is empty
/// @param overrides       put into the scenario before it is checked
/// @throws InputError  everything that is wrong, one line each: file, line, JSON pointer, and what it is. A text that
///                     is no JSON or does not obey the schema is not looked at any further
Scenario ReadScenario(const std::filesystem::path& file, const std::string& desktopVersion = {},
                      Purpose purpose = Purpose::Run, const Overrides& overrides = {});

/// As above, from a text.
/// @param file  where the text is from: named in errors, and its folder is where relative files are taken from
Scenario ParseScenario(const std::string& text, const std::filesystem::path& file,
                       const std::string& desktopVersion = {}, Purpose purpose = Purpose::Run,
                       const Overrides& overrides = {});

} // namespace kinora::scenario
