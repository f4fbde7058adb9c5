#include "host/app/ProjectCommands.h"

#include "host/project/NewProject.h"
#include "host/project/SuggestedScenario.h"
#include "scenario/Text.h"

#include <fmt/format.h>

namespace kinora::host {
namespace {

void Warn(const std::filesystem::path& geometry, const std::vector<SurveyedObject>& objects) {
    for (const std::string& warning : GeometryWarnings(geometry, objects)) {
        PrintError("warning: " + warning + "\n");
    }
}

} // namespace

void MakeProject(const CommandLine& arguments) {
    const std::filesystem::path folder = scenario::PathFromUtf8(arguments.newFolder);
    const std::filesystem::path geometry = scenario::PathFromUtf8(arguments.scenarioFile);
    std::vector<ProjectFile> files;
    if (geometry.empty()) {
        files = ProjectFromTemplate(arguments.templateName);
    } else {
        const std::vector<SurveyedObject> objects = SurveyGeometry(geometry);
        Warn(geometry, objects);
        files = ProjectAround(geometry, objects, folder);
    }
    WriteProject(folder, files);
    std::string text = "Written:\n";
    for (const ProjectFile& file : files) {
        text += fmt::format("  {}\n", scenario::Utf8FromPath(folder / scenario::PathFromUtf8(file.name)));
    }
    Print(text + "\n" + AdviceToRun(folder / scenario::PathFromUtf8(files.back().name)));
}

void PrintSuggestion(const CommandLine& arguments) {
    const std::filesystem::path geometry = scenario::PathFromUtf8(arguments.scenarioFile);
    const std::vector<SurveyedObject> objects = SurveyGeometry(geometry);
    Warn(geometry, objects);
    Print(SuggestedScenario(geometry, objects));
}

} // namespace kinora::host
