#pragma once

#include "fmu/core/Packing.h"
#include "fmu/packer/Xml.h"
#include "scenario/Scenario.h"

#include <filesystem>
#include <string>
#include <vector>

namespace kinora::fmu {

/// What an FMU is to be.
struct PackageSettings {
    Fmi version = Fmi::Two;
    Ports ports = Ports::Joints;
    Axes axes = Axes::Global;
    bool bringsSimulator = false;
    std::string modelIdentifier;
    /// Proposed to the importing tool.
    double stepSeconds = 0.0;
    /// The FMU's binary, for Windows, for Linux, or for both: shared libraries as this project builds them.
    std::vector<std::filesystem::path> binaries;
    std::string generator;
};

/// What was packed.
struct PackageContent {
    /// The archive.
    std::string bytes;
    /// Names of everything in it.
    std::vector<std::string> names;
    std::size_t variables = 0;
};

/// A name for an FMU made of a text: a letter or underscore, then letters, digits and underscores.
std::string IdentifierOf(const std::string& text);

/// Packs an FMU. Equal inputs give equal bytes.
/// @param scenarioFile  what the scenario was read from
/// @throws scenario::InputError  a file cannot be read, or a binary is none; there is nothing to connect
/// @throws scenario::RunError    the archive cannot be made
PackageContent Pack(const scenario::Scenario& scenario, const std::filesystem::path& scenarioFile,
                    const PackageSettings& settings);

} // namespace kinora::fmu
