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
            {"dissipated", energy.dissipated}};
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
    return record;
}

SavedState FromDocument(const json& document, const Scenario& scenario) {
    if (document.at("stepSeconds").get<double>() != scenario.stepping.stepSeconds) {
        throw InputError(fmt::format("the run was made with a step of {} s, the scenario says {} s.",
                                     document.at("stepSeconds").get<double>(), scenario.stepping.stepSeconds));
    }
    SavedState state;
    state.step = document.at("step").get<int>();
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

void WriteState(const std::filesystem::path& file, const Scenario& scenario, const StepRecord& record) {
    json joints = json::array();
    for (std::size_t i = 0; i < record.joints.size(); ++i) {
        joints.push_back(ToJson(scenario.joints[i].name, record.joints[i]));
    }
    const json document = {{"step", record.step},
                           {"time", record.time},
                           {"stepSeconds", scenario.stepping.stepSeconds},
                           {"joints", joints}};
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
        throw InputError(fmt::format("{}: the file is damaged ({}); start again without --resume.", Utf8FromPath(file),
                                     error.what()));
    }
}

} // namespace kinora::host
