#include "simulator/solver/Moments.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

namespace vantor::solver {
namespace {

constexpr int highestOrder = momentOrder + 2;
constexpr auto powersOfMoments = PowersUpTo<highestOrder>();

/// A scaled power from the one with one power less.
template <std::size_t place, std::size_t count>
double NextPower(const std::array<double, count>& powers, const Eigen::Vector3d& v) {
    constexpr Powers p = powersOfMoments[place];
    if constexpr (p.x > 0) {
        return powers[PlaceOf({p.x - 1, p.y, p.z})] * v.x() * (1.0 / p.x);
    } else if constexpr (p.y > 0) {
        return powers[PlaceOf({0, p.y - 1, p.z})] * v.y() * (1.0 / p.y);
    } else {
        return powers[PlaceOf({0, 0, p.z - 1})] * v.z() * (1.0 / p.z);
    }
}

template <std::size_t count, std::size_t... places>
void SetPowers(std::array<double, count>& powers, const Eigen::Vector3d& v, std::index_sequence<places...> /*places*/) {
    powers[0] = 1;
    ((powers[places + 1] = NextPower<places + 1>(powers, v)), ...);
}

/// x^a y^b z^c / (a! b! c!) for all moments.
template <std::size_t count>
std::array<double, count> ScaledPowers(const Eigen::Vector3d& v) {
    std::array<double, count> powers{};
    SetPowers(powers, v, std::make_index_sequence<count - 1>());
    return powers;
}

template <std::size_t count>
void AddChargeTo(std::array<double, count>& moments, double charge, const Eigen::Vector3d& offset) {
    const std::array<double, count> powers = ScaledPowers<count>(offset);
    for (std::size_t i = 0; i < count; ++i) {
        moments[i] += charge * powers[i];
    }
}

/// One product of a shift along an axis: moment `to` gets moment `from` times the scaled power of the offset.
struct ShiftStep {
    unsigned char to, from, power;
};

constexpr std::size_t ShiftStepCount() {
    std::size_t count = 0;
    for (const Powers& to : powersOfMoments) {
        count += static_cast<std::size_t>(to.x);
    }
    return count;
}

/// The highest powers first, so that what is added to others is still as it was.
template <int axis>
constexpr std::array<ShiftStep, ShiftStepCount()> ShiftSteps() {
    std::array<ShiftStep, ShiftStepCount()> steps{};
    std::size_t count = 0;
    for (std::size_t to = powersOfMoments.size(); to-- > 0;) {
        Powers from = powersOfMoments[to];
        int& left = axis == 0 ? from.x : axis == 1 ? from.y : from.z;
        for (unsigned char power = 1; left > 0; ++power) {
            --left;
            steps[count++] = {static_cast<unsigned char>(to), static_cast<unsigned char>(PlaceOf(from)), power};
        }
    }
    return steps;
}

template <int axis>
void ShiftAlong(HigherMoments& moments, double offset) {
    static constexpr auto steps = ShiftSteps<axis>();
    std::array<double, highestOrder + 1> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i) {
        powers[i] = powers[i - 1] * offset / static_cast<double>(i);
    }
    for (const ShiftStep& step : steps) {
        moments[step.to] += moments[step.from] * powers[step.power];
    }
}

constexpr std::array<double, 2 * highestOrder + 1> Factorials() {
    std::array<double, 2 * highestOrder + 1> factorials{1};
    for (std::size_t i = 1; i < factorials.size(); ++i) {
        factorials[i] = factorials[i - 1] * static_cast<double>(i);
    }
    return factorials;
}

constexpr double Factorial(int n) {
    constexpr auto factorials = Factorials();
    return factorials[static_cast<std::size_t>(n)];
}

/// a! b! c! of all moments.
constexpr HigherMoments FactorialsOfPowers() {
    HigherMoments factorials{};
    for (std::size_t i = 0; i < factorials.size(); ++i) {
        factorials[i] =
            Factorial(powersOfMoments[i].x) * Factorial(powersOfMoments[i].y) * Factorial(powersOfMoments[i].z);
    }
    return factorials;
}

constexpr HigherMoments factorialsOfPowers = FactorialsOfPowers();

constexpr HigherMoments InverseFactorialsOfPowers() {
    HigherMoments inverse{};
    for (std::size_t i = 0; i < inverse.size(); ++i) {
        inverse[i] = 1 / factorialsOfPowers[i];
    }
    return inverse;
}

constexpr HigherMoments inverseFactorialsOfPowers = InverseFactorialsOfPowers();

/// For each place the places of the same powers with two more of x, of y and of z.
constexpr auto TracePlaces() {
    std::array<std::array<unsigned char, 3>, MomentCount(highestOrder - 2)> places{};
    for (std::size_t i = 0; i < places.size(); ++i) {
        const Powers p = powersOfMoments[i];
        places[i] = {static_cast<unsigned char>(PlaceOf(p + Powers{2, 0, 0})),
                     static_cast<unsigned char>(PlaceOf(p + Powers{0, 2, 0})),
                     static_cast<unsigned char>(PlaceOf(p + Powers{0, 0, 2}))};
    }
    return places;
}

/// Coefficients of the Legendre polynomial P_n, of x^n, x^(n-2), ...
constexpr double LegendreCoefficient(int n, int k) {
    return (k % 2 == 0 ? 1 : -1) * Factorial(2 * n - 2 * k) /
           ((1 << n) * Factorial(k) * Factorial(n - k) * Factorial(n - 2 * k));
}

/// Sum over all pairs of charges of q q' |x|^n |x'|^n P_n(cosine of the angle between x and x'): by the powers of P_n
/// the norms of the symmetric tensor of the moments of order n and of its traces.
template <int n>
double SquaredSize(const HigherMoments& moments) {
    static constexpr auto tracePlaces = TracePlaces();
    HigherMoments tensor{};
    for (std::size_t i = MomentCount(n - 1); i < MomentCount(n); ++i) {
        tensor[i] = moments[i] * factorialsOfPowers[i];
    }
    double sum = 0;
    for (int k = 0; 2 * k <= n; ++k) {
        const int order = n - 2 * k;
        double norm = 0;
        for (std::size_t i = MomentCount(order - 1); i < MomentCount(order); ++i) {
            if (k > 0) {
                tensor[i] = tensor[tracePlaces[i][0]] + tensor[tracePlaces[i][1]] + tensor[tracePlaces[i][2]];
            }
            norm += tensor[i] * tensor[i] * inverseFactorialsOfPowers[i];
        }
        sum += LegendreCoefficient(n, k) * Factorial(order) * norm;
    }
    return sum;
}

template <int... orders>
std::array<double, highestOrder + 1> SquaredSizes(const HigherMoments& moments,
                                                  std::integer_sequence<int, orders...> /*orders*/) {
    return {SquaredSize<orders>(moments)...};
}

} // namespace

void AddCharge(Moments& moments, double charge, const Eigen::Vector3d& offset) {
    AddChargeTo(moments, charge, offset);
}

void AddCharge(HigherMoments& moments, double charge, const Eigen::Vector3d& offset) {
    AddChargeTo(moments, charge, offset);
}

void AddShifted(HigherMoments& moments, const HigherMoments& others, const Eigen::Vector3d& offset) {
    HigherMoments shifted = others;
    ShiftAlong<0>(shifted, offset.x());
    ShiftAlong<1>(shifted, offset.y());
    ShiftAlong<2>(shifted, offset.z());
    std::transform(moments.begin(), moments.end(), shifted.begin(), moments.begin(), std::plus<>());
}

std::array<double, momentOrder + 3> MultipoleSizes(const HigherMoments& moments) {
    std::array<double, momentOrder + 3> sizes =
        SquaredSizes(moments, std::make_integer_sequence<int, highestOrder + 1>());
    for (double& size : sizes) {
        size = std::sqrt(std::max(0.0, size));
    }
    return sizes;
}

MomentRotation::MomentRotation(const Eigen::Matrix3d& rotation) {
    // The moments are the coefficients of sum q exp(k.x), so those of the turned charges are the coefficients of the
    // same polynomial in rotation^T k; column by column, each power of a turned component from the power below.
    m_matrices[0] = {1};
    for (int order = 1; order <= momentOrder; ++order) {
        const std::size_t first = MomentCount(order - 1), size = MomentCount(order) - first;
        const std::size_t firstBelow = MomentCount(order - 2), sizeBelow = first - firstBelow;
        const std::vector<double>& below = m_matrices[static_cast<std::size_t>(order) - 1];
        std::vector<double>& matrix = m_matrices[static_cast<std::size_t>(order)];
        matrix.assign(size * size, 0);
        for (std::size_t column = 0; column < size; ++column) {
            const Powers p = powersOfMoments[first + column];
            const int axis = p.x > 0 ? 0 : p.y > 0 ? 1 : 2;
            const Powers lessOne = p - Powers{axis == 0, axis == 1, axis == 2};
            const std::size_t columnBelow = PlaceOf(lessOne) - firstBelow;
            for (std::size_t row = 0; row < sizeBelow; ++row) {
                const Powers q = powersOfMoments[firstBelow + row];
                for (int k = 0; k < 3; ++k) {
                    const std::size_t to = PlaceOf(q + Powers{k == 0, k == 1, k == 2}) - first;
                    matrix[to * size + column] += rotation(k, axis) * below[row * sizeBelow + columnBelow];
                }
            }
        }
    }
}

Moments MomentRotation::operator()(const Moments& moments) const {
    Moments turned{};
    for (int order = 0; order <= momentOrder; ++order) {
        const std::vector<double>& matrix = m_matrices[static_cast<std::size_t>(order)];
        const std::size_t first = MomentCount(order - 1), size = MomentCount(order) - first;
        for (std::size_t row = 0; row < size; ++row) {
            for (std::size_t column = 0; column < size; ++column) {
                turned[first + row] += matrix[row * size + column] * moments[first + column];
            }
        }
    }
    return turned;
}

} // namespace vantor::solver
