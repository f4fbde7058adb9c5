#pragma once

#include "report/core/Orientation.h"

#include <optional>
#include <string>
#include <vector>

namespace kinora::report {

/// What the user asked for. Texts are UTF-8; empty ones were not given.
struct CommandLine {
    std::string logFile;
    std::string scenarioFile;
    std::string statesFile;
    std::string pageFile;
    std::string templateFile;
    std::optional<Orientation> orientation;
    /// Not empty when help was asked for: print it and end.
    std::string helpText;
};

/// @param words  the arguments without the program's name
/// @throws scenario::InputError  they cannot be understood
CommandLine ReadCommandLine(std::vector<std::string> words);

} // namespace kinora::report
