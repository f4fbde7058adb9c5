#pragma once

#include "host/app/Console.h"

#include <string>
#include <vector>

namespace kinora::host {

/// What the user asked for. Texts are UTF-8.
struct CommandLine {
    /// Or a geometry, to make a scenario for.
    std::string scenarioFile;
    /// Of a project to make.
    std::string newFolder;
    std::string templateName;
    std::string outputFolder;
    std::string desktopVersion;
    std::string csvFile;
    std::string resultFile;
    /// As they stand: PATH=VALUE.
    std::vector<std::string> set;
    std::string parametersFile;
    /// What the states of the run are compared with; empty for nothing.
    std::string expectedFile;
    /// Allowed there, percent of a quantity's largest expected value.
    double tolerancePercent = 0.5;
    bool overwrite = false;
    bool resume = false;
    bool force = false;
    bool dryRun = false;
    bool report = false;
    bool printSchema = false;
    bool printParameters = false;
    int stepLimit = -1;
    Talk talk = Talk::Normal;
    /// Not empty when help or the version was asked for: print it and end.
    std::string helpText;
};

/// @param words  the arguments without the program's name
/// @throws InputError  they cannot be understood
CommandLine ReadCommandLine(std::vector<std::string> words);

} // namespace kinora::host
