#include "host/core/StateFile.h"

#include "scenario/Errors.h"
#include "scenario/Text.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace kinora::host {

using namespace scenario;

namespace {

using nlohmann::json;

json ToJson(const std::string& name, const JointRecord& record) {
    const EnergyAccount& energy = record.energy;
    return {{"name", name},
            {"coordinate", record.state.coordinate},
            {"speed", record.state.speed},
            {"fieldForce", record.fieldForce},
            {"load", record.load},
            {"kinetic", energy.kinetic},
            {"potential", energy.potential},
            {"initial", energy.initial},
            {"fieldWork", energy.fieldWork},
            {"loadWork", energy.loadWork},
            {"dissipated", energy.dissipated},
            {"firstPotential", record.books.firstPotential.value_or(energy.potential)},
            {"throughput", record.books.throughput},
            {"worstImbalance", record.books.worstImbalance},
            {"worstTime", record.books.worstTime}};
}

JointRecord FromJson(const json& value) {
    JointRecord record;
    record.state = {value.at("coordinate").get<double>(), value.at("speed").get<double>()};
    record.fieldForce = value.at("fieldForce").get<double>();
    record.load = value.at("load").get<double>();
    record.energy.kinetic = value.at("kinetic").get<double>();
    record.energy.potential = value.at("potential").get<double>();
    record.energy.initial = value.at("initial").get<double>();
    record.energy.fieldWork = value.at("fieldWork").get<double>();
    record.energy.loadWork = value.at("loadWork").get<double>();
    record.energy.dissipated = value.at("dissipated").get<double>();
    record.books.firstPotential = value.at("firstPotential").get<double>();
    record.books.throughput = value.at("throughput").get<double>();
    record.books.worstImbalance = value.at("worstImbalance").get<double>();
    record.books.worstTime = value.at("worstTime").get<double>();
    return record;
}

json ToJson(const FileSizes& sizes) {
    return {{"reports", sizes.reports}, {"csv", sizes.csv ? json(*sizes.csv) : json()}};
}

FileSizes SizesFromJson(const json& value) {
    FileSizes sizes;
    sizes.reports = value.at("reports").get<std::map<std::string, std::uintmax_t>>();
    if (!value.at("csv").is_null()) {
        sizes.csv = value.at("csv").get<std::uintmax_t>();
    }
    return sizes;
}

SavedState FromDocument(const json& document, const Scenario& scenario) {
    SavedState state;
    state.step = document.at("step").get<int>();
    state.identity = document.at("scenario").get<RunIdentity>();
    state.sizes = SizesFromJson(document.at("files"));
    if (state.step < 0) {
        return state;
    }
    if (document.at("stepSeconds").get<double>() != scenario.stepping.stepSeconds) {
        throw InputError(fmt::format("the run was made with a step of {} s, the scenario says {} s.",
                                     document.at("stepSeconds").get<double>(), scenario.stepping.stepSeconds));
    }
    const json& joints = document.at("joints");
    bool sameJoints = joints.size() == scenario.joints.size();
    for (std::size_t i = 0; sameJoints && i < joints.size(); ++i) {
        sameJoints = joints.at(i).at("name").get<std::string>() == scenario.joints[i].name;
        state.joints.push_back(FromJson(joints.at(i)));
    }
    if (!sameJoints) {
        throw InputError("the run was made with other joints than the scenario has.");
    }
    return state;
}

} // namespace

void WriteState(const std::filesystem::path& file, const Scenario& scenario, const SavedState& state) {
    json joints = json::array();
    for (std::size_t i = 0; i < state.joints.size(); ++i) {
        joints.push_back(ToJson(scenario.joints[i].name, state.joints[i]));
    }
    const json document = {{"step", state.step},
                           {"stepSeconds", scenario.stepping.stepSeconds},
                           {"joints", joints},
                           {"scenario", state.identity},
                           {"files", ToJson(state.sizes)}};
    ReplaceFile(file, document.dump(1) + "\n");
}

SavedState ReadState(const std::filesystem::path& file, const Scenario& scenario) {
    std::error_code ignored;
    if (!std::filesystem::exists(file, ignored)) {
        throw InputError(
            fmt::format("{}: there is no run to resume here; start one without --resume.", Utf8FromPath(file)));
    }
    try {
        return FromDocument(json::parse(ReadFile(file)), scenario);
    } catch (const InputError& error) {
        throw InputError(fmt::format("{}: cannot resume: {}", Utf8FromPath(file), error.what()));
    } catch (const json::exception& error) {
        throw InputError(fmt::format("{}: the file is damaged, or of another version of this program ({}); start again "
                                     "without --resume.",
                                     Utf8FromPath(file), error.what()));
    }
}

bool IsBeforeFirstStep(const std::filesystem::path& file) {
    try {
        return json::parse(ReadFile(file)).at("step").get<int>() < 0;
    } catch (const InputError&) {
        return false;
    } catch (const json::exception&) {
        return false;
    }
}

} // namespace kinora::host
