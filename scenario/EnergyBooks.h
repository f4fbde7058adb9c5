#pragma once

#include <optional>
#include <string>

namespace kinora::scenario {

/// The accounts of a free joint at one time, joules.
struct EnergyRow {
    /// Seconds.
    double time = 0.0;
    double kinetic = 0.0;
    /// Of spring and gravity.
    double potential = 0.0;
    double fieldWork = 0.0;
    double loadWork = 0.0;
    /// Of the springs and bushings that hang on the joint.
    double elementWork = 0.0;
    double dissipated = 0.0;
    /// What the other accounts do not explain.
    double imbalance = 0.0;
};

/// Tells over the rows of a run whether a joint's energy books close: whether what they do not explain stays below a
/// hundredth of the energy that went through.
struct EnergyBooks {
    /// Potential energy of the first row.
    std::optional<double> firstPotential;
    /// The energy that went through: the most that any account has reached, potential energy counted from the first
    /// row.
    double throughput = 0.0;
    /// The largest imbalance, in size, and its time.
    double worstImbalance = 0.0;
    double worstTime = 0.0;

    void Add(const EnergyRow& row);

    /// Energies below a picojoule are rounding, and always close.
    bool Close() const;

    /// One line for people: how far the books are off, when, and the cure.
    std::string Warning(const std::string& joint) const;
};

} // namespace kinora::scenario
