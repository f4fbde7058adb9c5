#pragma once

#include "host/mechanism/JointRecord.h"
#include "scenario/MassProperties.h"

#include <memory>

namespace kinora::host {

/// How a degree of freedom moves the points of its bodies: a point P goes with linear_W + angular_W x (P - reference).
struct Screw {
    scenario::Vector angular_W = scenario::Vector::Zero();
    scenario::Vector linear_W = scenario::Vector::Zero();
};

/// All degrees of freedom of a joint, in its present configuration.
struct Screws {
    scenario::Vector reference_W = scenario::Vector::Zero();
    std::vector<Screw> screws;

    /// What a force at a point and a torque do along each degree of freedom. (Principle of virtual power.)
    Generalised ForceOf(const scenario::Vector& force_W, const scenario::Vector& p_WP_W,
                        const scenario::Vector& torque_W) const;
};

/// Symmetric: the kinetic energy is half of velocity times mass matrix times velocity.
using MassMatrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, 0, 6, 6>;

/// Metres or radians per second. Light goes no faster, and no rotor turns so fast.
constexpr double fastest = 3e8;

/// The bodies of one joint as one rigid body: how they are moved, and how they move. The state is in the caller's
/// record. Springs, loads and flows are of the coordinates that are free; of the others they are 0.
class JointMotion {
public:
    /// @param scenario  must outlive the result, the joint too
    static std::unique_ptr<JointMotion> Of(const scenario::Scenario& scenario, const scenario::Joint& joint);

    virtual ~JointMotion() = default;
    JointMotion(const JointMotion&) = delete;
    JointMotion& operator=(const JointMotion&) = delete;

    const scenario::Joint& Description() const { return m_joint; }
    const scenario::MassProperties& Bodies() const { return m_bodies; }

    /// Whether a degree of freedom follows from forces.
    virtual bool IsFree(std::size_t degree) const = 0;
    /// The state at time 0.
    /// @throws RunError  a prescribed coordinate is not a finite number, here and below
    virtual void Start(JointRecord& record) const = 0;
    /// Where what was drawn in one pose is now.
    virtual scenario::Pose PoseOf(const JointRecord& record, const scenario::Pose& drawn) const = 0;
    /// As PoseOf, with prescribed coordinates held at 0: what the potential energy is counted by.
    virtual scenario::Vector CentreForEnergy(const JointRecord& record) const = 0;
    virtual Screws ScrewsOf(const JointRecord& record) const = 0;
    virtual MassMatrix MassOf(const JointRecord& record) const = 0;
    virtual Generalised VelocityOf(const JointRecord& record) const = 0;
    /// Takes the velocities of the free degrees of freedom.
    virtual void SetVelocity(JointRecord& record, const Generalised& velocity) const = 0;
    /// Damping of each degree of freedom that is not part of `Kick`.
    virtual Generalised DampingOf() const = 0;
    /// The joint's own springs.
    virtual Generalised SpringForce(const JointRecord& record) const = 0;
    /// Energy in them, joules.
    virtual double SpringEnergy(const JointRecord& record) const = 0;
    /// The joint's own applied load. Not finite where its formula is not.
    virtual Generalised LoadAt(const JointRecord& record, double time) const = 0;
    /// Lets the velocities develop under a constant force, the place held.
    virtual void Kick(JointRecord& record, const Generalised& force, double duration) const = 0;
    /// Moves on, freely or as prescribed.
    /// @param force  the present one, which decides whether a rebound from a stop comes to rest
    /// @return the way along each degree of freedom
    /// @throws RunError  it hits its stops endlessly
    virtual Generalised Advance(JointRecord& record, const Generalised& force, double from, double to) const = 0;
    /// @throws RunError  the numbers run away
    virtual void RequireBounded(const JointRecord& record, double time, double stepSeconds) const = 0;

protected:
    JointMotion(const scenario::Scenario& scenario, const scenario::Joint& joint);
    [[noreturn]] void FailAsNotFinite(double time) const;
    [[noreturn]] void FailAsRunningAway(const std::string& what, double time) const;

    const scenario::Joint& m_joint;
    scenario::MassProperties m_bodies;
};

} // namespace kinora::host
