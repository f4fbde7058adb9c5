// A run in the folder of an earlier one.
#include "tests/endtoend/CubeMagnets.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace endtoend {
namespace {

using SecondRun = CubeMagnets;

TEST_F(SecondRun, RefusesToReplaceAProjectUnlessToldTo) {
    Replace(", \"overwrite\": true", "");
    EXPECT_EQ(Run({"--steps", "2", "-q"}).exitCode, 1);
    const Outcome again = Run({"-q"});
    EXPECT_EQ(again.exitCode, 2);
    EXPECT_THAT(again.output, testing::HasSubstr("--overwrite replaces it"));
    EXPECT_EQ(Run({"-q", "--overwrite", "--steps", "2"}).exitCode, 1);
}

TEST(ResumedRun, GoesOnWhereTheInterruptedOneStopped) {
    const ScratchFolder whole;
    const ScratchFolder parts;
    const std::string spring = (Examples() / "magnetic-spring" / "scenario.json").u8string();
    ASSERT_EQ(RunHost({spring, "--out", whole.Path().u8string(), "-q"}).exitCode, 0);
    const Outcome first = RunHost({spring, "--out", parts.Path().u8string(), "--steps", "30"});
    EXPECT_EQ(first.exitCode, 1);
    EXPECT_THAT(first.output, testing::HasSubstr("--resume goes on with it"));
    const Outcome second = RunHost({spring, "--out", parts.Path().u8string(), "--resume"});
    ASSERT_EQ(second.exitCode, 0) << second.output;
    EXPECT_THAT(second.output, testing::HasSubstr("step 30/80"));
    EXPECT_EQ(Content(whole / "states.csv"), Content(parts / "states.csv"));
    // The log goes on as well: one header, every time once.
    const auto log = parts / "magnetic-spring.reports/magnetic-spring.coupling.csv";
    EXPECT_EQ(Column(log, "SimTime"),
              Column(whole / "magnetic-spring.reports/magnetic-spring.coupling.csv", "SimTime"));
}

} // namespace
} // namespace endtoend
