#pragma once

#include "scenario/FreeMotion.h"

namespace kinora::host {

/// Coordinate and speed of a joint.
struct JointState {
    double coordinate = 0.0;
    double speed = 0.0;
};

/// The mean of exp(-x t) for t from 0 to 1: (1 - exp(-x)) / x, smooth at 0.
/// @param x  0 or more
double MeanDecay(double x);

/// Result of letting the speed alone develop under a constant force.
struct SpeedFlow {
    /// Speed at the end.
    double speed = 0.0;
    /// Energy lost to damping and dry friction, not negative.
    double dissipated = 0.0;
};

/// Exact solution of inertia * dv/dt = force - damping * v - friction * sign(v), the coordinate held, over a time.
/// A body at rest stays at rest while |force| <= friction.
SpeedFlow FlowSpeed(double speed, double force, double inertia, double damping, double friction, double duration);

/// Result of moving at constant speed between stops.
struct Drift {
    JointState state;
    /// Energy lost in hits.
    double dissipated = 0.0;
};

/// Moves at constant speed for a time, bouncing at stops.
/// @param restSpeed  a rebound slower than this ends at the stop: what one step's force would undo anyway
/// @throws RunError  the joint would hit its stops more than a thousand times within the time
Drift FlowCoordinate(const JointState& start, double inertia, const scenario::Stops& stops, double restSpeed,
                     double duration);

/// True when the joint stands at a stop and the force presses it there: it then stays, whatever the speed flow says.
bool RestsAtStop(const JointState& state, double force, const scenario::Stops& stops);

} // namespace kinora::host
