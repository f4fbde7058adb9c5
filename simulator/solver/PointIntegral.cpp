#include "simulator/solver/PointIntegral.h"

#include "simulator/solver/Loads.h"
#include "simulator/solver/PolygonIntegrals.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vantor::solver {
namespace {

/// Order of the field's Taylor series from which on the points' rule leaves an error.
constexpr int missedOrder = 6;
/// Part of the bound by sizes alone that the rule leaves of that order at most; the orders that follow count as much.
constexpr double partOfFieldBound = 0.12;
constexpr double fieldRounding = 16 * std::numeric_limits<double>::epsilon();

} // namespace

ErrorSizes PointErrors(const Polygon& source, const Cluster& target, const Eigen::Vector3d& centre) {
    const double distance = DistanceFrom(source, centre);
    const double reach = target.extent.radius / distance;
    if (!(reach < 1)) {
        return {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity()};
    }
    // The n-th term of a unit charge's field is at most (n + 1) |y|^n / R^(n + 2); over the source R^-8 sums to no more
    // than over all of a plane outside of a ball of that distance. The rule's points have the same bound as the face.
    double power = target.extent.charge / target.density;
    for (int i = 0; i < missedOrder; ++i) {
        power *= target.extent.spread / distance;
    }
    const double rest = 1 / (1 - reach);
    const double series = (missedOrder + 1 + reach * rest) * rest;
    const double strength = std::min(source.area / (distance * distance), pi / 3);
    // Of a far field the closed form is the small sum of what the edges contribute.
    const double edges = static_cast<double>(source.edges.size()) * source.radius / distance;
    const double lost = fieldRounding * edges * target.extent.charge / target.density;
    const double force = partOfFieldBound * power * strength * series + lost;
    // As above with one order less of the field and one more of the arm, where the plane gives 2 pi / 5.
    return {force, 1.2 * distance * force};
}

Eigen::Vector3d ChargeField(const ChargedFace& face, const Eigen::Vector3d& x) {
    const Eigen::Vector3d uniform = ChargeField(face.polygon, x);
    if (face.IsUniform()) {
        return face.charge * uniform;
    }
    return face.ChargeAt(x) * uniform - IntegralsAt(face.polygon, x, face.gradient).tension;
}

Wrench PointWrench(const ChargedFace& source, const std::vector<WeightedPoint>& target) {
    Wrench wrench;
    for (const WeightedPoint& point : target) {
        wrench += Wrench::At(point.at, point.weight * ChargeField(source, point.at));
    }
    return wrench;
}

} // namespace vantor::solver
