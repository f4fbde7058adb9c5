// Every example runs against the simulator in its own process and gives what independent code says
// (scripts/make-examples computes the expected files).
#include "tests/endtoend/Programs.h"

#include <gtest/gtest.h>

namespace endtoend {
namespace {

struct Example {
    /// Scenario below the examples' folder, without extension.
    const char* scenario;
    /// The file of the host's states.
    const char* states;
    /// The column that is compared.
    const char* column;
    /// Allowed deviation as a share of the column's largest value. Forces are bound by the solver's own error; the
    /// moving examples by the time step, whose share of the phase is (omega h)^2 / 24.
    double tolerance;
};

void PrintTo(const Example& example, std::ostream* stream) {
    *stream << example.scenario;
}

class ExampleRun : public testing::TestWithParam<Example> {};

TEST_P(ExampleRun, GivesTheExpectedResult) {
    const Example& example = GetParam();
    const ScratchFolder folder;
    const std::filesystem::path scenario = Examples() / (std::string(example.scenario) + ".json");
    const Outcome outcome = RunHost({scenario.u8string(), "--out", folder.Path().u8string(), "--quiet"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.output;

    const std::filesystem::path expectedFile = Examples() / (std::string(example.scenario) + ".expected.csv");
    const std::vector<double> expected = Column(expectedFile, example.column);
    const std::vector<double> actual = Column(folder / example.states, example.column);
    EXPECT_EQ(Column(folder / example.states, "Time [s]").size(), expected.size());
    ExpectNear(actual, expected, example.tolerance);
}

INSTANTIATE_TEST_SUITE_P(
    All, ExampleRun,
    testing::Values(Example{"cube-magnets/scenario", "states.csv", "upper.Force_z [N]", 1e-4},
                    Example{"magnetic-spring/scenario", "states.csv", "carriage.Coordinate [m]", 0.02},
                    Example{"pendulum/scenario", "states.csv", "hinge.Coordinate [rad]", 0.02},
                    Example{"tilted-magnets/scenario", "states.csv", "right.Torque_z [mN m]", 1e-4},
                    Example{"levitating-top/hovering", "hovering.states.csv", "flight.Displacement y [m]", 0.03},
                    Example{"levitating-top/falling", "falling.states.csv", "flight.Displacement y [m]", 0.01},
                    Example{"radial-bearing/settling", "settling.states.csv", "shaft.Displacement y [m]", 0.01},
                    Example{"axial-coupling/torque", "torque.states.csv", "driven.Torque_x [mN m]", 1e-3},
                    Example{"axial-coupling/following", "following.states.csv", "driven_hinge.Coordinate [rad]", 0.002},
                    Example{"axial-coupling/slipping", "slipping.states.csv", "driven_hinge.Coordinate [rad]", 0.02}));

} // namespace
} // namespace endtoend
