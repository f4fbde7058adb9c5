#include "host/core/RunFiles.h"

namespace kinora::host {

RunFiles FilesOf(const scenario::Scenario& scenario) {
    RunFiles files;
    files.project = scenario.outputFolder / scenario.projectFile;
    const std::filesystem::path base = files.project.parent_path();
    const auto named = [&](const char* suffix) {
        std::filesystem::path name = files.project.stem();
        name += suffix;
        return name;
    };
    files.reportsFolder = base / named(".reports");
    files.couplingLog = files.reportsFolder / named(".coupling.csv");
    files.state = base / named(".state.json");
    if (scenario.csvFile) {
        files.csv = scenario.outputFolder / *scenario.csvFile;
    }
    return files;
}

} // namespace kinora::host
