#include "host/core/Mechanism.h"

#include "scenario/Errors.h"

#include <Eigen/Geometry>
#include <cmath>
#include <fmt/format.h>
#include <limits>

namespace kinora::host {

using namespace scenario;

namespace {

/// Metres or radians per second. Light goes no faster, and no rotor turns so fast.
constexpr double fastest = 3e8;

} // namespace

Mechanism::Mechanism(const Scenario& scenario) : m_scenario(scenario) {
    for (const Joint& joint : scenario.joints) {
        m_lumped.push_back(Lump(joint));
    }
    for (const Body& body : scenario.bodies) {
        m_poses.push_back(body.X_WB0);
    }
    m_records.resize(scenario.joints.size());
    m_previousCoordinates.resize(scenario.joints.size(), 0.0);
}

Mechanism::Lumped Mechanism::Lump(const Joint& joint) const {
    Lumped lumped;
    if (const auto* motion = std::get_if<FreeMotion>(&joint.motion)) {
        lumped.inertia = motion->addedInertia;
    }
    Vector moment_W = Vector::Zero();
    for (const std::size_t index : joint.bodies) {
        const Body& body = m_scenario.bodies[index];
        const auto& [p_WB_W, R_WB] = body.X_WB0;
        const Vector p_WC_W = p_WB_W + R_WB * body.p_BC_B;
        lumped.mass += body.mass;
        moment_W += body.mass * p_WC_W;
        if (joint.type == JointType::Slider) {
            lumped.inertia += body.mass;
            continue;
        }
        const Vector axis_B = R_WB.transpose() * joint.axis_W;
        const double distance = (p_WC_W - joint.p_WJ_W).cross(joint.axis_W).norm();
        lumped.inertia += axis_B.cwiseAbs2().dot(body.principalInertia_B) + body.mass * distance * distance;
    }
    if (lumped.mass > 0.0) {
        lumped.p_WC_W = moment_W / lumped.mass;
    }
    return lumped;
}

Pose Mechanism::PoseAt(const Joint& joint, const Pose& X_WB0, double coordinate) {
    if (joint.type == JointType::Slider) {
        return {X_WB0.p_WB_W + coordinate * joint.axis_W, X_WB0.R_WB};
    }
    // Both ends of the turn are seen from the global frame.
    const Matrix turn_W = Rotation(joint.axis_W, coordinate);
    return {joint.p_WJ_W + turn_W * (X_WB0.p_WB_W - joint.p_WJ_W), turn_W * X_WB0.R_WB};
}

void Mechanism::MoveBodies(std::size_t joint) {
    const Joint& description = m_scenario.joints[joint];
    for (const std::size_t body : description.bodies) {
        m_poses[body] = PoseAt(description, m_scenario.bodies[body].X_WB0, m_records[joint].state.coordinate);
    }
}

void Mechanism::Prescribe(std::size_t joint, double time) {
    const Joint& description = m_scenario.joints[joint];
    const auto& motion = std::get<PrescribedMotion>(description.motion);
    const double coordinate = motion.Evaluate(time);
    if (!std::isfinite(coordinate)) {
        throw RunError(
            fmt::format("The prescribed coordinate of joint \"{}\" is not a finite number at {} s; check its "
                        "expression.",
                        description.name, time));
    }
    m_records[joint].state = {coordinate, motion.Speed(time)};
}

void Mechanism::Start() {
    m_time = 0.0;
    for (std::size_t joint = 0; joint < m_records.size(); ++joint) {
        const Joint& description = m_scenario.joints[joint];
        JointRecord& record = m_records[joint];
        record = JointRecord();
        if (const auto* motion = std::get_if<FreeMotion>(&description.motion)) {
            record.state = {motion->start, motion->speed};
            UpdateStoredEnergy(joint);
            record.energy.initial = record.energy.kinetic + record.energy.potential;
        } else {
            Prescribe(joint, 0.0);
        }
        m_previousCoordinates[joint] = record.state.coordinate;
        MoveBodies(joint);
    }
}

void Mechanism::RequireBounded(std::size_t joint) const {
    const Joint& description = m_scenario.joints[joint];
    const JointState& state = m_records[joint].state;
    const bool isSlider = description.type == JointType::Slider;
    const double farthest = isSlider ? farthestMetres : std::numeric_limits<double>::max();
    // Also false for what is not a number.
    if (std::fabs(state.coordinate) <= farthest && std::fabs(state.speed) <= fastest) {
        return;
    }
    const char* unit = isSlider ? "m" : "rad";
    throw RunError(
        fmt::format("The numbers run away: joint \"{}\" is at {:.3g} {} with {:.3g} {}/s at {:.6g} s. The time "
                    "step is too long for what acts on it: halve \"solver.step\", or look for a spring or load "
                    "in wrong units.",
                    description.name, state.coordinate, unit, state.speed, unit, m_time));
}

void Mechanism::Restore(double time, const std::vector<JointRecord>& records) {
    m_time = time;
    m_records = records;
    for (std::size_t joint = 0; joint < m_records.size(); ++joint) {
        m_previousCoordinates[joint] = m_records[joint].state.coordinate;
        MoveBodies(joint);
    }
}

double Mechanism::FieldForce(const Joint& joint, const std::vector<Load>& loads) const {
    Vector total_W = Vector::Zero();
    for (const std::size_t body : joint.bodies) {
        const Load& load = loads[body];
        const Vector p_JB_W = m_poses[body].p_WB_W - joint.p_WJ_W;
        total_W += joint.type == JointType::Slider ? load.force_W : Vector(load.torque_W + p_JB_W.cross(load.force_W));
    }
    return joint.axis_W.dot(total_W);
}

double Mechanism::GravityForce(std::size_t joint, double coordinate) const {
    const Joint& description = m_scenario.joints[joint];
    const Lumped& lumped = m_lumped[joint];
    const Vector weight_W = lumped.mass * m_scenario.gravity_W;
    if (description.type == JointType::Slider) {
        return description.axis_W.dot(weight_W);
    }
    const Vector p_JC_W = Rotation(description.axis_W, coordinate) * (lumped.p_WC_W - description.p_WJ_W);
    return description.axis_W.dot(p_JC_W.cross(weight_W));
}

double Mechanism::GravityEnergy(std::size_t joint, double coordinate) const {
    const Joint& description = m_scenario.joints[joint];
    const Lumped& lumped = m_lumped[joint];
    const Pose X_WC = PoseAt(description, {lumped.p_WC_W, Matrix::Identity()}, coordinate);
    return -lumped.mass * m_scenario.gravity_W.dot(X_WC.p_WB_W);
}

double Mechanism::DrivingForce(std::size_t joint) const {
    const auto& motion = std::get<FreeMotion>(m_scenario.joints[joint].motion);
    const JointRecord& record = m_records[joint];
    const double coordinate = record.state.coordinate;
    return record.fieldForce + record.load + GravityForce(joint, coordinate) -
           motion.spring.stiffness * (coordinate - motion.spring.rest);
}

void Mechanism::UpdateStoredEnergy(std::size_t joint) {
    const auto& motion = std::get<FreeMotion>(m_scenario.joints[joint].motion);
    JointRecord& record = m_records[joint];
    const double stretch = record.state.coordinate - motion.spring.rest;
    record.energy.kinetic = 0.5 * m_lumped[joint].inertia * record.state.speed * record.state.speed;
    record.energy.potential =
        0.5 * motion.spring.stiffness * stretch * stretch + GravityEnergy(joint, record.state.coordinate);
}

void Mechanism::FlowHalfStep(std::size_t joint) {
    const auto& motion = std::get<FreeMotion>(m_scenario.joints[joint].motion);
    JointRecord& record = m_records[joint];
    const double force = DrivingForce(joint);
    if (RestsAtStop(record.state, force, motion.stops)) {
        return;
    }
    const SpeedFlow flow = FlowSpeed(record.state.speed, force, m_lumped[joint].inertia, motion.damping,
                                     motion.friction, 0.5 * m_stepSeconds);
    record.state.speed = flow.speed;
    record.energy.dissipated += flow.dissipated;
}

void Mechanism::MoveFree(std::size_t joint) {
    const auto& motion = std::get<FreeMotion>(m_scenario.joints[joint].motion);
    JointRecord& record = m_records[joint];
    FlowHalfStep(joint);
    const double restSpeed = std::fabs(DrivingForce(joint)) * m_stepSeconds / m_lumped[joint].inertia;
    const Drift drift = FlowCoordinate(record.state, m_lumped[joint].inertia, motion.stops, restSpeed, m_stepSeconds);
    record.state = drift.state;
    record.energy.dissipated += drift.dissipated;
    RequireBounded(joint);
}

void Mechanism::Move(double toTime) {
    m_stepSeconds = toTime - m_time;
    m_time = toTime;
    for (std::size_t joint = 0; joint < m_records.size(); ++joint) {
        m_previousCoordinates[joint] = m_records[joint].state.coordinate;
        const Joint& description = m_scenario.joints[joint];
        if (description.IsFree()) {
            MoveFree(joint);
        } else {
            Prescribe(joint, toTime);
        }
        MoveBodies(joint);
    }
}

void Mechanism::KeepBooks(JointRecord& record) const {
    const EnergyAccount& energy = record.energy;
    record.books.Add({m_time, energy.kinetic, energy.potential, energy.fieldWork, energy.loadWork, 0.0,
                      energy.dissipated, energy.Imbalance()});
}

void Mechanism::ApplyLoads(const std::vector<Load>& loads) {
    const bool isStart = m_time == 0.0;
    for (std::size_t joint = 0; joint < m_records.size(); ++joint) {
        const Joint& description = m_scenario.joints[joint];
        JointRecord& record = m_records[joint];
        const double coordinate = record.state.coordinate;
        const double path = coordinate - m_previousCoordinates[joint];
        const double fieldForce = FieldForce(description, loads);
        if (!std::isfinite(fieldForce)) {
            throw RunError(fmt::format("The field's force on joint \"{}\" is not a finite number at {} s; look at the "
                                       "desktop's results.",
                                       description.name, m_time));
        }
        if (!isStart) {
            record.energy.fieldWork += 0.5 * (record.fieldForce + fieldForce) * path;
        }
        record.fieldForce = fieldForce;
        if (!description.IsFree()) {
            continue;
        }
        const double load = std::get<FreeMotion>(description.motion).load.Evaluate(m_time, coordinate);
        if (!std::isfinite(load)) {
            throw RunError(fmt::format("The load on joint \"{}\" is not a finite number at {} s; check its expression.",
                                       description.name, m_time));
        }
        if (!isStart) {
            record.energy.loadWork += 0.5 * (record.load + load) * path;
        }
        record.load = load;
        if (!isStart) {
            FlowHalfStep(joint);
            RequireBounded(joint);
        }
        UpdateStoredEnergy(joint);
        KeepBooks(record);
    }
}

} // namespace kinora::host
