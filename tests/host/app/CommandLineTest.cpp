#include "host/app/CommandLine.h"

#include "scenario/Errors.h"

#include <gtest/gtest.h>

namespace kinora::host {
namespace {

TEST(CommandLine, TakesAScenarioAlone) {
    const CommandLine line = ReadCommandLine({"run.json"});
    EXPECT_EQ(line.scenarioFile, "run.json");
    EXPECT_EQ(line.talk, Talk::Normal);
    EXPECT_EQ(line.stepLimit, -1);
    EXPECT_FALSE(line.resume || line.overwrite || line.dryRun);
}

TEST(CommandLine, TakesEveryOption) {
    const CommandLine line =
        ReadCommandLine({"--out", "there", "--desktop", "Simulator", "--csv", "states.csv", "--overwrite", "--dry-run",
                         "--report", "--steps", "7", "-v", "/path/run.json"});
    EXPECT_EQ(line.scenarioFile, "/path/run.json");
    EXPECT_EQ(line.outputFolder, "there");
    EXPECT_EQ(line.desktopVersion, "Simulator");
    EXPECT_EQ(line.csvFile, "states.csv");
    EXPECT_TRUE(line.overwrite && line.dryRun && line.report);
    EXPECT_EQ(line.stepLimit, 7);
    EXPECT_EQ(line.talk, Talk::Verbose);
}

TEST(CommandLine, TakesValuesFromOutsideInTheirOrder) {
    const CommandLine line = ReadCommandLine({"--set", "gap=5*mm", "run.json", "--set", "joints.0.bodies=[\"a\"]",
                                              "--parameters", "inputs.json", "--result", "there/result.json"});
    EXPECT_EQ(line.scenarioFile, "run.json");
    EXPECT_EQ(line.set, (std::vector<std::string>{"gap=5*mm", "joints.0.bodies=[\"a\"]"}));
    EXPECT_EQ(line.parametersFile, "inputs.json");
    EXPECT_EQ(line.resultFile, "there/result.json");
}

TEST(CommandLine, PrintsTheSchemaWithoutAScenario) {
    EXPECT_TRUE(ReadCommandLine({"--print-schema"}).printSchema);
    EXPECT_TRUE(ReadCommandLine({"run.json", "--print-parameters"}).printParameters);
    EXPECT_THROW(ReadCommandLine({"--print-parameters"}), scenario::InputError);
    EXPECT_THROW(ReadCommandLine({"run.json", "--print-parameters", "--print-schema"}), scenario::InputError);
}

TEST(CommandLine, MakesProjectsWithoutAScenario) {
    const CommandLine line = ReadCommandLine({"--new", "folder", "--template", "spring"});
    EXPECT_EQ(line.newFolder, "folder");
    EXPECT_EQ(line.templateName, "spring");
    EXPECT_EQ(ReadCommandLine({"part.STL"}).scenarioFile, "part.STL");
    EXPECT_EQ(ReadCommandLine({"part.obj", "--new", "folder"}).newFolder, "folder");
}

TEST(CommandLine, RefusesWhatMakesNoProject) {
    EXPECT_THROW(ReadCommandLine({"--template", "spring"}), scenario::InputError);
    EXPECT_THROW(ReadCommandLine({"run.json", "--template", "spring"}), scenario::InputError);
    EXPECT_THROW(ReadCommandLine({"run.json", "--new", "folder"}), scenario::InputError);
    EXPECT_THROW(ReadCommandLine({"--new", ""}), scenario::InputError);
    EXPECT_THROW(ReadCommandLine({"--new", "folder", "--out", "there"}), scenario::InputError);
    EXPECT_THROW(ReadCommandLine({"part.obj", "--report"}), scenario::InputError);
    EXPECT_THROW(ReadCommandLine({"part.obj", "--new", "folder", "--template", "spring"}), scenario::InputError);
}

TEST(CommandLine, GivesHelpWithoutAScenario) {
    EXPECT_NE(ReadCommandLine({"--help"}).helpText.find("--resume"), std::string::npos);
}

TEST(CommandLine, RefusesWhatItDoesNotKnow) {
    EXPECT_THROW(ReadCommandLine({}), scenario::InputError);
    EXPECT_THROW(ReadCommandLine({"run.json", "--fast"}), scenario::InputError);
    EXPECT_THROW(ReadCommandLine({"run.json", "--steps", "0"}), scenario::InputError);
    EXPECT_THROW(ReadCommandLine({"run.json", "--resume", "--overwrite"}), scenario::InputError);
    EXPECT_THROW(ReadCommandLine({"run.json", "-q", "-v"}), scenario::InputError);
}

} // namespace
} // namespace kinora::host
