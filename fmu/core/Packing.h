#pragma once

#include <filesystem>
#include <string>

namespace kinora::fmu {

/// What an FMU's inputs and outputs are of.
enum class Ports { Joints, Poses };

/// The axes of forces and torques that are vectors.
enum class Axes { Global, Body };

/// What was decided when an FMU was packed, for its binary to go by.
struct Packing {
    Ports ports = Ports::Joints;
    Axes axes = Axes::Global;
    /// The desktop is the simulator that is part of the binary.
    bool bringsSimulator = false;
    /// Name of the FMU, and of its binaries' files.
    std::string modelIdentifier;
    /// Equal in FMUs of equal contents: the importing tool hands it over, to show that description and binary belong
    /// together.
    std::string token;
};

/// An FMU's folder of resources.
constexpr const char* packingFile = "packing.json";
constexpr const char* packedScenarioFile = "scenario.json";

/// Beside a binary for Windows that brings the simulator.
constexpr const char* manifestFile = "simulator.manifest";

/// @return UTF-8
std::string ToJson(const Packing& packing);

/// @throws programs::InputError  the file is not there, or not of this version
Packing ReadPacking(const std::filesystem::path& file);

} // namespace kinora::fmu
