#include "simulator/model/ProjectFile.h"

#include "simulator/model/DesignJson.h"
#include "simulator/model/DesktopError.h"
#include "simulator/model/Files.h"
#include "simulator/model/MaterialsJson.h"
#include "simulator/model/Text.h"

#include <nlohmann/json.hpp>

namespace vantor::model {
namespace {

constexpr const char* formatName = "vantor-sim project";
constexpr int formatVersion = 1;

void CheckFormat(const JsonReader& root) {
    if (!root.Has("format") || root.At("format").Text() != formatName) {
        root.Fail("this is not a project of the desktop simulator");
    }
    const int version = root.At("version").Integer();
    if (version != formatVersion) {
        root.At("version").Fail("version " + std::to_string(version) + " cannot be read; this program reads version " +
                                std::to_string(formatVersion));
    }
}

} // namespace

std::string WriteProject(const Project& project) {
    nlohmann::ordered_json json;
    json["format"] = formatName;
    json["version"] = formatVersion;
    json["activeDesign"] = project.activeDesign;
    json["materials"] = MaterialsToJson(project.materials);
    json["designs"] = nlohmann::ordered_json::array();
    for (const auto& design : project.designs) {
        json["designs"].push_back(DesignToJson(*design));
    }
    return json.dump(1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

std::shared_ptr<Project> ReadProject(const std::string& content, const std::string& fileName) {
    const JsonDocument document(content, fileName);
    const JsonReader root = document.Root();
    CheckFormat(root);
    root.AllowOnly({"format", "version", "activeDesign", "materials", "designs"});
    auto project = std::make_shared<Project>();
    project->materials = MaterialsFromJson(root.At("materials"));
    for (const auto& entry : root.At("designs").Elements()) {
        auto design = DesignFromJson(entry);
        if (project->FindDesign(design->name)) {
            entry.At("name").Fail("a second design named " + Quoted(design->name));
        }
        project->designs.push_back(std::move(design));
    }
    project->activeDesign = root.At("activeDesign").Text();
    if (!project->activeDesign.empty() && !project->FindDesign(project->activeDesign)) {
        root.At("activeDesign").Fail("there is no design " + Quoted(project->activeDesign));
    }
    return project;
}

std::shared_ptr<Project> OpenProjectFile(const std::filesystem::path& file) {
    auto project = ReadProject(ReadWholeFile(file), Utf8(file));
    project->name = Utf8(file.stem());
    project->file = file;
    return project;
}

void SaveProjectFile(const Project& project) {
    WriteWholeFile(project.file, WriteProject(project));
}

} // namespace vantor::model
