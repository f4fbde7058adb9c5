#include "host/core/RunJson.h"

#include "host/core/RunFiles.h"
#include "programs/Paths.h"
#include "scenario/OverrideJson.h"
#include "scenario/Text.h"

#include <nlohmann/json.hpp>

namespace kinora::host {

using namespace scenario;
using nlohmann::ordered_json;

namespace {

void AddText(ordered_json& object, const char* key, const std::string& text) {
    if (!text.empty()) {
        object[key] = text;
    }
}

ordered_json ParametersJson(const Scenario& scenario) {
    ordered_json parameters = ordered_json::object();
    for (const Parameter& parameter : scenario.parameters) {
        ordered_json& entry = parameters[parameter.name];
        entry["value"] = parameter.value;
        entry["formula"] = parameter.formula;
        AddText(entry, "unit", parameter.unit);
        AddText(entry, "description", parameter.description);
    }
    return parameters;
}

/// The files of the run, as seen from the folder of the result file.
ordered_json FilesJson(const Scenario& scenario, const RunFacts& facts) {
    const RunFiles files = FilesOf(scenario);
    const std::filesystem::path folder = programs::NormalPath(*files.result).parent_path();
    ordered_json list = ordered_json::object();
    const auto add = [&](const char* what, const std::filesystem::path& file) {
        const std::filesystem::path whole = programs::NormalPath(file);
        const std::filesystem::path seen = whole.lexically_relative(folder);
        list[what] = (seen.empty() ? whole : seen).generic_u8string();
    };
    add("project", files.project);
    add("log", files.couplingLog);
    if (files.csv) {
        add("states", *files.csv);
    }
    if (facts.reportPage) {
        add("report", *facts.reportPage);
    }
    return list;
}

/// Names of files need not be text.
std::string Lines(const ordered_json& document) {
    return document.dump(2, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}

} // namespace

std::string DeclarationsJson(const Scenario& scenario) {
    ordered_json results = ordered_json::object();
    const std::vector<RunResult> known = ResultsToCome(scenario);
    for (std::size_t i = 0; i < known.size(); ++i) {
        const WantedResult& wanted = scenario.results[i];
        ordered_json& entry = results[wanted.name];
        entry["column"] = wanted.column;
        entry["take"] = NameOf(wanted.take);
        if (wanted.take == Take::At) {
            entry["time"] = wanted.timeSeconds;
        }
        AddText(entry, "unit", known[i].unit);
        AddText(entry, "description", wanted.description);
    }
    return Lines({{"parameters", ParametersJson(scenario)}, {"results", results}});
}

std::string ResultJson(const Scenario& scenario, const RunFacts& facts, const std::vector<RunResult>& results) {
    ordered_json document;
    document["status"] = "complete";
    document["scenario"] = programs::NormalPath(facts.scenarioFile).generic_u8string();
    document["title"] = scenario.title;
    ordered_json& parameters = document["parameters"] = ordered_json::object();
    for (const Parameter& parameter : scenario.parameters) {
        parameters[parameter.name] = parameter.value;
    }
    ordered_json& set = document["set"] = ordered_json::object();
    for (const Override& change : facts.overrides) {
        set[change.path] = ValueOf(change);
    }
    ordered_json& values = document["results"] = ordered_json::object();
    ordered_json& units = document["units"] = ordered_json::object();
    for (const RunResult& result : results) {
        values[result.name] = result.value ? ordered_json(*result.value) : ordered_json();
        AddText(units, result.name.c_str(), result.unit);
    }
    document["steps"] = scenario.stepping.steps;
    document["wallSeconds"] = facts.wallSeconds;
    document["versions"] = facts.versions;
    document["files"] = FilesJson(scenario, facts);
    return Lines(document);
}

void WriteResult(const Scenario& scenario, const RunFacts& facts, const std::vector<RunResult>& results) {
    WriteWholeFile(*scenario.resultFile, ResultJson(scenario, facts, results));
}

} // namespace kinora::host
