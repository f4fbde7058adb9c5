#pragma once

#include "host/mechanism/JointMotion.h"

namespace kinora::host {

/// A slider, hinge or cylinder: coordinates along and about one axis, each prescribed or free. Turn and way share no
/// kinetic energy, as both are of the same axis.
class AxisMotion : public JointMotion {
public:
    AxisMotion(const scenario::Scenario& scenario, const scenario::Joint& joint);

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
    scenario::Pose PoseAt(const std::vector<JointState>& coordinates, const scenario::Pose& drawn) const;
    JointState Prescribed(std::size_t coordinate, double time) const;
    Generalised Zero() const;

    /// Of each coordinate.
    std::vector<double> m_inertia;
};

} // namespace kinora::host
