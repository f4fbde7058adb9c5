// Every example runs against the simulator in its own process and gives what independent code says
// (scripts/make-examples computes the expected files).
#include "tests/endtoend/Programs.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace endtoend {
namespace {

struct Example {
    /// Scenario below the examples' folder, without extension.
    const char* scenario;
    /// The file of the host's states.
    const char* states;
    /// The columns that are compared.
    std::vector<const char*> columns;
    /// Allowed deviation as a share of a column's largest value. Forces are bound by the solver's own error; the
    /// moving examples by the time step, whose share of the phase is (omega h)^2 / 24.
    double tolerance;
    /// Whether a single step is too slow where the environment asks for fewer of them.
    bool isLong = false;
};

void PrintTo(const Example& example, std::ostream* stream) {
    *stream << example.scenario;
}

/// The steps of a run, when the environment asks for fewer than the example has (sanitizers are slow); else nothing.
std::optional<std::size_t> StepLimit(std::size_t steps) {
    const char* text = std::getenv("KINORA_EXAMPLE_STEPS");
    const std::size_t limit = text ? std::strtoul(text, nullptr, 10) : steps;
    return limit < steps ? std::optional(limit) : std::nullopt;
}

class ExampleRun : public testing::TestWithParam<Example> {};

TEST_P(ExampleRun, GivesTheExpectedResult) {
    const Example& example = GetParam();
    const ScratchFolder folder;
    const std::filesystem::path scenario = Examples() / (std::string(example.scenario) + ".json");
    const std::filesystem::path expectedFile = Examples() / (std::string(example.scenario) + ".expected.csv");
    const std::optional<std::size_t> limit = StepLimit(Column(expectedFile, "Time [s]").size());
    if (example.isLong && std::getenv("KINORA_EXAMPLE_STEPS")) {
        GTEST_SKIP() << "it is run whole elsewhere";
    }
    std::vector<std::string> words = {scenario.u8string(), "--out", folder.Path().u8string(), "--quiet"};
    if (limit) {
        words.insert(words.end(), {"--steps", std::to_string(*limit)});
    }
    const Outcome outcome = RunHost(words);
    ASSERT_EQ(outcome.exitCode, limit ? 1 : 0) << outcome.output;
    for (const char* column : example.columns) {
        SCOPED_TRACE(column);
        const std::vector<double> expected = Column(expectedFile, column);
        std::vector<double> actual = Column(folder / example.states, column);
        EXPECT_EQ(actual.size(), limit.value_or(expected.size()));
        // What was not run is not judged, but tells the column's largest value.
        actual.insert(actual.end(), expected.begin() + static_cast<std::ptrdiff_t>(actual.size()), expected.end());
        ExpectNear(actual, expected, example.tolerance);
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, ExampleRun,
    testing::Values(
        Example{"cube-magnets/scenario", "states.csv", {"upper.Force_z [N]"}, 1e-4},
        Example{"magnetic-spring/scenario", "states.csv", {"carriage.Coordinate [m]"}, 0.02},
        Example{"pendulum/scenario", "states.csv", {"hinge.Coordinate [rad]"}, 0.02},
        Example{"tilted-magnets/scenario", "states.csv", {"right.Torque_z [mN m]"}, 1e-4},
        Example{"levitating-top/hovering",
                "hovering.states.csv",
                {"flight.Displacement x [m]", "flight.Displacement y [m]", "flight.Displacement z [m]"},
                0.03},
        Example{"levitating-top/falling",
                "falling.states.csv",
                {"flight.Displacement x [m]", "flight.Displacement y [m]", "flight.Displacement z [m]"},
                0.01},
        Example{"radial-bearing/settling",
                "settling.states.csv",
                {"shaft.Displacement x [m]", "shaft.Displacement y [m]", "shaft.Displacement z [m]"},
                0.02},
        Example{"axial-coupling/torque", "torque.states.csv", {"driven.Torque_x [mN m]"}, 1e-3},
        // Expected are yokes of ideal iron; those of steel, whose permeability is 2327, give a little less.
        Example{"axial-coupling/yoked", "yoked.states.csv", {"driven.Torque_x [mN m]"}, 0.002, true},
        Example{"axial-coupling/following", "following.states.csv", {"driven_hinge.Coordinate [rad]"}, 0.002},
        Example{"axial-coupling/slipping", "slipping.states.csv", {"driven_hinge.Coordinate [rad]"}, 0.02}));

} // namespace
} // namespace endtoend
