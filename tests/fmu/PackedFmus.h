#pragma once

#include "tests/endtoend/Programs.h"
#include "tests/fmu/Importer.h"

#include <string>
#include <vector>

namespace importer {

/// An FMU of a scenario, packed by kinora-fmu when it is first asked for. It stays to the end.
/// @param words  further arguments of kinora-fmu
const Fmu& Packed(const std::filesystem::path& scenario, int version,
                  const std::vector<std::string>& words = {"--simulator"});

/// The folder of this test program's run, where FMUs are unpacked.
const endtoend::ScratchFolder& Workshop();

/// Two cubes of which one moves and turns about a tilted axis, for the host and for FMUs.
struct TiltedScenario {
    std::filesystem::path file;
    /// The moving body's origin and orientation, w x y z.
    static std::vector<double> Position(double time);
    static std::vector<double> Orientation(double time);
    /// Of the joint: way of its point, and turn.
    static std::vector<double> Displacement(double time);
    static std::vector<double> Turn(double time);
};
const TiltedScenario& Tilted();

} // namespace importer
