#pragma once

#include "scenario/Scenario.h"

#include <string>
#include <utility>

namespace kinora::host {

/// A slider or hinge on the first body, through the origin.
inline scenario::Joint OneCoordinateJoint(std::string name, scenario::JointType type, const scenario::Vector& axis_W,
                                          std::variant<scenario::PrescribedMotion, scenario::FreeMotion> motion) {
    scenario::Joint joint;
    joint.name = std::move(name);
    joint.type = type;
    joint.axis_W = axis_W;
    joint.bodies = {0};
    const bool isTurn = type == scenario::JointType::Hinge;
    joint.coordinates = {
        {isTurn ? scenario::Coordinate::Kind::Turn : scenario::Coordinate::Kind::Slide, std::move(motion)}};
    return joint;
}

/// A ball or free joint on the first body, about the origin.
inline scenario::Joint PlacementJoint(std::string name, scenario::JointType type,
                                      const scenario::FreePlacement& start) {
    scenario::Joint joint;
    joint.name = std::move(name);
    joint.type = type;
    joint.bodies = {0};
    joint.placement = start;
    return joint;
}

/// The motion of the only coordinate of a free joint.
inline scenario::FreeMotion& FreeMotionOf(scenario::Joint& joint) {
    return std::get<scenario::FreeMotion>(joint.coordinates[0].motion);
}

} // namespace kinora::host
