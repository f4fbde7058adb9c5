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

/// A run that is asked for the greatest force between the magnets.
class RunWithResult : public CubeMagnets {
protected:
    void SetUp() override {
        CubeMagnets::SetUp();
        Replace("\"solver\":", "\"parameters\": {\"steps\": 4}, \"results\": {\"pull\": {\"column\": "
                               "\"upper.Force_z\", \"take\": \"greatest\"}}, \"solver\":");
    }

    Outcome RunFor(const std::string& result, std::vector<std::string> more = {}) {
        more.insert(more.end(), {"--set", "solver.end=steps*0.05", "--result", (m_folder / result).u8string()});
        return Run(more);
    }

    bool IsThere(const std::string& name) const { return std::filesystem::exists(m_folder / name); }
};

TEST_F(RunWithResult, WritesItWhenItIsComplete) {
    EXPECT_EQ(RunFor("result.json", {"--steps", "2"}).exitCode, 1);
    EXPECT_FALSE(IsThere("result.json"));
    ASSERT_EQ(RunFor("result.json", {"--resume"}).exitCode, 0);
    ASSERT_EQ(RunFor("whole.json", {"--overwrite", "--set", "output.folder=whole"}).exitCode, 0);
    const auto results = [&](const std::string& file) {
        const std::string text = Content(m_folder / file);
        return text.substr(text.find("\"results\""), text.find("\"wallSeconds\"") - text.find("\"results\""));
    };
    EXPECT_EQ(results("result.json"), results("whole.json")) << "of the steps before the interruption too";
    EXPECT_THAT(Content(m_folder / "result.json"), testing::HasSubstr("\"steps\": 4"));
}

TEST_F(RunWithResult, LeavesACompleteRunAsItIsAndSaysSo) {
    ASSERT_EQ(RunFor("result.json").exitCode, 0);
    const std::string result = Content(m_folder / "result.json");
    const auto written = std::filesystem::last_write_time(m_folder / "output/cube-magnets.vantor");
    const Outcome again = RunFor("result.json", {"--resume"});
    EXPECT_EQ(again.exitCode, 0);
    EXPECT_THAT(again.output, testing::HasSubstr("The run is complete up to step 4 already: nothing to do"));
    EXPECT_EQ(Content(m_folder / "result.json"), result);
    EXPECT_EQ(std::filesystem::last_write_time(m_folder / "output/cube-magnets.vantor"), written);
}

TEST_F(RunWithResult, ResumedWithAnotherValueIsRefused) {
    ASSERT_EQ(RunFor("result.json").exitCode, 0);
    const Outcome other = RunFor("result.json", {"--resume", "--set", "bodies.0.mass=3"});
    EXPECT_EQ(other.exitCode, 2);
    EXPECT_THAT(other.output, testing::HasSubstr("/mass was 0, is 3"));
    EXPECT_TRUE(IsThere("result.json"));
}

TEST_F(RunWithResult, WritesNothingElsewhere) {
    ASSERT_EQ(RunFor("output/result.json").exitCode, 0);
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(m_folder.Path())) {
        names.push_back(entry.path().filename().u8string());
    }
    EXPECT_THAT(names, testing::UnorderedElementsAre("cube-magnets.obj", "output", "scenario.json"));
}

TEST_F(RunWithResult, FailsWithoutAPlaceForIt) {
    const Outcome outcome = RunFor("missing/result.json");
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.output, testing::HasSubstr("the result file cannot be written"));
    EXPECT_FALSE(IsThere("output"));
}

TEST_F(RunWithResult, PrintsWhatProgramsAsk) {
    const Outcome declared = Run({"--print-parameters", "--set", "steps=7"});
    EXPECT_EQ(declared.exitCode, 0);
    EXPECT_THAT(declared.output, testing::HasSubstr("\"value\": 7.0"));
    EXPECT_THAT(declared.output, testing::HasSubstr("\"unit\": \"N\""));
    const Outcome schema = RunHost({"--print-schema"});
    EXPECT_EQ(schema.exitCode, 0);
    EXPECT_THAT(schema.output, testing::HasSubstr("\"$schema\": \"http://json-schema.org/draft-07/schema#\""));
    EXPECT_FALSE(IsThere("output"));
}

} // namespace
} // namespace endtoend
