#include "fmu/binary/Inputs.h"

#include "fmu/binary/Errors.h"

#include <cmath>
#include <fmt/format.h>

namespace kinora::fmu {

using namespace scenario;

namespace {

/// Tools integrate quaternions, and let them drift.
constexpr double unitTolerance = 0.01;

void RequireFinite(bool isFinite, const Port& port) {
    if (!isFinite) {
        throw FmuError(
            fmt::format("An input of \"{}\" is not a finite number; look at what is connected to it.", port.name));
    }
}

} // namespace

Inputs::Inputs(const Model& model) {
    m_values.resize(model.References());
    for (const Variable& variable : model.Variables()) {
        for (std::size_t i = 0; i < variable.start.size(); ++i) {
            m_values[variable.reference + i] = variable.start[i];
        }
    }
}

bool Inputs::HasDerivatives(Reference first, std::size_t count) const {
    const auto next = m_derivatives.lower_bound(first);
    return next != m_derivatives.end() && next->first < first + count;
}

/// By Taylor's polynomial.
double Inputs::Extrapolated(Reference reference, double later) const {
    double value = m_values[reference];
    if (const auto found = m_derivatives.find(reference); found != m_derivatives.end()) {
        for (const auto& [order, derivative] : found->second) {
            value += derivative * std::pow(later, order) / std::tgamma(order + 1.0);
        }
    }
    return value;
}

Vector Inputs::VectorAt(Reference first) const {
    return {m_values[first], m_values[first + 1], m_values[first + 2]};
}

Vector Inputs::Displacement(const Port& port, double later) const {
    const Reference place = *port.references.displacement;
    const Reference speed = *port.references.velocity;
    const std::size_t size = port.HasAxis() ? 1 : 3;
    const double ownSpeeds = HasDerivatives(place, size) ? 0.0 : later;
    if (port.HasAxis()) {
        return (Extrapolated(place, later) + ownSpeeds * m_values[speed]) * port.axis_W;
    }
    const Vector moved(Extrapolated(place, later), Extrapolated(place + 1, later), Extrapolated(place + 2, later));
    // Of a body the place itself is given.
    return moved + ownSpeeds * VectorAt(speed) - (port.isBody ? port.p_WJ_W : Vector::Zero());
}

/// From the inputs alone.
Quaternion Inputs::Orientation(const Port& port, double later) const {
    const Reference first = *port.references.orientation;
    const Quaternion given(Extrapolated(first, later), Extrapolated(first + 1, later), Extrapolated(first + 2, later),
                           Extrapolated(first + 3, later));
    RequireFinite(given.coeffs().allFinite(), port);
    const Eigen::Vector4d now(m_values[first], m_values[first + 1], m_values[first + 2], m_values[first + 3]);
    if (std::fabs(now.norm() - 1.0) > unitTolerance || given.norm() < unitTolerance) {
        throw FmuError(fmt::format("\"{}.orientation\" is ({}, {}, {}, {}), which is no unit quaternion w, x, y, z: "
                                   "not turned is (1, 0, 0, 0).",
                                   port.name, now[0], now[1], now[2], now[3]));
    }
    return given.normalized();
}

Quaternion Inputs::Turn(const Port& port, double later) const {
    const Reference speed = *port.references.angularVelocity;
    if (port.HasAxis()) {
        const Reference angle = *port.references.angle;
        const double ownSpeed = HasDerivatives(angle, 1) ? 0.0 : later;
        return TurnBy((Extrapolated(angle, later) + ownSpeed * m_values[speed]) * port.axis_W);
    }
    Quaternion turn = Orientation(port, later);
    if (later != 0.0 && !HasDerivatives(*port.references.orientation, 4)) {
        turn = TurnBy(later * VectorAt(speed)) * turn;
    }
    return port.isBody ? turn * Quaternion(port.R_WJ0).conjugate() : turn;
}

Movement Inputs::MovementOf(const Port& port, double later) const {
    Movement movement;
    if (port.Slides()) {
        movement.displacement_W = Displacement(port, later);
    }
    if (port.Turns()) {
        movement.turn = Turn(port, later);
    }
    RequireFinite(movement.displacement_W.allFinite() && movement.turn.coeffs().allFinite(), port);
    return movement;
}

} // namespace kinora::fmu
