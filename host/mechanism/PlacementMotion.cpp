#include "host/mechanism/PlacementMotion.h"

#include <cmath>
#include <fmt/format.h>

namespace kinora::host {

using namespace scenario;

namespace {

/// Turns in one time step: nobody sees the field of a body that turns so fast.
constexpr double mostTurnsPerStep = 100.0;
constexpr double fullTurn = 6.283185307179586; // radians

} // namespace

PlacementMotion::PlacementMotion(const Scenario& scenario, const Joint& joint)
    : JointMotion(scenario, joint), m_drawnCentre(CanFly() && m_bodies.mass > 0.0 ? m_bodies.p_WC_W : joint.p_WJ_W),
      m_inertia(PrincipalInertiaOf(m_bodies.InertiaAbout(m_drawnCentre))) {}

Generalised PlacementMotion::Join(const Vector& ways, const Vector& turns) const {
    Generalised joined(CanFly() ? 6 : 3);
    if (CanFly()) {
        joined << ways, turns;
    } else {
        joined = turns;
    }
    return joined;
}

Vector PlacementMotion::Ways(const Generalised& values) const {
    return CanFly() ? Vector(values.head<3>()) : Vector::Zero();
}

Vector PlacementMotion::Turns(const Generalised& values) {
    return values.tail<3>();
}

bool PlacementMotion::IsFree(std::size_t /*degree*/) const {
    return m_joint.IsFree();
}

/// C, when J has gone a way and the bodies have turned about it.
Vector PlacementMotion::CentreAt(const Vector& way_W, const Quaternion& turn) const {
    return m_joint.p_WJ_W + way_W + turn * (m_drawnCentre - m_joint.p_WJ_W);
}

Matrix PlacementMotion::InertiaOf(const PlacementState& state) const {
    const Matrix R_WP = state.turn.toRotationMatrix() * m_inertia.axes;
    return R_WP * m_inertia.moments.asDiagonal() * R_WP.transpose();
}

void PlacementMotion::StartFree(const FreePlacement& start, PlacementState& state) const {
    state.displacement_W = start.way_W;
    state.turn = start.turn;
    state.p_WC_W = CentreAt(start.way_W, start.turn);
    state.velocity_W = CanFly() ? start.velocity_W : Vector::Zero();
    state.angularVelocity_W = start.angularVelocity_W;
    state.angularMomentum_W = InertiaOf(state) * start.angularVelocity_W;
    state.swept_W = RotationVector(start.turn);
}

/// Everything but how far it has turned.
void PlacementMotion::Prescribe(const PrescribedPlacement& motion, double time, PlacementState& state) const {
    const auto vector = [&](auto quantity) {
        return Vector(quantity(motion.way[0]), quantity(motion.way[1]), quantity(motion.way[2]));
    };
    state.displacement_W = vector([time](const PrescribedMotion& way) { return way.Evaluate(time); });
    const Vector velocity_W = vector([time](const PrescribedMotion& way) { return way.Speed(time); });
    state.turn = motion.turn.Evaluate(time);
    if (!state.displacement_W.allFinite() || !state.turn.coeffs().allFinite()) {
        FailAsNotFinite(time);
    }
    state.p_WC_W = CentreAt(state.displacement_W, state.turn);
    state.angularVelocity_W = motion.turn.AngularVelocity(time);
    const Vector p_JC_W = state.p_WC_W - m_joint.p_WJ_W - state.displacement_W;
    state.velocity_W = velocity_W + state.angularVelocity_W.cross(p_JC_W);
}

void PlacementMotion::Start(JointRecord& record) const {
    record.placement = PlacementState();
    if (const auto* start = std::get_if<FreePlacement>(&m_joint.placement)) {
        StartFree(*start, record.placement);
        return;
    }
    Prescribe(std::get<PrescribedPlacement>(m_joint.placement), 0.0, record.placement);
    record.placement.swept_W = RotationVector(record.placement.turn);
}

Pose PlacementMotion::PoseOf(const JointRecord& record, const Pose& drawn) const {
    const auto& state = record.placement;
    return {state.p_WC_W + state.turn * (drawn.p_WB_W - m_drawnCentre), state.turn.toRotationMatrix() * drawn.R_WB};
}

Vector PlacementMotion::CentreForEnergy(const JointRecord& record) const {
    return PoseOf(record, {m_bodies.p_WC_W, Matrix::Identity()}).p_WB_W;
}

Screws PlacementMotion::ScrewsOf(const JointRecord& record) const {
    Screws screws{record.placement.p_WC_W, {}};
    for (int axis = 0; CanFly() && axis < 3; ++axis) {
        screws.screws.push_back({Vector::Zero(), Vector::Unit(axis)});
    }
    for (int axis = 0; axis < 3; ++axis) {
        screws.screws.push_back({Vector::Unit(axis), Vector::Zero()});
    }
    return screws;
}

MassMatrix PlacementMotion::MassOf(const JointRecord& record) const {
    const Eigen::Index size = CanFly() ? 6 : 3;
    MassMatrix mass = m_bodies.mass * MassMatrix::Identity(size, size);
    mass.bottomRightCorner<3, 3>() = InertiaOf(record.placement);
    return mass;
}

Generalised PlacementMotion::VelocityOf(const JointRecord& record) const {
    return Join(record.placement.velocity_W, record.placement.angularVelocity_W);
}

void PlacementMotion::SetVelocity(JointRecord& record, const Generalised& velocity) const {
    PlacementState& state = record.placement;
    state.velocity_W = Ways(velocity);
    state.angularVelocity_W = Turns(velocity);
    state.angularMomentum_W = InertiaOf(state) * state.angularVelocity_W;
}

Generalised PlacementMotion::DampingOf() const {
    const auto* free = std::get_if<FreePlacement>(&m_joint.placement);
    return free ? Join(Vector::Constant(free->damping), Vector::Constant(free->angularDamping))
                : Join(Vector::Zero(), Vector::Zero());
}

Generalised PlacementMotion::SpringForce(const JointRecord& /*record*/) const {
    return Join(Vector::Zero(), Vector::Zero());
}

double PlacementMotion::SpringEnergy(const JointRecord& /*record*/) const {
    return 0.0;
}

Generalised PlacementMotion::LoadAt(const JointRecord& /*record*/, double /*time*/) const {
    return Join(Vector::Zero(), Vector::Zero());
}

void PlacementMotion::Kick(JointRecord& record, const Generalised& force, double duration) const {
    if (!m_joint.IsFree()) {
        return;
    }
    PlacementState& state = record.placement;
    if (CanFly()) {
        state.velocity_W += duration / m_bodies.mass * Ways(force);
    }
    state.angularMomentum_W += duration * Turns(force);
    UpdateAngularVelocity(state);
}

/// The momentum is what is kept.
void PlacementMotion::UpdateAngularVelocity(PlacementState& state) const {
    const Matrix R_WP = state.turn.toRotationMatrix() * m_inertia.axes;
    const Vector angularMomentum_P = R_WP.transpose() * state.angularMomentum_W;
    state.angularVelocity_W = R_WP * angularMomentum_P.cwiseQuotient(m_inertia.moments);
}

Generalised PlacementMotion::Advance(JointRecord& record, const Generalised& /*force*/, double from, double to) const {
    PlacementState& state = record.placement;
    const Vector before = state.p_WC_W;
    Vector swept_W;
    if (const auto* motion = std::get_if<PrescribedPlacement>(&m_joint.placement)) {
        Prescribe(*motion, to, state);
        swept_W = motion->turn.SweptBetween(from, to);
    } else {
        state.p_WC_W += (to - from) * state.velocity_W;
        const FreeTurn free = TurnFreely(state.turn, state.angularMomentum_W, m_inertia, to - from);
        state.turn = free.turn;
        swept_W = free.swept_W;
        if (CanFly()) {
            state.displacement_W = state.p_WC_W + state.turn * (m_joint.p_WJ_W - m_drawnCentre) - m_joint.p_WJ_W;
        }
        UpdateAngularVelocity(state);
    }
    state.swept_W += swept_W;
    return Join(state.p_WC_W - before, swept_W);
}

void PlacementMotion::RequireBounded(const JointRecord& record, double time, double stepSeconds) const {
    const PlacementState& state = record.placement;
    const double speed = state.velocity_W.norm();
    const double turnsPerStep = state.angularVelocity_W.norm() * stepSeconds / fullTurn;
    // Also false for what is not a number.
    if (!(state.p_WC_W.norm() <= farthestMetres && speed <= fastest)) {
        FailAsRunningAway(fmt::format("is {:.3g} m away with {:.3g} m/s", state.p_WC_W.norm(), speed), time);
    }
    if (!(turnsPerStep <= mostTurnsPerStep)) {
        FailAsRunningAway(fmt::format("makes {:.3g} turns in one step", turnsPerStep), time);
    }
}

} // namespace kinora::host
