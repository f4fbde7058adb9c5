#pragma once

#include "host/mechanism/Elements.h"
#include "scenario/Scenario.h"

#include <memory>
#include <vector>

namespace kinora::host {

/// What is known of a mechanism at a step, in the scenario's order.
struct MechanismRecord {
    std::vector<JointRecord> joints;
    std::vector<SpringRecord> springs;
    std::vector<BushingRecord> bushings;
};

/// The multibody side: bodies on joints, with springs and bushings between them, advanced by one force evaluation per
/// step.
///
/// A step is a Strang splitting: the speeds flow half a step under the forces at the old places, the bodies move a
/// whole step at those speeds (momenta, where they turn about all axes), the speeds flow half a step under the forces
/// at the new places. Without damping and friction this is symplectic, time-reversible and of second order; of one
/// coordinate it is velocity Verlet. Damping and dry friction of a coordinate are solved exactly within the speed
/// flow; all other dampers together, exactly too, before the first half and after the second. (E. Hairer, C. Lubich,
/// G. Wanner, "Geometric Numerical Integration", chapters II and VII.)
///
/// Calls: `Start`, `ApplyLoads`, then per step `Move` and `ApplyLoads`.
class Mechanism {
public:
    /// @param scenario  must outlive this object
    explicit Mechanism(const scenario::Scenario& scenario);

    /// Puts every joint where it is at time 0.
    /// @throws RunError  a prescribed coordinate is not a finite number
    void Start();

    /// First half of a step: speeds, then places, up to a time.
    /// @throws RunError  a prescribed coordinate is not a finite number, a joint hits its stops endlessly, a spring or
    ///                   bushing has lost its meaning, or a free joint runs away
    void Move(double toTime);

    /// Second half of a step (at time 0: the start of the books): takes the field's loads at the present poses.
    /// @param loads  one per body, in the bodies' order
    /// @throws RunError  a load is not a finite number, or a free joint runs away
    void ApplyLoads(const std::vector<scenario::Load>& loads);

    /// The present poses, in the bodies' order.
    const std::vector<scenario::Pose>& Poses() const { return m_poses; }
    const MechanismRecord& Records() const { return m_records; }
    /// In the joints' order.
    const std::vector<JointRecord>& Joints() const { return m_records.joints; }
    double Time() const { return m_time; }

    /// Continues from records of an earlier run.
    void Restore(double time, const MechanismRecord& records);

private:
    void Place();
    Generalised FieldForce(std::size_t joint, const std::vector<scenario::Load>& loads) const;
    Generalised AppliedForce(std::size_t joint) const;
    Generalised DrivingForce(std::size_t joint) const;
    double WorkOver(std::size_t joint, const Generalised& before, const Generalised& after) const;
    void TakeForces(std::size_t joint, const std::vector<scenario::Load>& loads, bool isStart);
    std::vector<DamperRow> AllDampers() const;
    void FlowAllDampers(double duration);
    void UpdateStoredEnergy(std::size_t joint);
    void UpdateElements();
    void KeepBooks(JointRecord& record) const;

    const scenario::Scenario& m_scenario;
    std::vector<std::unique_ptr<JointMotion>> m_motions;
    Elements m_elements;
    std::vector<scenario::Pose> m_poses;
    std::vector<Screws> m_screws;
    MechanismRecord m_records;
    /// The last step's ways, for the work done on them.
    std::vector<Generalised> m_ways;
    double m_time = 0.0;
    double m_stepSeconds = 0.0;
};

} // namespace kinora::host
