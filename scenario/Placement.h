#pragma once

#include "scenario/PrescribedMotion.h"
#include "scenario/Rigid.h"

#include <array>
#include <string>
#include <variant>
#include <vector>

namespace kinora::scenario {

/// A turn about a fixed axis by an angle that is a function of time.
struct AxisTurn {
    /// Unit vector.
    Vector axis_W = Vector::UnitX();
    /// Radians.
    PrescribedMotion angle;
};

/// Turns given by pairs of time and unit quaternion. Between two of them the turn goes on about a fixed axis, at
/// constant speed and the shorter way; it stands still before the first and after the last.
struct TurnTable {
    /// Times strictly ascending; at least one row.
    std::vector<std::pair<double, Quaternion>> rows;
};

/// A prescribed turn away from the drawn pose.
class PrescribedTurn {
public:
    /// Not turned.
    PrescribedTurn();
    explicit PrescribedTurn(AxisTurn turn) : m_source(std::move(turn)) {}
    explicit PrescribedTurn(TurnTable table) : m_source(std::move(table)) {}

    /// @return R_WB R_B0W as a unit quaternion; may be NaN where a formula is
    Quaternion Evaluate(double time) const;
    /// Angular velocity in global axes, radians per second: the exact time derivative; at a corner that of the time
    /// that follows. Always finite, as PrescribedMotion::Speed.
    Vector AngularVelocity(double time) const;
    /// The way from one turn to a later one as turns about the global axes, radians, full turns counted where a formula
    /// tells them.
    Vector SweptBetween(double from, double to) const;

    /// One line for people.
    std::string Description() const;
    /// The axis and formula, or every row of the table: two turns with the same one are the same.
    std::string Definition() const;

private:
    std::variant<AxisTurn, TurnTable> m_source;
};

/// What a prescribed ball or free joint does: J moves by `way`, and the bodies turn about it. Of a ball the way is 0.
struct PrescribedPlacement {
    /// Metres from where J is drawn, along the global axes.
    std::array<PrescribedMotion, 3> way = {PrescribedMotion(Expression()), PrescribedMotion(Expression()),
                                           PrescribedMotion(Expression())};
    PrescribedTurn turn;
};

/// How a free ball or free joint begins, and what brakes it. A ball has no way and no velocity.
struct FreePlacement {
    /// J from where it is drawn, metres.
    Vector way_W = Vector::Zero();
    /// The bodies turned about J away from their drawn poses.
    Quaternion turn = Quaternion::Identity();
    /// Of the centre of mass, metres per second.
    Vector velocity_W = Vector::Zero();
    /// Radians per second.
    Vector angularVelocity_W = Vector::Zero();
    /// Of the velocity of the centre of mass, N s/m.
    double damping = 0.0;
    /// Of the angular velocity, N m s/rad.
    double angularDamping = 0.0;
};

} // namespace kinora::scenario
