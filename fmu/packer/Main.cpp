#include "programs/Main.h"

#include "fmu/packer/CommandLine.h"
#include "programs/Print.h"
#include "programs/ProgramFile.h"
#include "scenario/Errors.h"
#include "scenario/ScenarioReader.h"
#include "scenario/Text.h"

#include <fmt/format.h>

namespace {

using namespace kinora;
using namespace kinora::fmu;

/// Those that lie beside the program, and those that were named.
std::vector<std::filesystem::path> Binaries(const CommandLine& arguments) {
    std::vector<std::filesystem::path> files;
    const std::filesystem::path folder = programs::ProgramFile().parent_path();
    for (const char* name : {"kinora_fmu.dll", "libkinora_fmu.so"}) {
        std::error_code ignored;
        if (std::filesystem::exists(folder / name, ignored)) {
            files.push_back(folder / name);
        }
    }
    for (const std::string& file : arguments.binaries) {
        files.push_back(scenario::PathFromUtf8(file));
    }
    return files;
}

PackageSettings SettingsOf(const CommandLine& arguments, const scenario::Scenario& scenario) {
    PackageSettings settings;
    settings.version = arguments.version == 3 ? Fmi::Three : Fmi::Two;
    const bool arePoses = arguments.ports.empty() ? scenario.joints.empty() : arguments.ports == "poses";
    settings.ports = arePoses ? Ports::Poses : Ports::Joints;
    settings.axes = arguments.axes == "body" ? Axes::Body : Axes::Global;
    settings.bringsSimulator = arguments.bringsSimulator;
    const std::string name = scenario::Utf8FromPath(scenario::PathFromUtf8(arguments.outputFile).stem());
    settings.modelIdentifier = IdentifierOf(arguments.name.empty() ? name : arguments.name);
    settings.stepSeconds = arguments.stepSeconds > 0.0 ? arguments.stepSeconds : scenario.stepping.stepSeconds;
    settings.binaries = Binaries(arguments);
    settings.generator = "kinora-fmu " KINORA_VERSION;
    return settings;
}

/// What of a scenario the importing tool has to bring itself.
std::string LeftOut(const scenario::Scenario& scenario) {
    std::string left;
    const auto add = [&](bool isThere, const char* what) {
        left += !isThere ? "" : (left.empty() ? "" : ", ") + std::string(what);
    };
    add(!scenario.springs.empty(), "springs");
    add(!scenario.bushings.empty(), "bushings");
    add(!scenario.loads.empty(), "loads");
    add(scenario.gravity_W != scenario::Vector::Zero(), "gravity");
    return left;
}

programs::ExitStatus Execute(std::vector<std::string> words) {
    const CommandLine arguments = ReadCommandLine(std::move(words));
    if (!arguments.helpText.empty()) {
        programs::Print(stdout, arguments.helpText);
        return programs::ExitStatus::Done;
    }
    const std::filesystem::path file = scenario::PathFromUtf8(arguments.scenarioFile);
    const scenario::Scenario scenario =
        scenario::ReadScenario(file, arguments.bringsSimulator ? "Simulator" : std::string());
    for (const std::string& warning : scenario.warnings) {
        programs::Print(stderr, "warning: " + warning + "\n");
    }
    const PackageSettings settings = SettingsOf(arguments, scenario);
    const PackageContent content = Pack(scenario, file, settings);
    scenario::WriteWholeFile(scenario::PathFromUtf8(arguments.outputFile), content.bytes);
    std::string report = fmt::format("{}: FMI {}.0, {} variables, {:.1f} MB\n", arguments.outputFile, arguments.version,
                                     content.variables, 1e-6 * static_cast<double>(content.bytes.size()));
    for (const std::string& name : content.names) {
        report += "  " + name + "\n";
    }
    if (const std::string left = LeftOut(scenario); !left.empty()) {
        report += fmt::format(
            "The importing tool brings masses, and what else acts: {} of the scenario are left out.\n", left);
    }
    programs::Print(stdout, report);
    return programs::ExitStatus::Done;
}

} // namespace

#ifdef _WIN32
int wmain(int count, wchar_t** values) {
#else
int main(int count, char** values) {
#endif
    return kinora::programs::RunMain(count, values, "packing", Execute);
}
