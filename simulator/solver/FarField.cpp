#include "simulator/solver/FarField.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vantor::solver {
namespace {

using Eigen::Vector3d;

/// Distance, in sums of the radii, from which on dipoles are tried first.
constexpr double farMagnets = 10;
/// Bound of what the points miss, from the third order on, as a multiple of the leading order times the third power of
/// radii over distance. It holds for blocks, tetrahedra and triangles with a margin.
constexpr double missedByMagnets = 0.2;
constexpr double farRounding = 8 * std::numeric_limits<double>::epsilon();

/// Load on a dipole from another one: J. D. Jackson, "Classical Electrodynamics" (1999), 5.56 and 5.69.
Wrench DipoleWrench(const Vector3d& from, const Vector3d& fromMoment, const Vector3d& to, const Vector3d& toMoment) {
    const Vector3d offset = to - from;
    const double distance = offset.norm(), cube = distance * distance * distance;
    const Vector3d along = offset / distance;
    const double a = fromMoment.dot(along), b = toMoment.dot(along);
    const Vector3d force = 3 * fieldConstant / (cube * distance) *
                           (a * toMoment + b * fromMoment + (fromMoment.dot(toMoment) - 5 * a * b) * along);
    const Vector3d fluxDensity = fieldConstant / cube * (3 * a * along - fromMoment);
    Wrench wrench = Wrench::At(to, force);
    wrench.torque += toMoment.cross(fluxDensity);
    return wrench;
}

/// Adds an error of which only the size is known: a force, and a torque about the centre of what it acts on.
void AddError(Interaction& interaction, double force, double torque, const Vector3d& source, const Vector3d& target,
              const BodyCentres& centres) {
    interaction.forceError += force;
    interaction.sourceTorqueError += torque + (source - centres.source).norm() * force;
    interaction.targetTorqueError += torque + (target - centres.target).norm() * force;
}

/// Integrals along edges of distant magnets nearly cancel; whether their rounding is worse than the error at hand.
bool EdgesLoseMore(const PreparedMagnet& source, const PreparedMagnet& target, const Interaction& interaction) {
    const double force =
        8 * farRounding * fieldConstant * source.shape->OutlineCharge() * target.shape->OutlineCharge();
    const double torque = force * (source.centre - target.centre).norm();
    return interaction.forceError <= force ||
           std::max(interaction.sourceTorqueError, interaction.targetTorqueError) <= torque;
}

} // namespace

DipoleScale ScaleOf(const PreparedMagnet& a, const PreparedMagnet& b) {
    const double distance = std::max({(a.centre - b.centre).norm(), a.Radius(), b.Radius()});
    const double torque = 2 * fieldConstant * a.moment.norm() * b.moment.norm() / (distance * distance * distance);
    return {3 * torque / distance, torque};
}

bool FarApart(const PreparedMagnet& a, const PreparedMagnet& b) {
    return (a.centre - b.centre).norm() > farMagnets * (a.Radius() + b.Radius());
}

Interaction FarInteraction(const PreparedMagnet& source, const PreparedMagnet& target, const BodyCentres& centres) {
    Interaction result;
    const Vector3d sourceShare = source.moment / 6, targetShare = target.moment / 6;
    for (const Vector3d& from : source.massPoints) {
        for (const Vector3d& to : target.massPoints) {
            result.wrench += DipoleWrench(from, sourceShare, to, targetShare);
        }
    }
    const double closeness = (source.Radius() + target.Radius()) / (source.centre - target.centre).norm();
    const Wrench leading = DipoleWrench(source.centre, source.moment, target.centre, target.moment);
    SetErrors(result, closeness * (result.wrench - leading), centres);
    const DipoleScale scale = ScaleOf(source, target);
    const double missed = missedByMagnets * std::pow(closeness, 3) + farRounding;
    AddError(result, missed * scale.force, missed * scale.torque, source.centre, target.centre, centres);
    result.exhausted = EdgesLoseMore(source, target, result);
    return result;
}

} // namespace vantor::solver
