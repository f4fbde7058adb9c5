#pragma once

#include "scenario/Scenario.h"

namespace kinora::scenario {

/// Reads and checks a scenario file (JSON, comments allowed; host/scenario.schema.json describes it).
///
/// Relative input files are taken from the scenario's folder. Output files are taken from the output folder, which is
/// relative to the scenario's folder.
/// @throws InputError  with file, line and JSON pointer of everything that is wrong
Scenario ReadScenario(const std::filesystem::path& file);

/// As above, from a text.
/// @param file  where the text is from: named in errors, and its folder is where relative files are taken from
Scenario ParseScenario(const std::string& text, const std::filesystem::path& file);

} // namespace kinora::scenario
