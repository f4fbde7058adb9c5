#pragma once

#include "scenario/Scenario.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kinora::fmu {

/// Names a variable within an FMU.
using Reference = std::uint32_t;

/// The variables of a port; those that it does not have are empty. A hinge has a single angle, angular velocity and
/// torque, a slider a single displacement, velocity and force, a cylinder both; of all others they are vectors.
struct PortReferences {
    std::optional<Reference> displacement, angle, orientation;
    std::optional<Reference> velocity, angularVelocity;
    std::optional<Reference> force, torque;
};

/// What an FMU's user connects as one: a joint, or a body. Its bodies move by a displacement and a turn about a point
/// away from how they are drawn.
struct Port {
    std::string name;
    /// Free for a body.
    scenario::JointType type = scenario::JointType::Free;
    /// Displacement and orientation are then those of the body itself, not those away from the drawn pose.
    bool isBody = false;
    /// Of a slider, hinge or cylinder: a unit vector.
    scenario::Vector axis_W = scenario::Vector::UnitX();
    /// The point J as drawn; of a body its origin.
    scenario::Vector p_WJ_W = scenario::Vector::Zero();
    /// Of a body, as drawn; of a joint the identity.
    scenario::Matrix R_WJ0 = scenario::Matrix::Identity();
    /// Indices into Scenario::bodies.
    std::vector<std::size_t> bodies;
    PortReferences references;

    /// Whether displacement, force and their like are single numbers along the axis.
    bool HasAxis() const { return type != scenario::JointType::Ball && type != scenario::JointType::Free; }
    bool Slides() const { return type != scenario::JointType::Hinge && type != scenario::JointType::Ball; }
    bool Turns() const { return type != scenario::JointType::Slider; }
};

/// How the bodies of a port are moved away from how they are drawn.
struct Movement {
    /// Of the point J, metres.
    scenario::Vector displacement_W = scenario::Vector::Zero();
    /// About J.
    scenario::Quaternion turn = scenario::Quaternion::Identity();
};

/// Where a movement of a port puts a body that is drawn somewhere.
scenario::Pose MovedBy(const Port& port, const Movement& movement, const scenario::Pose& drawn);

/// A coordinate of a slider, hinge or cylinder as it begins, metres or radians; 0 where the joint has no such one.
double StartOf(const scenario::Joint& joint, scenario::Coordinate::Kind kind);
/// Of a joint as it begins.
Movement StartOf(const scenario::Joint& joint);
/// Of each body as the scenario begins, in its order: where its joint has it, or as drawn.
std::vector<scenario::Pose> StartPoses(const scenario::Scenario& scenario);

/// The joints of a scenario, or its bodies; nothing of variables yet.
std::vector<Port> JointPorts(const scenario::Scenario& scenario);
std::vector<Port> BodyPorts(const scenario::Scenario& scenario);

} // namespace kinora::fmu
