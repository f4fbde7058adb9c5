#pragma once

#include "scenario/Scenario.h"

#include <filesystem>
#include <string>
#include <vector>

namespace kinora::host {

/// What a run's states should be, of measurements or closed forms: a column of times and one for each quantity.
struct ExpectedStates {
    /// A quantity; where nothing is expected, its value is NaN.
    struct Quantity {
        /// As the states have it: "rotor.Torque_x [mN m]".
        std::string head;
        std::vector<double> values;
    };

    std::filesystem::path file;
    /// Seconds, ascending.
    std::vector<double> times;
    std::vector<Quantity> quantities;
};

/// A quantity of a run beside what was expected of it, time by time.
struct ComparedQuantity {
    std::string head;
    std::vector<double> times;
    std::vector<double> actual;
    std::vector<double> expected;
    /// Of the largest expected value, percent.
    std::vector<double> deviations;

    /// The largest deviation without its sign; infinite when a value of the run is no number.
    double Worst() const;
};

/// Reads comma-separated values: a head line with "Time [s]" and heads of the host's states, with or without unit, and
/// a line for each time. Cells may be empty. Sees to it that a run of the scenario writes these states.
/// @throws InputError  what is wrong in the file, with its line, or what the states lack
ExpectedStates ReadExpected(const std::filesystem::path& file, scenario::Scenario& scenario);

/// Compares a complete run, from the states that it has written; between two steps on the straight line.
/// @throws RunError  the run does not reach the times, or its states are not as it has written them
std::vector<ComparedQuantity> Compare(const scenario::Scenario& scenario, const ExpectedStates& expected);

/// Both side by side, and the largest deviation; of many times at most `maxRows` evenly spread ones.
std::string ComparisonTable(const std::vector<ComparedQuantity>& quantities, double tolerancePercent,
                            std::size_t maxRows);

} // namespace kinora::host
