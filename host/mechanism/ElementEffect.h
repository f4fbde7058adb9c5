#pragma once

#include "host/mechanism/JointRecord.h"
#include "scenario/Scenario.h"

#include <vector>

namespace kinora::host {

/// A damper: its force is along `linear_W` and its torque about `angular_W`, each the coefficient times how fast the
/// second end moves that way against the first.
struct Damper {
    /// N s/m or N m s/rad.
    double coefficient = 0.0;
    scenario::Vector linear_W = scenario::Vector::Zero();
    scenario::Vector angular_W = scenario::Vector::Zero();
};

/// What a spring or a bushing does to what its second end is fixed to; the first end gets the opposite, at the same
/// point, so that momentum and angular momentum stay.
struct ElementEffect {
    scenario::Vector p_WP_W = scenario::Vector::Zero();
    scenario::Vector force_W = scenario::Vector::Zero();
    scenario::Vector torque_W = scenario::Vector::Zero();
    /// Joules.
    double potential = 0.0;
    std::vector<Damper> dampers;
};

/// Of a spring between the origins of two frames.
/// @throws RunError  its ends have come together
ElementEffect EffectOf(const scenario::SpringElement& spring, const scenario::Pose& X_WF, const scenario::Pose& X_WG);

/// Of a bushing between two frames. Force and torque are the derivatives of its potential energy, 1/2 k d^2 of every
/// way d and turn (component of the rotation vector) d, so that it is conservative however far it is turned; half a
/// turn at most. (Derivative of the rotation vector: J. Sola, J. Deray, D. Atchuthan, "A micro Lie theory for state
/// estimation in robotics", arXiv:1812.01537, equation 146.)
/// @throws RunError  it is turned by half a turn
ElementEffect EffectOf(const scenario::Bushing& bushing, const scenario::Pose& X_WF, const scenario::Pose& X_WG);

/// What is told of them.
/// @param load  the effect with the forces of the dampers added; its dampers are not looked at
SpringRecord SpringRecordOf(const ElementEffect& load, const scenario::Pose& X_WF, const scenario::Pose& X_WG);
BushingRecord BushingRecordOf(const ElementEffect& load, const scenario::Pose& X_WF, const scenario::Pose& X_WG);

} // namespace kinora::host
