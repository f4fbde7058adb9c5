#include "fmu/packer/CommandLine.h"

#include "scenario/Errors.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace kinora::fmu {

CommandLine ReadCommandLine(std::vector<std::string> words) {
    CommandLine line;
    CLI::App parser("Packs a scenario as an FMU for co-simulation: motion in, force and torque of the field out.\n"
                    "Exit status: 0 done, 1 the FMU could not be made, 2 bad input.",
                    "kinora-fmu");
    // A path may begin with a slash.
    parser.allow_windows_style_options(false);
    parser.add_option("SCENARIO", line.scenarioFile, "Scenario file (JSON, comments allowed)")->required();
    parser.add_option("-o,--output", line.outputFile, "The FMU to make; one that is there is replaced")->required();
    parser.add_option("--fmi", line.version, "Version of the standard: 2 (2.0, default) or 3 (3.0)")
        ->check(CLI::IsMember({2, 3}));
    parser.add_flag("--simulator", line.bringsSimulator, "The FMU brings the simulator along and needs no desktop");
    parser
        .add_option("--interface", line.ports,
                    "joints: coordinates and speeds of the joints; poses: those of the bodies (default: joints where "
                    "the scenario has some)")
        ->check(CLI::IsMember({"joints", "poses"}));
    parser.add_option("--axes", line.axes, "Axes of forces and torques that are vectors: global (default) or body")
        ->check(CLI::IsMember({"global", "body"}));
    parser.add_option("--step", line.stepSeconds, "Step size that the FMU proposes, seconds (default: the scenario's)")
        ->check(CLI::PositiveNumber);
    parser.add_option("--name", line.name, "Name of the model (default: that of the output file)");
    parser.add_option("--binary", line.binaries,
                      "A further binary to pack, of another system: kinora_fmu.dll or libkinora_fmu.so");
    std::reverse(words.begin(), words.end());
    try {
        parser.parse(words);
    } catch (const CLI::CallForHelp&) {
        line.helpText = parser.help();
    } catch (const CLI::ParseError& error) {
        throw scenario::InputError(std::string(error.what()) + " (--help lists the options)");
    }
    return line;
}

} // namespace kinora::fmu
