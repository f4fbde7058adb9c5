#include "host/mechanism/AxisMotion.h"

#include <cmath>
#include <fmt/format.h>
#include <limits>

namespace kinora::host {

using namespace scenario;

namespace {

Eigen::Index Index(std::size_t i) {
    return static_cast<Eigen::Index>(i);
}

bool IsTurn(const Coordinate& coordinate) {
    return coordinate.kind == Coordinate::Kind::Turn;
}

double Stretch(const Spring& spring, double coordinate) {
    return coordinate - spring.rest;
}

} // namespace

AxisMotion::AxisMotion(const Scenario& scenario, const Joint& joint) : JointMotion(scenario, joint) {
    const double momentOfInertia = joint.axis_W.dot(m_bodies.InertiaAbout(joint.p_WJ_W) * joint.axis_W);
    for (const Coordinate& coordinate : joint.coordinates) {
        const auto* motion = std::get_if<FreeMotion>(&coordinate.motion);
        m_inertia.push_back((IsTurn(coordinate) ? momentOfInertia : m_bodies.mass) +
                            (motion ? motion->addedInertia : 0.0));
    }
}

Generalised AxisMotion::Zero() const {
    return Generalised::Zero(Index(m_joint.coordinates.size()));
}

bool AxisMotion::IsFree(std::size_t degree) const {
    return m_joint.coordinates[degree].IsFree();
}

JointState AxisMotion::Prescribed(std::size_t coordinate, double time) const {
    const auto& motion = std::get<PrescribedMotion>(m_joint.coordinates[coordinate].motion);
    const double value = motion.Evaluate(time);
    if (!std::isfinite(value)) {
        FailAsNotFinite(time);
    }
    return {value, motion.Speed(time)};
}

void AxisMotion::Start(JointRecord& record) const {
    record.coordinates.clear();
    for (std::size_t i = 0; i < m_joint.coordinates.size(); ++i) {
        const auto* motion = std::get_if<FreeMotion>(&m_joint.coordinates[i].motion);
        record.coordinates.push_back(motion ? JointState{motion->start, motion->speed} : Prescribed(i, 0.0));
    }
}

Pose AxisMotion::PoseAt(const std::vector<JointState>& coordinates, const Pose& drawn) const {
    Pose pose = drawn;
    for (std::size_t i = 0; i < coordinates.size(); ++i) {
        const double coordinate = coordinates[i].coordinate;
        if (IsTurn(m_joint.coordinates[i])) {
            // Both ends of the turn are seen from the global frame.
            const Matrix turn_W = Rotation(m_joint.axis_W, coordinate);
            pose.p_WB_W = m_joint.p_WJ_W + turn_W * (pose.p_WB_W - m_joint.p_WJ_W);
            pose.R_WB = turn_W * pose.R_WB;
        } else {
            pose.p_WB_W += coordinate * m_joint.axis_W;
        }
    }
    return pose;
}

Pose AxisMotion::PoseOf(const JointRecord& record, const Pose& drawn) const {
    return PoseAt(record.coordinates, drawn);
}

Vector AxisMotion::CentreForEnergy(const JointRecord& record) const {
    std::vector<JointState> coordinates = record.coordinates;
    for (std::size_t i = 0; i < coordinates.size(); ++i) {
        if (!IsFree(i)) {
            coordinates[i].coordinate = 0.0;
        }
    }
    return PoseAt(coordinates, {m_bodies.p_WC_W, Matrix::Identity()}).p_WB_W;
}

Screws AxisMotion::ScrewsOf(const JointRecord& /*record*/) const {
    Screws screws{m_joint.p_WJ_W, {}};
    for (const Coordinate& coordinate : m_joint.coordinates) {
        const bool isTurn = IsTurn(coordinate);
        screws.screws.push_back({isTurn ? m_joint.axis_W : Vector::Zero(), isTurn ? Vector::Zero() : m_joint.axis_W});
    }
    return screws;
}

MassMatrix AxisMotion::MassOf(const JointRecord& /*record*/) const {
    return Eigen::Map<const Eigen::VectorXd>(m_inertia.data(), Index(m_inertia.size())).asDiagonal();
}

Generalised AxisMotion::VelocityOf(const JointRecord& record) const {
    Generalised velocity = Zero();
    for (std::size_t i = 0; i < record.coordinates.size(); ++i) {
        velocity[Index(i)] = record.coordinates[i].speed;
    }
    return velocity;
}

void AxisMotion::SetVelocity(JointRecord& record, const Generalised& velocity) const {
    for (std::size_t i = 0; i < record.coordinates.size(); ++i) {
        if (IsFree(i)) {
            record.coordinates[i].speed = velocity[Index(i)];
        }
    }
}

Generalised AxisMotion::DampingOf() const {
    // Theirs is part of the speed's exact flow.
    return Zero();
}

Generalised AxisMotion::SpringForce(const JointRecord& record) const {
    Generalised force = Zero();
    for (std::size_t i = 0; i < record.coordinates.size(); ++i) {
        if (const auto* motion = std::get_if<FreeMotion>(&m_joint.coordinates[i].motion)) {
            force[Index(i)] = -motion->spring.stiffness * Stretch(motion->spring, record.coordinates[i].coordinate);
        }
    }
    return force;
}

double AxisMotion::SpringEnergy(const JointRecord& record) const {
    double energy = 0.0;
    for (std::size_t i = 0; i < record.coordinates.size(); ++i) {
        if (const auto* motion = std::get_if<FreeMotion>(&m_joint.coordinates[i].motion)) {
            const double stretch = Stretch(motion->spring, record.coordinates[i].coordinate);
            energy += 0.5 * motion->spring.stiffness * stretch * stretch;
        }
    }
    return energy;
}

Generalised AxisMotion::LoadAt(const JointRecord& record, double time) const {
    Generalised load = Zero();
    for (std::size_t i = 0; i < record.coordinates.size(); ++i) {
        if (const auto* motion = std::get_if<FreeMotion>(&m_joint.coordinates[i].motion)) {
            load[Index(i)] = motion->load.Evaluate(time, record.coordinates[i].coordinate);
        }
    }
    return load;
}

void AxisMotion::Kick(JointRecord& record, const Generalised& force, double duration) const {
    for (std::size_t i = 0; i < record.coordinates.size(); ++i) {
        const auto* motion = std::get_if<FreeMotion>(&m_joint.coordinates[i].motion);
        JointState& state = record.coordinates[i];
        const double push = force[Index(i)];
        if (!motion || RestsAtStop(state, push, motion->stops)) {
            continue;
        }
        const SpeedFlow flow = FlowSpeed(state.speed, push, m_inertia[i], motion->damping, motion->friction, duration);
        state.speed = flow.speed;
        record.energy.dissipated += flow.dissipated;
    }
}

Generalised AxisMotion::Advance(JointRecord& record, const Generalised& force, double from, double to) const {
    Generalised way = Zero();
    for (std::size_t i = 0; i < record.coordinates.size(); ++i) {
        JointState& state = record.coordinates[i];
        const double before = state.coordinate;
        if (const auto* motion = std::get_if<FreeMotion>(&m_joint.coordinates[i].motion)) {
            const double restSpeed = std::fabs(force[Index(i)]) * (to - from) / m_inertia[i];
            const Drift drift = FlowCoordinate(state, m_inertia[i], motion->stops, restSpeed, to - from);
            state = drift.state;
            record.energy.dissipated += drift.dissipated;
        } else {
            state = Prescribed(i, to);
        }
        way[Index(i)] = state.coordinate - before;
    }
    return way;
}

void AxisMotion::RequireBounded(const JointRecord& record, double time, double /*stepSeconds*/) const {
    for (std::size_t i = 0; i < record.coordinates.size(); ++i) {
        const auto& [coordinate, speed] = record.coordinates[i];
        const bool isTurn = IsTurn(m_joint.coordinates[i]);
        const double farthest = isTurn ? std::numeric_limits<double>::max() : farthestMetres;
        // Also false for what is not a number.
        if (!IsFree(i) || (std::fabs(coordinate) <= farthest && std::fabs(speed) <= fastest)) {
            continue;
        }
        const char* unit = isTurn ? "rad" : "m";
        FailAsRunningAway(fmt::format("is at {:.3g} {} with {:.3g} {}/s", coordinate, unit, speed, unit), time);
    }
}

} // namespace kinora::host
