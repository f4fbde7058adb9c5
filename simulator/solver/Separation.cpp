#include "simulator/solver/Separation.h"

#include "simulator/solver/SurfaceTree.h"

namespace vantor::solver {
namespace {

/// Gaps below this fraction of the magnets' size are rounding of a contact.
constexpr double magnetContactTolerance = 1e-9;

/// For magnets whose surfaces keep apart: one point decides.
bool Inside(const PreparedMagnet& inner, const PreparedMagnet& outer) {
    return Contains(outer.shape->Surface(), outer.pose, inner.pose * inner.shape->Surface().Point());
}

void CheckPair(const PreparedMagnet& a, const PreparedMagnet& b) {
    const double tolerance = magnetContactTolerance * (a.Radius() + b.Radius());
    // Surfaces of magnets that stand far apart need not be looked at.
    if (a.box.exteriorDistance(b.box) > tolerance) {
        return;
    }
    if (Meet(a.shape->Surface(), a.pose, b.shape->Surface(), b.pose, tolerance)) {
        throw SolveError("The surfaces of " + a.label + " and " + b.label +
                         " touch or cut each other; leave a gap between bodies.");
    }
    const bool aInB = Inside(a, b);
    if (aInB || Inside(b, a)) {
        throw SolveError((aInB ? a : b).label + " lies inside " + (aInB ? b : a).label + "; move one of them out.");
    }
}

} // namespace

void CheckSeparation(const std::vector<PreparedMagnet>& magnets) {
    for (std::size_t i = 0; i < magnets.size(); ++i) {
        for (std::size_t j = i + 1; j < magnets.size(); ++j) {
            if (magnets[i].body != magnets[j].body) {
                CheckPair(magnets[i], magnets[j]);
            }
        }
    }
}

} // namespace vantor::solver
