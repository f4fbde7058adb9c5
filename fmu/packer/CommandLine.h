#pragma once

#include "fmu/packer/Package.h"

#include <string>
#include <vector>

namespace kinora::fmu {

/// What the user asked for. Texts are UTF-8.
struct CommandLine {
    std::string scenarioFile;
    std::string outputFile;
    int version = 2;
    bool bringsSimulator = false;
    /// "joints", "poses", or empty: joints where there are some.
    std::string ports;
    /// "global" or "body".
    std::string axes = "global";
    /// Seconds; 0 for the scenario's.
    double stepSeconds = 0.0;
    /// Empty: after the output file.
    std::string name;
    std::vector<std::string> binaries;
    /// Not empty when help was asked for: print it and end.
    std::string helpText;
};

/// @param words  the arguments without the program's name
/// @throws InputError  they cannot be understood
CommandLine ReadCommandLine(std::vector<std::string> words);

} // namespace kinora::fmu
