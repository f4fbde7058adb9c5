#pragma once

#include "host/mechanism/JointMotion.h"

#include <utility>
#include <vector>

namespace kinora::host {

/// A damper, by what its force does along the degrees of freedom of the joints that it is fixed to.
struct DamperRow {
    /// N s/m or N m s/rad.
    double coefficient = 0.0;
    /// Joint, and the generalised force of a unit of the damper's force; its scalar product with the velocity is how
    /// fast the damper is pulled apart.
    std::vector<std::pair<std::size_t, Generalised>> ends;
};

/// What a damper did.
struct DampingDone {
    /// Energy lost, joules.
    double dissipated = 0.0;
    /// On each joint of the row's ends, joules.
    std::vector<double> work;
};

/// Lets the velocities develop under dampers alone, the places held, exactly: M du/dt = -D u is solved in the modes of
/// D and M, so that however strong a damper is, it brakes and never rebounds. What is prescribed goes on as it does.
/// @param motions   one per joint
/// @param records   their velocities are changed
/// @param duration  seconds
/// @return one per row
std::vector<DampingDone> FlowDampers(const std::vector<std::unique_ptr<JointMotion>>& motions,
                                     std::vector<JointRecord>& records, const std::vector<DamperRow>& rows,
                                     double duration);

/// How fast a damper is pulled apart.
double SpeedOf(const DamperRow& row, const std::vector<std::unique_ptr<JointMotion>>& motions,
               const std::vector<JointRecord>& records);

} // namespace kinora::host
