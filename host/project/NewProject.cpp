#include "host/project/NewProject.h"

#include "host/project/SuggestedScenario.h"
#include "host/project/Templates.h"
#include "programs/Paths.h"
#include "programs/ProgramFile.h"
#include "report/core/Report.h"
#include "scenario/Errors.h"
#include "scenario/ScenarioSchema.h"
#include "scenario/Text.h"

#include <fmt/format.h>

namespace kinora::host {
namespace {

using scenario::InputError;
using scenario::Utf8FromPath;

constexpr const char* schemaName = "scenario.schema.json";

const ProjectTemplate& TemplateCalled(const std::string& name) {
    std::vector<std::string> names;
    for (const ProjectTemplate& candidate : ProjectTemplates()) {
        if (name.empty() || candidate.name == name) {
            return candidate;
        }
        names.push_back(candidate.name);
    }
    throw InputError(fmt::format("--template: there is no template \"{}\"; choose {}.{}", name,
                                 scenario::Alternatives(names), scenario::Suggestion(name, names)));
}

/// With the report page at the end, where this installation can make it.
ProjectFile RunScript() {
    std::string options;
    try {
        report::FindTemplate();
        options = "--report";
    } catch (const InputError&) {
        options.clear(); // a run without its page is a run
    }
#ifdef _WIN32
    return RunCmd(programs::ProgramFile(), options);
#else
    return RunSh(programs::ProgramFile(), options);
#endif
}

std::vector<ProjectFile> ProjectWith(std::string scenario, const ProjectFile& geometry) {
    return {{"scenario.json", std::move(scenario)},
            {schemaName, std::string(scenario::ScenarioSchema())},
            geometry,
            RunScript()};
}

void RequireRoom(const std::filesystem::path& folder, const std::vector<ProjectFile>& files) {
    for (const ProjectFile& file : files) {
        const std::filesystem::path path = folder / scenario::PathFromUtf8(file.name);
        std::error_code ignored;
        if (std::filesystem::exists(std::filesystem::symlink_status(path, ignored))) {
            throw InputError(
                fmt::format("{}: the file is there already and stays as it is; choose another folder, or move it away.",
                            Utf8FromPath(path)));
        }
    }
}

/// What is made for a project, and removed again unless it is kept.
class Made {
public:
    Made() = default;
    Made(const Made&) = delete;
    Made& operator=(const Made&) = delete;
    ~Made() {
        std::error_code ignored;
        for (auto path = m_paths.rbegin(); path != m_paths.rend(); ++path) {
            std::filesystem::remove(*path, ignored);
        }
    }

    /// With the folders above it.
    void MakeFolder(const std::filesystem::path& folder) {
        std::error_code error;
        if (folder.empty() || std::filesystem::is_directory(folder, error)) {
            return;
        }
        if (folder.parent_path() != folder) {
            MakeFolder(folder.parent_path());
        }
        error.clear();
        std::error_code ignored;
        if (std::filesystem::create_directory(folder, error)) {
            m_paths.push_back(folder);
        } else if (error || !std::filesystem::is_directory(folder, ignored)) {
            throw InputError(fmt::format("{}: the folder cannot be made ({}); choose another one.",
                                         Utf8FromPath(folder), error ? error.message() : "a file has its name"));
        }
    }

    void Write(const std::filesystem::path& path, const ProjectFile& file) {
        scenario::WriteWholeFile(path, file.content);
        m_paths.push_back(path);
        if (file.isProgram) {
            using std::filesystem::perms;
            std::error_code ignored; // some file systems know no programs; a shell runs the file all the same
            std::filesystem::permissions(path, perms::owner_exec | perms::group_exec | perms::others_exec,
                                         std::filesystem::perm_options::add, ignored);
        }
    }

    void Keep() { m_paths.clear(); }

private:
    std::vector<std::filesystem::path> m_paths;
};

} // namespace

std::vector<ProjectFile> ProjectFromTemplate(const std::string& name) {
    const ProjectTemplate& chosen = TemplateCalled(name);
    std::string scenario(chosen.scenario);
    // There the schema is a folder above.
    const std::string above = "\"../" + std::string(schemaName);
    scenario.replace(scenario.find(above), above.size(), "\"" + std::string(schemaName));
    return ProjectWith(std::move(scenario), {chosen.name + ".obj", chosen.geometry()});
}

std::vector<ProjectFile> ProjectAround(const std::filesystem::path& geometry,
                                       const std::vector<SurveyedObject>& objects,
                                       const std::filesystem::path& folder) {
    const std::filesystem::path name = geometry.filename();
    std::string scenario = SuggestedScenario(name, objects);
    scenario.insert(scenario.find("{\n") + 2, fmt::format("  \"$schema\": \"{}\",\n", schemaName));
    std::vector<ProjectFile> files =
        ProjectWith(std::move(scenario), {Utf8FromPath(name), scenario::ReadFile(geometry)});
    std::error_code ignored;
    if (std::filesystem::equivalent(geometry, folder / name, ignored)) {
        files.erase(files.begin() + 2);
    }
    return files;
}

void WriteProject(const std::filesystem::path& folder, const std::vector<ProjectFile>& files) {
    RequireRoom(folder, files);
    Made made;
    made.MakeFolder(programs::NormalPath(folder));
    for (const ProjectFile& file : files) {
        made.Write(folder / scenario::PathFromUtf8(file.name), file);
    }
    made.Keep();
}

} // namespace kinora::host
