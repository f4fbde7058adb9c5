#include "scenario/ScenarioReader.h"

#include "programs/Paths.h"
#include "scenario/BodyReader.h"
#include "scenario/ElementReader.h"
#include "scenario/Errors.h"
#include "scenario/GeometryCheck.h"
#include "scenario/InertiaCheck.h"
#include "scenario/JointReader.h"
#include "scenario/Node.h"
#include "scenario/OverrideJson.h"
#include "scenario/Parameters.h"
#include "scenario/ResultReader.h"
#include "scenario/SchemaCheck.h"
#include "scenario/Text.h"
#include "scenario/UniqueNames.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace kinora::scenario {
namespace {

void ReadMaterials(const Node& node, Scenario& scenario) {
    for (const std::string& object : node.Keys()) {
        const Node item = node.At(object);
        IKinoraVeltrixInterface::Material material;
        material.name = item.At("name").Text();
        Vector direction = Vector::UnitX();
        if (item.Has("direction")) {
            direction = item.At("direction").NonZero();
        } else {
            scenario.undirected.insert(object);
        }
        for (int i = 0; i < 3; ++i) {
            material.coercivityDirection[i] = direction[i];
        }
        scenario.materials.emplace(object, material);
    }
}

Stepping ReadStepping(const Node& node) {
    Stepping stepping;
    stepping.stepSeconds = node.At("step").Number();
    const double end = node.At("end").Number();
    if (stepping.stepSeconds <= 0.0) {
        node.At("step").Report("the step must be more than 0 s.");
        return {};
    }
    if (end < 0.0) {
        node.At("end").Report("the end must be 0 s or later.");
        return {};
    }
    const double steps = end / stepping.stepSeconds;
    if (std::isnan(steps)) {
        return {};
    }
    const double whole = std::round(steps);
    if (whole > 1e8) {
        node.At("step").Report("that is more than a hundred million steps.");
        return {};
    }
    if (std::fabs(steps - whole) > 1e-6) {
        node.At("end").Report(fmt::format("{} s is not a whole number of steps of {} s; the nearest is {} s.", end,
                                          stepping.stepSeconds, std::fmax(1.0, whole) * stepping.stepSeconds));
    }
    stepping.steps = static_cast<int>(whole);
    return stepping;
}

DesktopSettings ReadDesktop(const Node& node) {
    DesktopSettings desktop;
    if (node.Has("version")) {
        desktop.version = node.At("version").Text();
    }
    if (node.Has("atEnd") && node.At("atEnd").Text() == "release") {
        desktop.atEnd = AtEnd::Release;
    }
    desktop.busyTimeoutSeconds = node.NumberOr("busyTimeout", desktop.busyTimeoutSeconds);
    return desktop;
}

/// A file that the run writes.
std::filesystem::path ReadOutputFile(const Node& node) {
    const std::string text = node.Text();
    std::string portable = text;
    std::replace(portable.begin(), portable.end(), '\\', '/');
    const std::filesystem::path path = PathFromUtf8(portable).lexically_normal();
    // On systems that know no drives a colon is a letter like any other.
    if (path.has_root_path() || *path.begin() == ".." || text.find(':') != std::string::npos) {
        node.Report(
            fmt::format("\"{}\" is not in the output folder, where everything is that a run writes; choose the folder "
                        "with \"output\": {{\"folder\": ...}} or --out, and give a name in it here.",
                        text));
    } else if (!path.has_filename() || path == ".") {
        node.Report("that is not the name of a file.");
    }
    return PathFromUtf8(text);
}

void ReadFiles(const Node& node, const std::filesystem::path& folder, Scenario& scenario) {
    scenario.outputFolder = folder / "output";
    if (node.Has("output")) {
        const Node output = node.At("output");
        if (output.Has("folder")) {
            scenario.outputFolder = programs::Joined(folder, PathFromUtf8(output.At("folder").Text()));
        }
        if (output.Has("csv")) {
            scenario.csvFile = ReadOutputFile(output.At("csv"));
        }
    }
    scenario.projectFile = ReadOutputFile(node.At("project").At("file"));
    scenario.overwrite = node.At("project").Has("overwrite") && node.At("project").At("overwrite").Flag();
    scenario.geometryFile = programs::Joined(folder, PathFromUtf8(node.At("geometry").At("file").Text()));
    scenario.units = node.At("geometry").At("units").Text();
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(scenario.geometryFile, ignored)) {
        node.At("geometry").At("file").Report(fmt::format("there is no file {}.", Utf8FromPath(scenario.geometryFile)));
    }
}

Scenario BuildScenario(const Node& root, const std::filesystem::path& folder, const std::string& desktopVersion,
                       Purpose purpose) {
    Scenario scenario;
    scenario.title = root.TextOr("title", {});
    if (root.Has("desktop")) {
        scenario.desktop = ReadDesktop(root.At("desktop"));
    }
    if (!desktopVersion.empty()) {
        scenario.desktop.version = desktopVersion;
    }
    ReadFiles(root, folder, scenario);
    if (root.Has("materials")) {
        ReadMaterials(root.At("materials"), scenario);
    }
    UniqueNames names;
    scenario.bodies = ReadBodies(root.At("bodies"), names);
    scenario.stepping = ReadStepping(root.At("solver"));
    if (root.Has("joints")) {
        JointReader reader(scenario.bodies, scenario.stepping, names);
        for (const Node& joint : root.At("joints").Items()) {
            scenario.joints.push_back(reader.Read(joint));
        }
    }
    scenario.gravity_W = root.TripleOr("gravity", Vector::Zero());
    CheckInertia(root, scenario);
    ReadElements(root, names, scenario);
    CheckGeometry(root, purpose, scenario);
    if (root.Has("results")) {
        scenario.results = ReadResults(root.At("results"), scenario.stepping);
    }
    return scenario;
}

/// Some editors write UTF-16 when they are asked for "Unicode".
void RequireUtf8(const std::string& text, const std::string& fileName) {
    if (text.rfind("\xFF\xFE", 0) == 0 || text.rfind("\xFE\xFF", 0) == 0) {
        throw InputError(fmt::format("{}:1: /: the file is UTF-16; save it as UTF-8.", fileName));
    }
}

} // namespace

Scenario ParseScenario(const std::string& text, const std::filesystem::path& file, const std::string& desktopVersion,
                       Purpose purpose, const Overrides& overrides) {
    const std::string fileName = Utf8FromPath(file);
    RequireUtf8(text, fileName);
    // A byte order mark at the start is what some editors write.
    const std::string body = text.rfind("\xEF\xBB\xBF", 0) == 0 ? text.substr(3) : text;
    JsonLocations locations = ReadJsonLocations(body, fileName);
    auto document = nlohmann::json::parse(body, nullptr, true, true);
    if (document.is_object()) {
        Apply(overrides, fileName, document, locations);
    }
    CheckAgainstSchema(document, locations, fileName);
    Findings findings(locations, fileName);
    const Node root(document, findings);
    std::vector<Parameter> parameters;
    if (root.Has("parameters")) {
        parameters = ReadParameters(root.At("parameters"));
        findings.ThrowIfAny(); // every formula that names a wrong one would be wrong too
    }
    const NamedValues names = ValuesOf(parameters);
    Scenario scenario = BuildScenario(root.Knowing(names), file.parent_path(), desktopVersion, purpose);
    findings.ThrowIfAny();
    scenario.parameters = std::move(parameters);
    return scenario;
}

Scenario ReadScenario(const std::filesystem::path& file, const std::string& desktopVersion, Purpose purpose,
                      const Overrides& overrides) {
    return ParseScenario(ReadFile(file), file, desktopVersion, purpose, overrides);
}

} // namespace kinora::scenario
