#pragma once

#include "host/mechanism/FreeTurn.h"
#include "host/mechanism/JointMotion.h"

namespace kinora::host {

/// A ball or a free joint: a rigid body that turns about a fixed point, or about its centre of mass, which flies.
class PlacementMotion : public JointMotion {
public:
    PlacementMotion(const scenario::Scenario& scenario, const scenario::Joint& joint);

    bool IsFree(std::size_t degree) const override;
    void Start(JointRecord& record) const override;
    scenario::Pose PoseOf(const JointRecord& record, const scenario::Pose& drawn) const override;
    scenario::Vector CentreForEnergy(const JointRecord& record) const override;
    Screws ScrewsOf(const JointRecord& record) const override;
    MassMatrix MassOf(const JointRecord& record) const override;
    Generalised VelocityOf(const JointRecord& record) const override;
    void SetVelocity(JointRecord& record, const Generalised& velocity) const override;
    Generalised DampingOf() const override;
    Generalised SpringForce(const JointRecord& record) const override;
    double SpringEnergy(const JointRecord& record) const override;
    Generalised LoadAt(const JointRecord& record, double time) const override;
    void Kick(JointRecord& record, const Generalised& force, double duration) const override;
    Generalised Advance(JointRecord& record, const Generalised& force, double from, double to) const override;
    void RequireBounded(const JointRecord& record, double time, double stepSeconds) const override;

private:
    bool CanFly() const { return m_joint.type == scenario::JointType::Free; }
    void StartFree(const scenario::FreePlacement& start, PlacementState& state) const;
    void Prescribe(const scenario::PrescribedPlacement& motion, double time, PlacementState& state) const;
    void UpdateAngularVelocity(PlacementState& state) const;
    scenario::Matrix InertiaOf(const PlacementState& state) const;
    scenario::Vector CentreAt(const scenario::Vector& way_W, const scenario::Quaternion& turn) const;
    Generalised Join(const scenario::Vector& ways, const scenario::Vector& turns) const;
    scenario::Vector Ways(const Generalised& values) const;
    static scenario::Vector Turns(const Generalised& values);

    /// What turns are about, as drawn: the centre of mass of a free joint, the point of a ball.
    scenario::Vector m_drawnCentre;
    /// About it, as drawn.
    PrincipalInertia m_inertia;
};

} // namespace kinora::host
