#pragma once
// Interactions of magnets that are far apart compared to their size, by a few points each. The points have
// the exact moments up to the second order; the error estimates come from what the second order contributes and from
// the size of the next orders.
#include "simulator/solver/Loads.h"
#include "simulator/solver/PreparedMagnet.h"

namespace vantor::solver {

/// Largest force and torque that dipoles of two magnets' moments can exert at their distance: what loads are measured
/// against where symmetry leaves nothing of them. The distance is taken no smaller than the larger magnet's radius.
struct DipoleScale {
    double force, torque;
};
DipoleScale ScaleOf(const PreparedMagnet& a, const PreparedMagnet& b);

/// Whether the sum of two radii is small against the distance of the centres.
bool FarApart(const PreparedMagnet& a, const PreparedMagnet& b);

/// Load on `target` from `source`, each replaced by six dipoles.
Interaction FarInteraction(const PreparedMagnet& source, const PreparedMagnet& target, const BodyCentres& centres);

/// Points at which it is evaluated.
constexpr std::size_t farMagnetEvaluations = 36;

} // namespace vantor::solver
