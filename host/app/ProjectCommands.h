#pragma once

#include "host/app/CommandLine.h"

namespace kinora::host {

/// Makes the project of --new, and says what was written and how to run it.
/// @throws InputError  what is asked for is wrong, or there already
/// @throws RunError    it cannot be written; nothing of it is left
void MakeProject(const CommandLine& arguments);

/// Prints a scenario to start from for the geometry that stands in the place of a scenario, with what the geometry
/// holds.
/// @throws InputError  the geometry cannot be used
void PrintSuggestion(const CommandLine& arguments);

} // namespace kinora::host
