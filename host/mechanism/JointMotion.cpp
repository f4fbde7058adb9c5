#include "host/mechanism/JointMotion.h"

#include "host/mechanism/AxisMotion.h"
#include "host/mechanism/PlacementMotion.h"
#include "scenario/Errors.h"

#include <fmt/format.h>

namespace kinora::host {

using namespace scenario;

Generalised Screws::ForceOf(const Vector& force_W, const Vector& p_WP_W, const Vector& torque_W) const {
    Generalised result(screws.size());
    const Vector moment_W = torque_W + (p_WP_W - reference_W).cross(force_W);
    for (std::size_t i = 0; i < screws.size(); ++i) {
        result[static_cast<Eigen::Index>(i)] = screws[i].angular_W.dot(moment_W) + screws[i].linear_W.dot(force_W);
    }
    return result;
}

JointMotion::JointMotion(const Scenario& scenario, const Joint& joint)
    : m_joint(joint), m_bodies(Together(scenario.bodies, joint.bodies)) {}

std::unique_ptr<JointMotion> JointMotion::Of(const Scenario& scenario, const Joint& joint) {
    if (joint.HasAxis()) {
        return std::make_unique<AxisMotion>(scenario, joint);
    }
    return std::make_unique<PlacementMotion>(scenario, joint);
}

void JointMotion::FailAsNotFinite(double time) const {
    throw RunError(fmt::format("The prescribed coordinate of joint \"{}\" is not a finite number at {} s; check its "
                               "expression.",
                               m_joint.name, time));
}

void JointMotion::FailAsRunningAway(const std::string& what, double time) const {
    throw RunError(fmt::format("The numbers run away: joint \"{}\" {} at {:.6g} s. The time step is too long for what "
                               "acts on it: halve \"solver.step\", or look for a spring or load in wrong units.",
                               m_joint.name, what, time));
}

} // namespace kinora::host
