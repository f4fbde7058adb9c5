#include "host/core/StateFile.h"

#include "scenario/Errors.h"
#include "scenario/Text.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace kinora::host {

using namespace scenario;

namespace {

using nlohmann::json;

/// 2 since the desktop gets every orientation as it is: what a run before has made cannot be gone on with.
constexpr int stateFormat = 2;

/// Of a vector, of whatever length.
template <class Values>
json ToArray(const Values& values) {
    return std::vector<double>(values.data(), values.data() + values.size());
}

Generalised ToGeneralised(const json& value) {
    const auto numbers = value.get<std::vector<double>>();
    if (numbers.size() > 6) {
        throw json::other_error::create(501, "too many numbers", &value);
    }
    return Eigen::Map<const Eigen::VectorXd>(numbers.data(), static_cast<Eigen::Index>(numbers.size()));
}

Vector ToVector(const json& value) {
    return {value.at(0).get<double>(), value.at(1).get<double>(), value.at(2).get<double>()};
}

/// As Eigen keeps it: x, y, z, w.
Quaternion ToQuaternion(const json& value) {
    return {value.at(3).get<double>(), value.at(0).get<double>(), value.at(1).get<double>(), value.at(2).get<double>()};
}

json ToJson(const PlacementState& state) {
    return {{"centre", ToArray(state.p_WC_W)},
            {"displacement", ToArray(state.displacement_W)},
            {"turn", ToArray(state.turn.coeffs())},
            {"velocity", ToArray(state.velocity_W)},
            {"angularVelocity", ToArray(state.angularVelocity_W)},
            {"angularMomentum", ToArray(state.angularMomentum_W)},
            {"swept", ToArray(state.swept_W)}};
}

PlacementState PlacementFromJson(const json& value) {
    PlacementState state;
    state.p_WC_W = ToVector(value.at("centre"));
    state.displacement_W = ToVector(value.at("displacement"));
    state.turn = ToQuaternion(value.at("turn"));
    state.velocity_W = ToVector(value.at("velocity"));
    state.angularVelocity_W = ToVector(value.at("angularVelocity"));
    state.angularMomentum_W = ToVector(value.at("angularMomentum"));
    state.swept_W = ToVector(value.at("swept"));
    return state;
}

json ToJson(const EnergyAccount& energy, const EnergyBooks& books) {
    return {{"kinetic", energy.kinetic},       {"potential", energy.potential},
            {"initial", energy.initial},       {"fieldWork", energy.fieldWork},
            {"loadWork", energy.loadWork},     {"elementWork", energy.elementWork},
            {"dissipated", energy.dissipated}, {"firstPotential", books.firstPotential.value_or(energy.potential)},
            {"throughput", books.throughput},  {"worstImbalance", books.worstImbalance},
            {"worstTime", books.worstTime}};
}

json ToJson(const std::string& name, const JointRecord& record) {
    json coordinates = json::array();
    for (const auto& [coordinate, speed] : record.coordinates) {
        coordinates.push_back(json::array({coordinate, speed}));
    }
    return {{"name", name},
            {"coordinates", coordinates},
            {"placement", ToJson(record.placement)},
            {"fieldForce", ToArray(record.fieldForce)},
            {"load", ToArray(record.load)},
            {"elementForce", ToArray(record.elementForce)},
            {"energy", ToJson(record.energy, record.books)}};
}

/// @throws InputError  the joint was one of another type
JointRecord FromJson(const json& value, const Joint& joint) {
    JointRecord record;
    for (const json& coordinate : value.at("coordinates")) {
        record.coordinates.push_back({coordinate.at(0).get<double>(), coordinate.at(1).get<double>()});
    }
    record.placement = PlacementFromJson(value.at("placement"));
    bool isSame = record.coordinates.size() == joint.coordinates.size();
    for (const auto& [key, member] :
         {std::pair("fieldForce", &JointRecord::fieldForce), std::pair("load", &JointRecord::load),
          std::pair("elementForce", &JointRecord::elementForce)}) {
        record.*member = ToGeneralised(value.at(key));
        isSame = isSame && (record.*member).size() == static_cast<Eigen::Index>(joint.DegreesOfFreedom());
    }
    if (!isSame) {
        throw InputError(fmt::format("joint \"{}\" was of another type then.", joint.name));
    }
    const json& energy = value.at("energy");
    record.energy.kinetic = energy.at("kinetic").get<double>();
    record.energy.potential = energy.at("potential").get<double>();
    record.energy.initial = energy.at("initial").get<double>();
    record.energy.fieldWork = energy.at("fieldWork").get<double>();
    record.energy.loadWork = energy.at("loadWork").get<double>();
    record.energy.elementWork = energy.at("elementWork").get<double>();
    record.energy.dissipated = energy.at("dissipated").get<double>();
    record.books.firstPotential = energy.at("firstPotential").get<double>();
    record.books.throughput = energy.at("throughput").get<double>();
    record.books.worstImbalance = energy.at("worstImbalance").get<double>();
    record.books.worstTime = energy.at("worstTime").get<double>();
    return record;
}

/// Of springs and bushings only what they have dissipated is not told by the places of the bodies.
template <class Items, class Records>
json Dissipations(const Items& items, const Records& records) {
    json list = json::array();
    for (std::size_t i = 0; i < records.size(); ++i) {
        list.push_back({{"name", items[i].name}, {"dissipated", records[i].dissipated}});
    }
    return list;
}

/// @throws InputError  the state has others than the scenario
template <class Items>
void RequireSame(const Items& items, const json& states, const char* what) {
    bool isSame = states.size() == items.size();
    for (std::size_t i = 0; isSame && i < items.size(); ++i) {
        isSame = states.at(i).at("name").template get<std::string>() == items[i].name;
    }
    if (!isSame) {
        throw InputError(fmt::format("the run was made with other {} than the scenario has.", what));
    }
}

template <class Records>
void TakeDissipations(const json& states, Records& records) {
    for (const json& state : states) {
        records.emplace_back();
        records.back().dissipated = state.at("dissipated").get<double>();
    }
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
    if (document.value("format", 1) != stateFormat) {
        throw InputError("the run was made by another version of this program; start again without --resume.");
    }
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
    RequireSame(scenario.joints, document.at("joints"), "joints");
    RequireSame(scenario.springs, document.at("springs"), "springs");
    RequireSame(scenario.bushings, document.at("bushings"), "bushings");
    for (std::size_t i = 0; i < scenario.joints.size(); ++i) {
        state.mechanism.joints.push_back(FromJson(document.at("joints").at(i), scenario.joints[i]));
    }
    TakeDissipations(document.at("springs"), state.mechanism.springs);
    TakeDissipations(document.at("bushings"), state.mechanism.bushings);
    return state;
}

} // namespace

void WriteState(const std::filesystem::path& file, const Scenario& scenario, const SavedState& state) {
    const auto& [jointRecords, springs, bushings] = state.mechanism;
    json joints = json::array();
    for (std::size_t i = 0; i < jointRecords.size(); ++i) {
        joints.push_back(ToJson(scenario.joints[i].name, jointRecords[i]));
    }
    const json document = {{"format", stateFormat},
                           {"step", state.step},
                           {"stepSeconds", scenario.stepping.stepSeconds},
                           {"joints", joints},
                           {"springs", Dissipations(scenario.springs, springs)},
                           {"bushings", Dissipations(scenario.bushings, bushings)},
                           {"scenario", state.identity},
                           {"files", ToJson(state.sizes)}};
    WriteWholeFile(file, document.dump(1) + "\n");
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
