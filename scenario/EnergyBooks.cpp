#include "scenario/EnergyBooks.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace kinora::scenario {
namespace {

constexpr double tolerableShare = 0.01;
constexpr double tolerableJoules = 1e-12;

} // namespace

void EnergyBooks::Add(const EnergyRow& row) {
    if (!firstPotential) {
        firstPotential = row.potential;
    }
    for (const double account :
         {row.kinetic, row.potential - *firstPotential, row.fieldWork, row.loadWork, row.elementWork, row.dissipated}) {
        throughput = std::max(throughput, std::fabs(account));
    }
    if (std::fabs(row.imbalance) > std::fabs(worstImbalance)) {
        worstImbalance = row.imbalance;
        worstTime = row.time;
    }
}

bool EnergyBooks::Close() const {
    return std::fabs(worstImbalance) <= std::max(tolerableShare * throughput, tolerableJoules);
}

std::string EnergyBooks::Warning(const std::string& joint) const {
    return fmt::format(
        "The energy books of joint \"{}\" do not close: {:.3g} J at {:.6g} s are unexplained, {:.3g} % of "
        "the {:.3g} J that went through. The time step is too long for this motion, or the field's loads "
        "are not exact enough: halve \"solver.step\" until the figure falls.",
        joint, worstImbalance, worstTime, 100.0 * std::fabs(worstImbalance) / throughput, throughput);
}

} // namespace kinora::scenario
