#include "host/mechanism/JointFlow.h"

#include "scenario/Errors.h"

#include <cmath>
#include <limits>

namespace kinora::host {

using namespace scenario;

namespace {

/// (1 - MeanDecay(x)) / x, smooth at 0.
double MeanOfMeanDecay(double x) {
    return x < 1e-3 ? 0.5 - x / 6.0 + x * x / 24.0 : (1.0 - MeanDecay(x)) / x;
}

double Sign(double value) {
    return value > 0.0 ? 1.0 : value < 0.0 ? -1.0 : 0.0;
}

/// One stretch in which the direction of motion does not change.
struct OneWayFlow {
    double speed;
    double path;
};
OneWayFlow FlowOneWay(double speed, double push, double inertia, double damping, double duration) {
    const double x = damping * duration / inertia;
    const double gain = push / inertia * duration;
    return {speed * std::exp(-x) + gain * MeanDecay(x), duration * (speed * MeanDecay(x) + gain * MeanOfMeanDecay(x))};
}

/// Time after which the speed is zero; infinite when the push does not brake.
double TimeToStandstill(double speed, double push, double inertia, double damping) {
    if (Sign(speed) * push >= 0.0) {
        return std::numeric_limits<double>::infinity();
    }
    const double ratio = -speed / push;
    return damping > 0.0 ? inertia / damping * std::log1p(ratio * damping) : inertia * ratio;
}

} // namespace

double MeanDecay(double x) {
    return x < 1e-5 ? 1.0 - x / 2.0 + x * x / 6.0 : -std::expm1(-x) / x;
}

SpeedFlow FlowSpeed(double speed, double force, double inertia, double damping, double friction, double duration) {
    SpeedFlow flow{speed, 0.0};
    double path = 0.0;
    double left = duration;
    // At most two stretches: to standstill, and away from it.
    while (left > 0.0) {
        const bool standsStill = flow.speed == 0.0;
        if (standsStill && std::fabs(force) <= friction) {
            break;
        }
        const double direction = standsStill ? Sign(force) : Sign(flow.speed);
        const double push = force - friction * direction;
        const double standstill = standsStill ? std::numeric_limits<double>::infinity()
                                              : TimeToStandstill(flow.speed, push, inertia, damping);
        const double time = std::fmin(left, standstill);
        const OneWayFlow stretch = FlowOneWay(flow.speed, push, inertia, damping, time);
        path += stretch.path;
        flow.speed = standstill <= left ? 0.0 : stretch.speed;
        left -= time;
    }
    if (damping > 0.0 || friction > 0.0) {
        const double gained = 0.5 * inertia * (flow.speed * flow.speed - speed * speed);
        flow.dissipated = std::fmax(0.0, force * path - gained);
    }
    return flow;
}

Drift FlowCoordinate(const JointState& start, double inertia, const Stops& stops, double restSpeed, double duration) {
    Drift drift{start, 0.0};
    double left = duration;
    for (int hits = 0; hits <= 1000; ++hits) {
        JointState& state = drift.state;
        const double next = state.coordinate + state.speed * left;
        const double stop = state.speed < 0.0 ? stops.min : stops.max;
        const bool hit = state.speed < 0.0 ? next < stop : next > stop;
        if (!hit) {
            state.coordinate = next;
            return drift;
        }
        left -= std::fmax(0.0, (stop - state.coordinate) / state.speed);
        const double before = state.speed;
        const double rebound = -stops.restitution * before;
        state = {stop, std::fabs(rebound) <= restSpeed ? 0.0 : rebound};
        drift.dissipated += 0.5 * inertia * (before * before - state.speed * state.speed);
    }
    throw RunError("A joint hits its stops more than a thousand times in one step; make the step shorter.");
}

bool RestsAtStop(const JointState& state, double force, const Stops& stops) {
    if (state.speed != 0.0) {
        return false;
    }
    return (state.coordinate <= stops.min && force <= 0.0) || (state.coordinate >= stops.max && force >= 0.0);
}

} // namespace kinora::host
