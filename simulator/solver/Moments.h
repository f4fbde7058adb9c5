#pragma once
// Multipole moments of charge distributions, in Cartesian form.
//
// Sources: L. Greengard, V. Rokhlin, "A fast algorithm for particle simulations", Journal of Computational Physics 73
// (1987) 325-348; Z.-H. Duan, R. Krasny, "An adaptive treecode for computing nonbonded potential energy in classical
// molecular systems", Journal of Computational Chemistry 22 (2001) 184-195, for the Cartesian form.
#include <Eigen/Core>
#include <array>
#include <cstddef>
#include <vector>

namespace vantor::solver {

/// Highest order of the moments.
constexpr int momentOrder = 4;

/// Powers of x, y and z in a moment.
struct Powers {
    int x = 0, y = 0, z = 0;

    constexpr int Order() const { return x + y + z; }
    constexpr Powers operator+(const Powers& other) const { return {x + other.x, y + other.y, z + other.z}; }
    constexpr Powers operator-(const Powers& other) const { return {x - other.x, y - other.y, z - other.z}; }
    constexpr bool AreBelow(const Powers& other) const { return x <= other.x && y <= other.y && z <= other.z; }
};

/// Number of moments up to an order.
constexpr std::size_t MomentCount(int order) {
    return static_cast<std::size_t>((order + 1) * (order + 2) * (order + 3) / 6);
}

/// Place of a moment: by order, then by falling powers of x, then of y.
constexpr std::size_t PlaceOf(const Powers& powers) {
    const int notX = powers.y + powers.z;
    return MomentCount(powers.Order() - 1) + static_cast<std::size_t>(notX * (notX + 1) / 2 + powers.z);
}

template <int order>
constexpr std::array<Powers, MomentCount(order)> PowersUpTo() {
    std::array<Powers, MomentCount(order)> list{};
    std::size_t place = 0;
    for (int n = 0; n <= order; ++n) {
        for (int notX = 0; notX <= n; ++notX) {
            for (int z = 0; z <= notX; ++z) {
                list[place++] = {n - notX, notX - z, z};
            }
        }
    }
    return list;
}

/// Sums of charge times x^a y^b z^c / (a! b! c!) about some centre, at PlaceOf({a, b, c}).
template <int order>
using MomentsUpTo = std::array<double, MomentCount(order)>;
using Moments = MomentsUpTo<momentOrder>;
/// What errors are estimated from.
using HigherMoments = MomentsUpTo<momentOrder + 2>;

/// Adds a point charge.
/// @param offset  from the centre
void AddCharge(Moments& moments, double charge, const Eigen::Vector3d& offset);
void AddCharge(HigherMoments& moments, double charge, const Eigen::Vector3d& offset);

/// Adds moments that were taken about another centre.
/// @param offset  of that centre from this one
void AddShifted(HigherMoments& moments, const HigherMoments& others, const Eigen::Vector3d& offset);

/// The size of each order's multipole: that of one charge q at distance r is |q| r^order, whatever its direction, and
/// charges of both signs cancel. It is the norm of the coefficients of spherical harmonics in Racah's normalisation.
std::array<double, momentOrder + 3> MultipoleSizes(const HigherMoments& moments);

/// Turns moments with the charges that they are of.
class MomentRotation {
public:
    explicit MomentRotation(const Eigen::Matrix3d& rotation);
    Moments operator()(const Moments& moments) const;

private:
    /// For each order a square matrix, row by row.
    std::array<std::vector<double>, momentOrder + 1> m_matrices;
};

} // namespace vantor::solver
