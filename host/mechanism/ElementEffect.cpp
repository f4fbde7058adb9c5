#include "host/mechanism/ElementEffect.h"

#include "scenario/Errors.h"

#include <cmath>
#include <fmt/format.h>

namespace kinora::host {

using namespace scenario;

namespace {

/// Shorter than an atom.
constexpr double shortest = 1e-10;
/// Radians: close to half a turn nobody can tell which way a bushing was turned.
constexpr double largestTurn = 3.11;

Matrix Cross(const Vector& vector) {
    Matrix cross;
    cross << 0.0, -vector.z(), vector.y(), vector.z(), 0.0, -vector.x(), -vector.y(), vector.x(), 0.0;
    return cross;
}

/// How the rotation vector changes with a small turn in the axes that it is seen from.
Matrix RotationVectorDerivative(const Vector& turn) {
    const double angle = turn.norm();
    const Matrix cross = Cross(turn);
    // The factor's series at 0 is 1/12 + angle^2/720.
    const double factor = angle < 1e-3 ? 1.0 / 12.0 + angle * angle / 720.0
                                       : (1.0 - 0.5 * angle / std::tan(0.5 * angle)) / (angle * angle);
    return Matrix::Identity() - 0.5 * cross + factor * cross * cross;
}

/// How far a bushing's frames are apart, in the axes of the first.
struct Deflection {
    Vector way;
    Vector turn;
};

Deflection DeflectionOf(const Pose& X_WF, const Pose& X_WG) {
    return {X_WF.R_WB.transpose() * (X_WG.p_WB_W - X_WF.p_WB_W),
            RotationVector(Quaternion(Matrix(X_WF.R_WB.transpose() * X_WG.R_WB)))};
}

Vector ElasticTorque(const Bushing& bushing, const Vector& turn) {
    return -RotationVectorDerivative(turn).transpose() * bushing.angularStiffness.cwiseProduct(turn);
}

} // namespace

ElementEffect EffectOf(const SpringElement& spring, const Pose& X_WF, const Pose& X_WG) {
    const Vector p_FG_W = X_WG.p_WB_W - X_WF.p_WB_W;
    const double length = p_FG_W.norm();
    if (!(length > shortest)) {
        throw RunError(fmt::format("The ends of spring \"{}\" have come together: it has no direction any more. Fix it "
                                   "elsewhere, or take a bushing.",
                                   spring.name));
    }
    const Vector along_W = p_FG_W / length;
    const double stretch = length - spring.length;
    ElementEffect effect;
    effect.p_WP_W = X_WG.p_WB_W;
    effect.force_W = -spring.stiffness * stretch * along_W;
    effect.potential = 0.5 * spring.stiffness * stretch * stretch;
    if (spring.damping > 0.0) {
        effect.dampers.push_back({spring.damping, along_W, Vector::Zero()});
    }
    return effect;
}

ElementEffect EffectOf(const Bushing& bushing, const Pose& X_WF, const Pose& X_WG) {
    const auto [way, turn] = DeflectionOf(X_WF, X_WG);
    if (!(turn.norm() < largestTurn)) {
        throw RunError(
            fmt::format("Bushing \"{}\" is turned by {:.4g} degrees; it takes less than half a turn. Make it "
                        "stiffer, or let a joint turn.",
                        bushing.name, turn.norm() * degreesPerRadian));
    }
    ElementEffect effect;
    effect.p_WP_W = X_WG.p_WB_W;
    effect.force_W = X_WF.R_WB * -bushing.stiffness.cwiseProduct(way);
    effect.torque_W = X_WF.R_WB * ElasticTorque(bushing, turn);
    effect.potential = 0.5 * (bushing.stiffness.dot(way.cwiseAbs2()) + bushing.angularStiffness.dot(turn.cwiseAbs2()));
    for (int axis = 0; axis < 3; ++axis) {
        if (bushing.damping[axis] > 0.0) {
            effect.dampers.push_back({bushing.damping[axis], X_WF.R_WB.col(axis), Vector::Zero()});
        }
    }
    for (int axis = 0; axis < 3; ++axis) {
        if (bushing.angularDamping[axis] > 0.0) {
            effect.dampers.push_back({bushing.angularDamping[axis], Vector::Zero(), X_WF.R_WB.col(axis)});
        }
    }
    return effect;
}

SpringRecord SpringRecordOf(const ElementEffect& load, const Pose& X_WF, const Pose& X_WG) {
    const Vector p_FG_W = X_WG.p_WB_W - X_WF.p_WB_W;
    SpringRecord record;
    record.length = p_FG_W.norm();
    record.force = -load.force_W.dot(p_FG_W) / record.length;
    record.potential = load.potential;
    return record;
}

BushingRecord BushingRecordOf(const ElementEffect& load, const Pose& X_WF, const Pose& X_WG) {
    const auto [way, turn] = DeflectionOf(X_WF, X_WG);
    BushingRecord record;
    record.way = way;
    record.turn = turn;
    record.force = X_WF.R_WB.transpose() * load.force_W;
    record.torque = X_WF.R_WB.transpose() * load.torque_W;
    record.potential = load.potential;
    return record;
}

} // namespace kinora::host
