#include "simulator/solver/ClusterPair.h"

#include <limits>
#include <utility>

namespace vantor::solver {
namespace {

constexpr int derivativeOrder = momentOrder + 1;
constexpr auto powersOfDerivatives = PowersUpTo<derivativeOrder>();
using Derivatives = std::array<double, MomentCount(derivativeOrder)>;

constexpr std::array<double, MomentCount(derivativeOrder)> FactorialsOfDerivatives() {
    std::array<double, MomentCount(derivativeOrder)> factorials{};
    for (std::size_t i = 0; i < factorials.size(); ++i) {
        factorials[i] = 1;
        for (const int power : {powersOfDerivatives[i].x, powersOfDerivatives[i].y, powersOfDerivatives[i].z}) {
            for (int factor = 2; factor <= power; ++factor) {
                factorials[i] *= factor;
            }
        }
    }
    return factorials;
}

/// The product of a component and a derivative with one power less of it; 0 where there is none.
template <std::size_t place, int axis>
double OncePart(const Eigen::Vector3d& r, const Derivatives& d) {
    constexpr Powers p = powersOfDerivatives[place];
    if constexpr ((axis == 0 ? p.x : axis == 1 ? p.y : p.z) > 0) {
        return r[axis] * d[PlaceOf(p - Powers{axis == 0, axis == 1, axis == 2})];
    }
    return 0;
}

/// A derivative with two powers less of a component; 0 where there is none.
template <std::size_t place, int axis>
double TwicePart(const Derivatives& d) {
    constexpr Powers p = powersOfDerivatives[place];
    if constexpr ((axis == 0 ? p.x : axis == 1 ? p.y : p.z) > 1) {
        return d[PlaceOf(p - Powers{2 * (axis == 0), 2 * (axis == 1), 2 * (axis == 2)})];
    }
    return 0;
}

/// Taylor coefficients of 1/|r| follow from each other (Duan and Krasny, 2001, equation 18).
template <std::size_t place>
double NextCoefficient(const Eigen::Vector3d& r, double inverseSquare, const Derivatives& d) {
    constexpr double n = powersOfDerivatives[place].Order();
    const double once = OncePart<place, 0>(r, d) + OncePart<place, 1>(r, d) + OncePart<place, 2>(r, d);
    const double twice = TwicePart<place, 0>(d) + TwicePart<place, 1>(d) + TwicePart<place, 2>(d);
    return -inverseSquare * ((2 - 1 / n) * once + (1 - 1 / n) * twice);
}

/// Which numbers meet is known when this is compiled; written out like this it takes a fifth of the time of loops.
template <std::size_t... places>
Derivatives DerivativesOfInverse(const Eigen::Vector3d& r, std::index_sequence<places...> /*places*/) {
    constexpr auto factorials = FactorialsOfDerivatives();
    const double inverseSquare = 1 / r.squaredNorm();
    Derivatives d;
    d[0] = std::sqrt(inverseSquare);
    ((d[places + 1] = NextCoefficient<places + 1>(r, inverseSquare, d)), ...);
    ((d[places + 1] *= factorials[places + 1]), ...);
    return d;
}

/// Sum over moments, from one on, of the moment times the derivative with the powers of both the moment and `place`.
template <std::size_t place, std::size_t from, std::size_t... moments>
double Contraction(const Moments& source, const Derivatives& d, std::index_sequence<moments...> /*moments*/) {
    return (0.0 + ... +
            (source[from + moments] * d[PlaceOf(powersOfDerivatives[place] + powersOfDerivatives[from + moments])]));
}

/// Derivatives, from the first on, of the source's potential at the target's centre, with those moments that leave all
/// of the load on the target of one order.
class PotentialDerivatives {
public:
    Derivatives forForce{}, forTorque{};

    PotentialDerivatives(const Moments& source, const Eigen::Vector3d& offset)
        : PotentialDerivatives(Alternating(source), offset,
                               std::make_index_sequence<MomentCount(derivativeOrder) - 1>()) {}

private:
    template <std::size_t... places>
    PotentialDerivatives(const Moments& source, const Eigen::Vector3d& offset,
                         std::index_sequence<places...> placesButFirst) {
        const Derivatives inverse = DerivativesOfInverse(offset, placesButFirst);
        (Set<places + 1>(source, inverse), ...);
    }
    template <std::size_t place>
    void Set(const Moments& source, const Derivatives& inverse) {
        constexpr int order = powersOfDerivatives[place].Order();
        constexpr std::size_t lower = MomentCount(momentOrder - order), all = MomentCount(derivativeOrder - order);
        forTorque[place] = Contraction<place, 0>(source, inverse, std::make_index_sequence<lower>());
        forForce[place] =
            forTorque[place] + Contraction<place, lower>(source, inverse, std::make_index_sequence<all - lower>());
    }
    static Moments Alternating(Moments moments) {
        for (int order = 1; order <= momentOrder; order += 2) {
            for (std::size_t i = MomentCount(order - 1); i < MomentCount(order); ++i) {
                moments[i] = -moments[i];
            }
        }
        return moments;
    }
};

/// The places of a moment with one more power of x, y and z.
struct Neighbours {
    std::array<unsigned char, 3> above;
};

constexpr std::array<Neighbours, MomentCount(momentOrder)> NeighboursOfMoments() {
    std::array<Neighbours, MomentCount(momentOrder)> neighbours{};
    for (std::size_t i = 0; i < neighbours.size(); ++i) {
        const Powers p = powersOfDerivatives[i];
        neighbours[i] = {{static_cast<unsigned char>(PlaceOf(p + Powers{1, 0, 0})),
                          static_cast<unsigned char>(PlaceOf(p + Powers{0, 1, 0})),
                          static_cast<unsigned char>(PlaceOf(p + Powers{0, 0, 1}))}};
    }
    return neighbours;
}

constexpr int firstMissed = momentOrder + 1;
/// Part of the bound by the charges' sizes alone that is added for the orders of which no multipoles are known.
constexpr double partOfBound = 0.1;

double Power(double base, int exponent) {
    double power = 1;
    for (int i = 0; i < exponent; ++i) {
        power *= base;
    }
    return power;
}

/// Sum over m of binomial(order, m) times the multipoles of a and b, of orders m and order - m.
/// @param closenessA, closenessB  radii over distance
double OrderBound(const ClusterExtent& a, const ClusterExtent& b, double closenessA, double closenessB, int order) {
    double sum = 0, binomial = 1, powerA = 1;
    std::array<double, momentOrder + 3> powersB{};
    powersB[0] = 1;
    for (int i = 1; i <= order; ++i) {
        powersB[static_cast<std::size_t>(i)] = powersB[static_cast<std::size_t>(i) - 1] * closenessB;
    }
    for (int m = 0; m <= order; ++m) {
        const auto ofA = static_cast<std::size_t>(m), ofB = static_cast<std::size_t>(order - m);
        sum += binomial * static_cast<double>(a.multipoles[ofA]) * powerA * static_cast<double>(b.multipoles[ofB]) *
               powersB[ofB];
        powerA *= closenessA;
        binomial = binomial * (order - m) / (m + 1);
    }
    return sum;
}

} // namespace

ErrorSizes MomentErrors(const ClusterExtent& a, const ClusterExtent& b, double distance) {
    const double reach = (a.radius + b.radius) / distance;
    if (!(reach < 1)) {
        return {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity()};
    }
    const double closenessA = a.radius / distance, closenessB = b.radius / distance, rest = 1 / (1 - reach);
    const double first = OrderBound(a, b, closenessA, closenessB, firstMissed);
    const double second = OrderBound(a, b, closenessA, closenessB, firstMissed + 1);
    const double others = partOfBound * Power((a.spread + b.spread) / distance, firstMissed + 2);
    // The n-th term of the force is n + 1 times that of the potential, over the distance.
    const double n = firstMissed + 1;
    const double series = n * first + (n + 1) * second + (n + 2) * others;
    const double force = a.charge * b.charge / (distance * distance) * series * rest;
    return {force, distance * force};
}

Wrench WrenchOf(const Moments& source, const Moments& target, const Eigen::Vector3d& offset) {
    static constexpr auto neighbours = NeighboursOfMoments();
    const PotentialDerivatives derivatives(source, offset);
    Wrench wrench;
    for (std::size_t i = 0; i < target.size(); ++i) {
        const auto& [x, y, z] = neighbours[i].above;
        const Derivatives& d = derivatives.forForce;
        wrench.force -= target[i] * Eigen::Vector3d(d[x], d[y], d[z]);
    }
    for (std::size_t i = 0; i < MomentCount(momentOrder - 1); ++i) {
        const Powers p = powersOfDerivatives[i];
        const auto& [x, y, z] = neighbours[i].above;
        const Eigen::Vector3d arm((p.x + 1) * target[x], (p.y + 1) * target[y], (p.z + 1) * target[z]);
        const Derivatives& d = derivatives.forTorque;
        wrench.torque -= arm.cross(Eigen::Vector3d(d[x], d[y], d[z]));
    }
    return wrench;
}

} // namespace vantor::solver
