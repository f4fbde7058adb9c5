#include "fmu/core/Model.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace kinora::fmu {

using namespace scenario;

namespace {

enum UnitIndex { Second, Metre, Radian, MetrePerSecond, RadianPerSecond, Newton, NewtonMetre, Millisecond };

const Unit* In(UnitIndex unit) {
    return &Units()[unit];
}

Variable Text(const char* name, const char* description, std::string start) {
    Variable variable;
    variable.name = name;
    variable.description = description;
    variable.type = Type::Text;
    variable.causality = Causality::Parameter;
    variable.text = std::move(start);
    return variable;
}

Variable Watch(const char* name, const char* description, Type type, const Unit* unit) {
    Variable variable;
    variable.name = name;
    variable.description = description;
    variable.type = type;
    variable.causality = Causality::Output;
    variable.unit = unit;
    variable.start = {0.0};
    return variable;
}

std::vector<double> Components(const Vector& vector) {
    return {vector.x(), vector.y(), vector.z()};
}

/// w, x, y, z; of the two that mean the same that with w not below 0.
std::vector<double> Components(const Quaternion& turn) {
    const double sign = std::signbit(turn.w()) ? -1.0 : 1.0;
    return {sign * turn.w(), sign * turn.x(), sign * turn.y(), sign * turn.z()};
}

/// The variables of one port, as they are added one after the other.
struct PortVariable {
    const char* member;
    std::string description;
    Causality causality;
    UnitIndex unit;
    std::vector<double> start;
    std::optional<Reference> PortReferences::*reference;
    bool hasUnit = true;
};

std::vector<PortVariable> AxisVariables(const Port& port, const Joint& joint) {
    std::vector<PortVariable> list;
    const double angle = StartOf(joint, Coordinate::Kind::Turn); // full turns count
    const double displacement = StartOf(joint, Coordinate::Kind::Slide);
    if (port.Turns()) {
        list.push_back({"angle",
                        "Turn about the axis from the drawn pose",
                        Causality::Input,
                        Radian,
                        {angle},
                        &PortReferences::angle});
    }
    if (port.Slides()) {
        list.push_back({"displacement",
                        "Way along the axis from the drawn pose",
                        Causality::Input,
                        Metre,
                        {displacement},
                        &PortReferences::displacement});
    }
    if (port.Turns()) {
        list.push_back({"angularVelocity",
                        "Speed of the turn: the field is solved where it leads by the step's end",
                        Causality::Input,
                        RadianPerSecond,
                        {0.0},
                        &PortReferences::angularVelocity});
    }
    if (port.Slides()) {
        list.push_back({"velocity",
                        "Speed of the way: the field is solved where it leads by the step's end",
                        Causality::Input,
                        MetrePerSecond,
                        {0.0},
                        &PortReferences::velocity});
    }
    if (port.Turns()) {
        list.push_back({"torque",
                        "Torque of the field about the axis",
                        Causality::Output,
                        NewtonMetre,
                        {0.0},
                        &PortReferences::torque});
    }
    if (port.Slides()) {
        list.push_back(
            {"force", "Force of the field along the axis", Causality::Output, Newton, {0.0}, &PortReferences::force});
    }
    return list;
}

/// Of a ball, a free joint or a body.
std::vector<PortVariable> SpatialVariables(const Port& port, const Vector& place, const Quaternion& turn, Axes axes) {
    const std::vector<double> zeros(3, 0.0);
    const char* in = axes == Axes::Global ? "global axes" : port.isBody ? "the body's axes" : "axes that turn along";
    const char* about = port.isBody ? "the body's origin" : "the joint's point";
    std::vector<PortVariable> list;
    if (port.Slides()) {
        list.push_back({port.isBody ? "position" : "displacement",
                        port.isBody ? "Origin of the body, global axes" : "Way of the joint's point, global axes",
                        Causality::Input, Metre, Components(place), &PortReferences::displacement});
    }
    list.push_back({"orientation",
                    port.isBody ? "Body's axes to global axes: unit quaternion w, x, y, z"
                                : "Turn from the drawn pose: unit quaternion w, x, y, z",
                    Causality::Input, Metre, Components(turn), &PortReferences::orientation, false});
    if (port.Slides()) {
        list.push_back({"velocity", fmt::format("Of {}, global axes; optional", about), Causality::Input,
                        MetrePerSecond, zeros, &PortReferences::velocity});
    }
    list.push_back({"angularVelocity", "Global axes; optional", Causality::Input, RadianPerSecond, zeros,
                    &PortReferences::angularVelocity});
    if (port.Slides()) {
        list.push_back({"force", fmt::format("Force of the field, {}", in), Causality::Output, Newton, zeros,
                        &PortReferences::force});
    }
    list.push_back({"torque", fmt::format("Torque of the field about {}, {}", about, in), Causality::Output,
                    NewtonMetre, zeros, &PortReferences::torque});
    return list;
}

} // namespace

const char* NameOf(Causality causality) {
    switch (causality) {
    case Causality::Independent:
        return "independent";
    case Causality::Parameter:
        return "parameter";
    case Causality::Input:
        return "input";
    case Causality::Output:
        break;
    }
    return "output";
}

const std::vector<Unit>& Units() {
    static const std::vector<Unit> units = {
        {"s", "Time", 0, 0, 1, 0, 1.0, nullptr, 1.0},
        {"m", "Length", 0, 1, 0, 0, 1.0, "mm", 1e3},
        {"rad", "Angle", 0, 0, 0, 1, 1.0, "deg", degreesPerRadian},
        {"m/s", "Velocity", 0, 1, -1, 0, 1.0, "mm/s", 1e3},
        {"rad/s", "AngularVelocity", 0, 0, -1, 1, 1.0, "rev/min", 60.0 * degreesPerRadian / 360.0},
        {"N", "Force", 1, 1, -2, 0, 1.0, nullptr, 1.0},
        {"N.m", "Torque", 1, 2, -2, 0, 1.0, "mN.m", 1e3},
        {"ms", "Time", 0, 0, 1, 0, 1e-3, nullptr, 1.0},
    };
    return units;
}

Model::Model(const Scenario& scenario, const Packing& packing) : m_scenario(scenario), m_packing(packing) {
    AddWhole();
    for (Port& port : packing.ports == Ports::Joints ? JointPorts(scenario) : BodyPorts(scenario)) {
        AddPort(std::move(port));
    }
}

Reference Model::Add(Variable variable) {
    variable.reference = static_cast<Reference>(m_variableOf.size());
    const std::size_t size = variable.type == Type::Text ? 1 : variable.start.size();
    m_variableOf.insert(m_variableOf.end(), size, m_variables.size());
    m_variables.push_back(std::move(variable));
    return m_variables.back().reference;
}

/// In the order of their references.
void Model::AddWhole() {
    Variable time = Watch("time", "Simulation time", Type::Real, In(Second));
    time.causality = Causality::Independent;
    Add(std::move(time));
    Add(Text("outputFolder",
             "Folder for project, log and reports: a new folder in it for every run. Empty: the current folder", ""));
    Add(Text("desktopVersion", "Version of the desktop to start, for example Simulator; empty for the installed one",
             m_packing.bringsSimulator ? "Simulator" : m_scenario.desktop.version));
    Add(Text("logLevel", "What is told besides errors: error (nothing), warning, info", "warning"));
    Add(Text("busyWait", "Seconds for which a busy desktop is waited for; forever: as long as it takes",
             fmt::format("{}", m_scenario.desktop.busyTimeoutSeconds)));
    Add(Watch("solverStatus", "Code of the last solve, 0 for success", Type::Integer, nullptr));
    Add(Watch("solves", "Solves so far", Type::Integer, nullptr));
    Add(Watch("solveMilliseconds", "Duration of the last solve", Type::Real, In(Millisecond)));
}

void Model::AddPort(Port port) {
    const std::size_t index = m_ports.size();
    std::vector<PortVariable> list;
    if (port.HasAxis()) {
        list = AxisVariables(port, m_scenario.joints[index]);
    } else if (port.isBody) {
        const Pose pose = StartPoses(m_scenario)[index];
        list = SpatialVariables(port, pose.p_WB_W, Quaternion(pose.R_WB), m_packing.axes);
    } else {
        const Movement start = StartOf(m_scenario.joints[index]);
        list = SpatialVariables(port, start.displacement_W, start.turn, m_packing.axes);
    }
    for (PortVariable& one : list) {
        Variable variable;
        variable.name = port.name + "." + one.member;
        variable.description = std::move(one.description);
        variable.causality = one.causality;
        variable.unit = one.hasUnit ? In(one.unit) : nullptr;
        variable.isVector = one.start.size() > 1;
        variable.start = std::move(one.start);
        variable.port = index;
        variable.member = one.member;
        port.references.*one.reference = Add(std::move(variable));
    }
    m_ports.push_back(std::move(port));
}

const Variable* Model::Find(Reference reference) const {
    return reference < m_variableOf.size() ? &m_variables[m_variableOf[reference]] : nullptr;
}

} // namespace kinora::fmu
