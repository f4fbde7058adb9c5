#pragma once

#include "host/core/JointFlow.h"
#include "scenario/EnergyBooks.h"
#include "scenario/Scenario.h"

#include <vector>

namespace kinora::host {

/// Where the energy of a free joint went since time 0, joules.
struct EnergyAccount {
    double kinetic = 0.0;
    /// Spring and gravity.
    double potential = 0.0;
    /// Kinetic and potential at time 0.
    double initial = 0.0;
    double fieldWork = 0.0;
    double loadWork = 0.0;
    /// Damping, friction and hits.
    double dissipated = 0.0;

    /// What the books do not explain: the error of the time stepping.
    double Imbalance() const { return kinetic + potential - initial + dissipated - fieldWork - loadWork; }
};

/// What is known of a joint at a step.
struct JointRecord {
    JointState state;
    /// Generalised force of the field along the coordinate, N or N m.
    double fieldForce = 0.0;
    /// Applied load, N or N m; zero for a prescribed joint.
    double load = 0.0;
    /// For a prescribed joint only `fieldWork` is kept.
    EnergyAccount energy;
    /// Of a free joint, over the run so far.
    scenario::EnergyBooks books;
};

/// The multibody side: bodies on joints, advanced by one force evaluation per step.
///
/// A step is a Strang splitting: the speed flows half a step under the forces at the old coordinates, the coordinates
/// move a whole step at that speed, the speed flows half a step under the forces at the new coordinates. Without
/// damping and friction this is velocity Verlet (symplectic, time-reversible, second order); damping and dry friction
/// are solved exactly within the speed flow.
/// (E. Hairer, C. Lubich, G. Wanner, "Geometric Numerical Integration", chapter II.)
///
/// Calls: `Start`, `ApplyLoads`, then per step `Move` and `ApplyLoads`.
class Mechanism {
public:
    /// @param scenario  must outlive this object
    explicit Mechanism(const scenario::Scenario& scenario);

    /// Puts every joint where it is at time 0.
    /// @throws RunError  a prescribed coordinate is not a finite number
    void Start();

    /// First half of a step: speeds, then coordinates, up to a time.
    /// @throws RunError  a prescribed coordinate is not a finite number, a joint hits its stops endlessly, or a free
    ///                   one runs away
    void Move(double toTime);

    /// Second half of a step (at time 0: the start of the books): takes the field's loads at the present poses.
    /// @param loads  one per body, in the bodies' order
    /// @throws RunError  a load is not a finite number, or a free joint runs away
    void ApplyLoads(const std::vector<scenario::Load>& loads);

    /// The present poses, in the bodies' order.
    const std::vector<scenario::Pose>& Poses() const { return m_poses; }
    /// In the joints' order.
    const std::vector<JointRecord>& Joints() const { return m_records; }
    double Time() const { return m_time; }

    /// Continues from records of an earlier run.
    /// @param records  one per joint, in the joints' order
    void Restore(double time, const std::vector<JointRecord>& records);

private:
    /// What a joint's bodies amount to along its coordinate.
    struct Lumped {
        double inertia = 0.0;
        double mass = 0.0;
        /// To the centre of mass of the bodies together, at coordinate 0.
        scenario::Vector p_WC_W = scenario::Vector::Zero();
    };

    Lumped Lump(const scenario::Joint& joint) const;
    void MoveBodies(std::size_t joint);
    static scenario::Pose PoseAt(const scenario::Joint& joint, const scenario::Pose& X_WB0, double coordinate);
    double FieldForce(const scenario::Joint& joint, const std::vector<scenario::Load>& loads) const;
    double GravityForce(std::size_t joint, double coordinate) const;
    double GravityEnergy(std::size_t joint, double coordinate) const;
    double DrivingForce(std::size_t joint) const;
    void Prescribe(std::size_t joint, double time);
    void RequireBounded(std::size_t joint) const;
    void FlowHalfStep(std::size_t joint);
    void UpdateStoredEnergy(std::size_t joint);
    void MoveFree(std::size_t joint);
    void KeepBooks(JointRecord& record) const;

    const scenario::Scenario& m_scenario;
    std::vector<Lumped> m_lumped;
    std::vector<scenario::Pose> m_poses;
    std::vector<JointRecord> m_records;
    /// Coordinates at the last step, for the work done since.
    std::vector<double> m_previousCoordinates;
    double m_time = 0.0;
    double m_stepSeconds = 0.0;
};

} // namespace kinora::host
