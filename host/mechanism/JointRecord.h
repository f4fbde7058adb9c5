#pragma once

#include "host/mechanism/JointFlow.h"
#include "scenario/EnergyBooks.h"
#include "scenario/Rigid.h"

#include <vector>

namespace kinora::host {

/// One number per degree of freedom of a joint, in its order: of a slider the way, of a hinge the turn, of a cylinder
/// the turn and the way, of a ball the turns about the global axes, of a free joint the ways along them and the turns
/// about them. A force of this kind is a force along a way and a torque about a turn.
using Generalised = Eigen::Matrix<double, Eigen::Dynamic, 1, 0, 6, 1>;

/// Where the energy of a joint went since time 0, joules.
struct EnergyAccount {
    double kinetic = 0.0;
    /// Of the joint's own springs and gravity.
    double potential = 0.0;
    /// Kinetic and potential at time 0.
    double initial = 0.0;
    double fieldWork = 0.0;
    double loadWork = 0.0;
    /// Of springs and bushings.
    double elementWork = 0.0;
    /// The joint's own damping, friction and hits.
    double dissipated = 0.0;

    /// What the books do not explain: the error of the time stepping.
    double Imbalance() const { return kinetic + potential - initial + dissipated - fieldWork - loadWork - elementWork; }
};

/// Place and motion of the bodies of a ball or free joint, which move as one rigid body.
struct PlacementState {
    /// The centre of mass C of a free joint; the centre of a ball.
    scenario::Vector p_WC_W = scenario::Vector::Zero();
    /// Of the joint's point from where it is drawn; 0 of a ball.
    scenario::Vector displacement_W = scenario::Vector::Zero();
    /// Away from the drawn pose.
    scenario::Quaternion turn = scenario::Quaternion::Identity();
    /// Of C.
    scenario::Vector velocity_W = scenario::Vector::Zero();
    scenario::Vector angularVelocity_W = scenario::Vector::Zero();
    /// About C, kg m^2/s. What a free one is advanced by: without torques not a bit of it changes.
    scenario::Vector angularMomentum_W = scenario::Vector::Zero();
    /// How far it has turned about the global axes since the drawn pose: the integral of the angular velocity.
    scenario::Vector swept_W = scenario::Vector::Zero();
};

/// What is known of a joint at a step.
struct JointRecord {
    /// Of a slider, hinge or cylinder, as in the scenario.
    std::vector<JointState> coordinates;
    /// Of a ball or free joint.
    PlacementState placement;
    /// Of the field.
    Generalised fieldForce;
    /// Of applied loads; zero where nothing is free.
    Generalised load;
    /// Of springs and bushings, without their damping.
    Generalised elementForce;
    /// Where nothing is free only the works are kept; where one of two coordinates is prescribed, that of the other.
    EnergyAccount energy;
    /// Over the run so far, where anything is free.
    scenario::EnergyBooks books;
};

/// What is known of a spring at a step.
struct SpringRecord {
    /// Metres between its ends.
    double length = 0.0;
    /// Pull, newtons; pushes where it is negative. Damping included.
    double force = 0.0;
    /// Stored, joules.
    double potential = 0.0;
    /// Since time 0, joules.
    double dissipated = 0.0;
};

/// What is known of a bushing at a step. Components are along the axes of its first frame.
struct BushingRecord {
    /// Of the second frame's origin from the first's, metres.
    scenario::Vector way = scenario::Vector::Zero();
    /// Rotation vector of the second frame's turn against the first, radians.
    scenario::Vector turn = scenario::Vector::Zero();
    /// On what the second frame is fixed to, at that frame's origin, newtons. Damping included, here and below.
    scenario::Vector force = scenario::Vector::Zero();
    /// Newton metres.
    scenario::Vector torque = scenario::Vector::Zero();
    double potential = 0.0;
    double dissipated = 0.0;
};

} // namespace kinora::host
