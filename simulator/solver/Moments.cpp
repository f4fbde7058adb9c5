#include "simulator/solver/Moments.h"

#include <algorithm>
#include <cmath>
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
    std::array<double, count> powers;
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

/// One product of a shift: moment `to` gets moment `from` times the scaled power of the offset.
struct ShiftStep {
    unsigned char to, from, power;
};

constexpr std::size_t ShiftStepCount() {
    std::size_t count = 0;
    for (const Powers& to : powersOfMoments) {
        count += static_cast<std::size_t>((to.x + 1) * (to.y + 1) * (to.z + 1));
    }
    return count;
}

std::array<ShiftStep, ShiftStepCount()> ShiftSteps() {
    std::array<ShiftStep, ShiftStepCount()> steps{};
    std::size_t count = 0;
    for (std::size_t to = 0; to < powersOfMoments.size(); ++to) {
        for (std::size_t from = 0; from <= to; ++from) {
            if (powersOfMoments[from].AreBelow(powersOfMoments[to])) {
                steps[count++] = {static_cast<unsigned char>(to), static_cast<unsigned char>(from),
                                  static_cast<unsigned char>(PlaceOf(powersOfMoments[to] - powersOfMoments[from]))};
            }
        }
    }
    return steps;
}

double Factorial(int n) {
    return n < 2 ? 1 : n * Factorial(n - 1);
}

/// The symmetric tensor of a distribution's moments of one order, and its traces; each component where its powers are.
class MomentTensor {
public:
    MomentTensor(const HigherMoments& moments, int order) : m_order(order) {
        for (std::size_t i = MomentCount(order - 1); i < MomentCount(order); ++i) {
            const Powers p = powersOfMoments[i];
            m_components[i] = moments[i] * Factorial(p.x) * Factorial(p.y) * Factorial(p.z);
        }
    }
    double SquaredNorm() const {
        double sum = 0;
        for (std::size_t i = MomentCount(m_order - 1); i < MomentCount(m_order); ++i) {
            const Powers p = powersOfMoments[i];
            const double times = Factorial(m_order) / (Factorial(p.x) * Factorial(p.y) * Factorial(p.z));
            sum += times * m_components[i] * m_components[i];
        }
        return sum;
    }
    void TakeTrace() {
        m_order -= 2;
        for (std::size_t i = MomentCount(m_order - 1); i < MomentCount(m_order); ++i) {
            const Powers p = powersOfMoments[i];
            m_components[i] = m_components[PlaceOf(p + Powers{2, 0, 0})] + m_components[PlaceOf(p + Powers{0, 2, 0})] +
                              m_components[PlaceOf(p + Powers{0, 0, 2})];
        }
    }

private:
    int m_order;
    HigherMoments m_components{};
};

/// Sum over all pairs of charges of q q' |x|^n |x'|^n P_n(cosine of the angle between x and x'), by the powers of P_n.
double SquaredSize(const HigherMoments& moments, int order) {
    MomentTensor tensor(moments, order);
    double sum = 0;
    for (int k = 0; 2 * k <= order; ++k) {
        if (k > 0) {
            tensor.TakeTrace();
        }
        const double coefficient =
            (k % 2 == 0 ? 1 : -1) * Factorial(2 * order - 2 * k) /
            (std::pow(2, order) * Factorial(k) * Factorial(order - k) * Factorial(order - 2 * k));
        sum += coefficient * tensor.SquaredNorm();
    }
    return sum;
}

} // namespace

void AddCharge(Moments& moments, double charge, const Eigen::Vector3d& offset) {
    AddChargeTo(moments, charge, offset);
}

void AddCharge(HigherMoments& moments, double charge, const Eigen::Vector3d& offset) {
    AddChargeTo(moments, charge, offset);
}

void AddShifted(HigherMoments& moments, const HigherMoments& others, const Eigen::Vector3d& offset) {
    static const std::array<ShiftStep, ShiftStepCount()> steps = ShiftSteps();
    const HigherMoments powers = ScaledPowers<MomentCount(highestOrder)>(offset);
    for (const ShiftStep& step : steps) {
        moments[step.to] += others[step.from] * powers[step.power];
    }
}

std::array<double, momentOrder + 3> MultipoleSizes(const HigherMoments& moments) {
    std::array<double, momentOrder + 3> sizes{};
    for (int order = 0; order <= highestOrder; ++order) {
        sizes[static_cast<std::size_t>(order)] = std::sqrt(std::max(0.0, SquaredSize(moments, order)));
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
    std::size_t first = 0;
    for (const std::vector<double>& matrix : m_matrices) {
        std::size_t size = 1;
        while (size * size < matrix.size()) {
            ++size;
        }
        for (std::size_t row = 0; row < size; ++row) {
            for (std::size_t column = 0; column < size; ++column) {
                turned[first + row] += matrix[row * size + column] * moments[first + column];
            }
        }
        first += size;
    }
    return turned;
}

} // namespace vantor::solver
