#pragma once

#include "tests/endtoend/Programs.h"

#include <cmath>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace endtoend {

/// What the smallest hosts print, whatever language they are in: the force between the cube magnets at five distances.
inline void ExpectForcesOfFiveSteps(const Outcome& outcome) {
    EXPECT_EQ(outcome.exitCode, 0);
    const std::vector<std::string> lines = Lines(outcome.output);
    ASSERT_EQ(lines.size(), 5U) << outcome.output;
    const std::vector<double> expected =
        Column(Examples() / "cube-magnets" / "scenario.expected.csv", "upper.Force_z [N]");
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(lines[i].find("z = " + std::to_string(12 + i) + " mm: "), 0U) << lines[i];
        EXPECT_NEAR(std::stod(lines[i].substr(lines[i].find(':') + 1)), expected[i], 1e-4 * std::fabs(expected[0]));
    }
}

} // namespace endtoend
