#include "host/core/StatesCsv.h"

#include "scenario/Errors.h"
#include "scenario/Text.h"

#include <array>
#include <fmt/format.h>
#include <optional>

namespace kinora::host {

using namespace scenario;

namespace {

using Columns = std::vector<StateColumn>;

constexpr std::array<char, 3> axisLetters = {'x', 'y', 'z'};

/// Three columns, one per axis. `vector` gives the components of a record.
template <class Get>
void AddVector(Columns& columns, const std::string& name, const std::string& unit, Get vector) {
    for (int axis = 0; axis < 3; ++axis) {
        columns.push_back({fmt::format("{}{} [{}]", name, axisLetters[static_cast<std::size_t>(axis)], unit),
                           [vector, axis](const StepRecord& record) { return vector(record)[axis]; }});
    }
}

void AddBody(Columns& columns, const std::string& name, std::size_t body) {
    for (int axis = 0; axis < 3; ++axis) {
        columns.push_back({fmt::format("{}.{} [m]", name, "XYZ"[axis]),
                           [=](const StepRecord& record) { return record.poses[body].p_WB_W[axis]; }});
    }
    AddVector(columns, name + ".Force_", "N", [body](const StepRecord& record) { return record.results[body].force; });
    AddVector(columns, name + ".Torque_", "mN m",
              [body](const StepRecord& record) { return record.results[body].torque; });
}

/// A coordinate of a slider, hinge or cylinder.
/// @param names  of the coordinate, its speed, field force and load
void AddCoordinate(Columns& columns, const std::string& joint, std::size_t index, std::size_t degree, bool isTurn,
                   const std::array<const char*, 4>& names) {
    const auto state = [=](const StepRecord& record) { return record.mechanism.joints[index].coordinates[degree]; };
    const auto at = static_cast<Eigen::Index>(degree);
    const char* way = isTurn ? "rad" : "m";
    const char* force = isTurn ? "N m" : "N";
    columns.push_back({fmt::format("{}.{} [{}]", joint, names[0], way),
                       [state](const StepRecord& record) { return state(record).coordinate; }});
    columns.push_back({fmt::format("{}.{} [{}/s]", joint, names[1], way),
                       [state](const StepRecord& record) { return state(record).speed; }});
    columns.push_back({fmt::format("{}.{} [{}]", joint, names[2], force),
                       [=](const StepRecord& record) { return record.mechanism.joints[index].fieldForce[at]; }});
    columns.push_back({fmt::format("{}.{} [{}]", joint, names[3], force),
                       [=](const StepRecord& record) { return record.mechanism.joints[index].load[at]; }});
}

void AddPlacementColumns(Columns& columns, const std::string& joint, std::size_t index, bool canFly) {
    using Member = Vector PlacementState::*;
    const auto add = [&](const char* name, const char* unit, Member member) {
        AddVector(columns, fmt::format("{}.{} ", joint, name), unit,
                  [=](const StepRecord& record) { return record.mechanism.joints[index].placement.*member; });
    };
    using Force = Generalised JointRecord::*;
    const auto addForce = [&](const char* name, const char* unit, Force member, bool isTorque) {
        AddVector(columns, fmt::format("{}.{} ", joint, name), unit, [=](const StepRecord& record) {
            const Generalised& force = record.mechanism.joints[index].*member;
            return isTorque ? Vector(force.tail<3>()) : Vector(force.head<3>());
        });
    };
    if (canFly) {
        add("Displacement", "m", &PlacementState::displacement_W);
        add("Velocity", "m/s", &PlacementState::velocity_W);
    }
    add("Turn", "rad", &PlacementState::swept_W);
    add("Angular velocity", "rad/s", &PlacementState::angularVelocity_W);
    if (canFly) {
        addForce("Field force", "N", &JointRecord::fieldForce, false);
    }
    addForce("Field torque", "N m", &JointRecord::fieldForce, true);
    if (canFly) {
        addForce("Load", "N", &JointRecord::load, false);
    }
    addForce("Load torque", "N m", &JointRecord::load, true);
}

void AddEnergies(Columns& columns, const std::string& joint, std::size_t index, bool isFree) {
    const auto add = [&](const char* name, double EnergyAccount::*account) {
        columns.push_back({fmt::format("{}.{} [J]", joint, name),
                           [=](const StepRecord& record) { return record.mechanism.joints[index].energy.*account; }});
    };
    add("Kinetic", &EnergyAccount::kinetic);
    add("Potential", &EnergyAccount::potential);
    add("Field work", &EnergyAccount::fieldWork);
    add("Load work", &EnergyAccount::loadWork);
    add("Element work", &EnergyAccount::elementWork);
    add("Dissipated", &EnergyAccount::dissipated);
    // What drives a prescribed joint is not in the books, so they cannot close.
    columns.push_back({fmt::format("{}.Imbalance [J]", joint), [=](const StepRecord& record) {
                           return isFree ? std::optional(record.mechanism.joints[index].energy.Imbalance())
                                         : std::nullopt;
                       }});
}

void AddJoint(Columns& columns, const Joint& joint, std::size_t index) {
    switch (joint.type) {
    case JointType::Slider:
    case JointType::Hinge:
        AddCoordinate(columns, joint.name, index, 0, joint.type == JointType::Hinge,
                      {"Coordinate", "Speed", "Field force", "Load"});
        break;
    case JointType::Cylinder:
        AddCoordinate(columns, joint.name, index, 0, true, {"Turn", "Turn speed", "Turn field torque", "Turn load"});
        AddCoordinate(columns, joint.name, index, 1, false,
                      {"Slide", "Slide speed", "Slide field force", "Slide load"});
        break;
    case JointType::Ball:
    case JointType::Free:
        AddPlacementColumns(columns, joint.name, index, joint.type == JointType::Free);
        break;
    }
    AddEnergies(columns, joint.name, index, joint.IsFree());
}

void AddSpring(Columns& columns, const std::string& spring, std::size_t index) {
    const auto add = [&](const char* name, const char* unit, double SpringRecord::*member) {
        columns.push_back({fmt::format("{}.{} [{}]", spring, name, unit),
                           [=](const StepRecord& record) { return record.mechanism.springs[index].*member; }});
    };
    add("Length", "m", &SpringRecord::length);
    add("Force", "N", &SpringRecord::force);
    add("Potential", "J", &SpringRecord::potential);
    add("Dissipated", "J", &SpringRecord::dissipated);
}

void AddBushing(Columns& columns, const std::string& bushing, std::size_t index) {
    const auto add = [&](const char* name, const char* unit, Vector BushingRecord::*member) {
        AddVector(columns, fmt::format("{}.{} ", bushing, name), unit,
                  [=](const StepRecord& record) { return record.mechanism.bushings[index].*member; });
    };
    const auto addEnergy = [&](const char* name, double BushingRecord::*member) {
        columns.push_back({fmt::format("{}.{} [J]", bushing, name),
                           [=](const StepRecord& record) { return record.mechanism.bushings[index].*member; }});
    };
    add("Way", "m", &BushingRecord::way);
    add("Turn", "rad", &BushingRecord::turn);
    add("Bushing force", "N", &BushingRecord::force);
    add("Bushing torque", "N m", &BushingRecord::torque);
    addEnergy("Potential", &BushingRecord::potential);
    addEnergy("Dissipated", &BushingRecord::dissipated);
}

template <class Items, class Add>
void AddEach(Columns& columns, const Items& items, Add add) {
    for (std::size_t i = 0; i < items.size(); ++i) {
        add(columns, items[i], i);
    }
}

Columns ColumnsOf(const Scenario& scenario) {
    Columns columns;
    AddEach(columns, scenario.bodies, [](Columns& to, const Body& body, std::size_t i) { AddBody(to, body.name, i); });
    AddEach(columns, scenario.joints, AddJoint);
    AddEach(columns, scenario.springs,
            [](Columns& to, const SpringElement& spring, std::size_t i) { AddSpring(to, spring.name, i); });
    AddEach(columns, scenario.bushings,
            [](Columns& to, const Bushing& bushing, std::size_t i) { AddBushing(to, bushing.name, i); });
    return columns;
}

} // namespace

std::vector<std::string> StateHeads(const Scenario& scenario) {
    std::vector<std::string> heads = {"Step", "Time [s]"};
    for (const StateColumn& column : ColumnsOf(scenario)) {
        heads.push_back(column.head);
    }
    return heads;
}

StatesCsv::StatesCsv(const std::filesystem::path& file, const Scenario& scenario, bool goesOn)
    : m_file(file), m_columns(ColumnsOf(scenario)) {
    std::error_code error;
    const bool hasHeader = goesOn && std::filesystem::file_size(file, error) > 0 && !error;
    m_stream.open(file, std::ios::binary | (hasHeader ? std::ios::app : std::ios::trunc));
    if (!hasHeader) {
        m_stream << fmt::format("{}\n", fmt::join(StateHeads(scenario), ","));
    }
    m_stream << std::flush;
    if (!m_stream) {
        throw RunError(
            fmt::format("{}: cannot be written; close it elsewhere and check the folder.", Utf8FromPath(m_file)));
    }
}

void StatesCsv::Append(const StepRecord& record) {
    std::string line = fmt::format("{},{}", record.step, record.time);
    for (const StateColumn& column : m_columns) {
        const std::optional<double> value = column.value(record);
        line += value ? fmt::format(",{}", *value) : ",";
    }
    m_stream << line << '\n' << std::flush;
    if (!m_stream) {
        throw RunError(fmt::format("{}: cannot be written; is the disk full?", Utf8FromPath(m_file)));
    }
}

} // namespace kinora::host
