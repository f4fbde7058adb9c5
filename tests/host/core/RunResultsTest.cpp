#include "host/core/RunResults.h"

#include "host/core/RunFiles.h"
#include "host/core/RunJson.h"
#include "host/core/StatesCsv.h"
#include "scenario/Errors.h"
#include "scenario/Text.h"

#include <fmt/format.h>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace kinora::host {

using namespace scenario;

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

/// Of a run of one body, "bob", five steps of 0.1 s.
class RunResultsTest : public testing::Test {
protected:
    void SetUp() override {
        m_scenario.outputFolder = std::filesystem::temp_directory_path() / "kinora-run-results-test";
        std::filesystem::remove_all(m_scenario.outputFolder);
        m_scenario.projectFile = "run.vantor";
        m_scenario.bodies = {Body()};
        m_scenario.bodies[0].name = "bob";
        m_scenario.stepping = {0.1, 4};
        std::filesystem::create_directories(FilesOf(m_scenario).reportsFolder);
    }

    void Want(const std::string& name, const std::string& column, Take take, double time = 0.0) {
        m_scenario.results.push_back({name, column, take, time, {}});
    }

    /// The states of a run in which bob's force along z is as given, and that along y unknown.
    void WriteStates(const std::vector<double>& forces) const {
        std::ofstream file(*FilesOf(m_scenario).csv, std::ios::binary);
        file << fmt::format("{}\n", fmt::join(StateHeads(m_scenario), ","));
        for (std::size_t i = 0; i < forces.size(); ++i) {
            file << fmt::format("{},{},0,0,0,0,,{},0,0,{}\n", i, 0.1 * static_cast<double>(i), forces[i], 10 * i);
        }
    }

    std::vector<double> Values() const {
        std::vector<double> values;
        for (const RunResult& result : TakeResults(m_scenario)) {
            values.push_back(result.value.value_or(-999.0));
        }
        return values;
    }

    std::string Refusal() {
        try {
            PrepareResults(m_scenario);
        } catch (const InputError& error) {
            return error.what();
        }
        return "no error";
    }

    Scenario m_scenario;
};

TEST_F(RunResultsTest, TakeTheNumbersOfAColumn) {
    Want("last", "bob.Force_z", Take::Last);
    Want("least", "bob.Force_z [N]", Take::Least);
    Want("greatest", "bob.Force_z", Take::Greatest);
    Want("mean", "bob.Force_z", Take::Mean);
    Want("between", "bob.Force_z", Take::At, 0.15);
    Want("onStep", "bob.Force_z", Take::At, 0.2);
    Want("end", "bob.Force_z", Take::At, 0.4);
    Want("when", "Time", Take::Last);
    PrepareResults(m_scenario);
    WriteStates({2.0, -7.0, 5.0, 11.0, 4.0});
    EXPECT_THAT(Values(), ElementsAre(4.0, -7.0, 11.0, 3.0, testing::DoubleNear(-1.0, 1e-12), 5.0, 4.0, 0.4));
}

TEST_F(RunResultsTest, AreMissingWhereTheColumnHasNoNumber) {
    Want("unknown", "bob.Force_y", Take::Greatest);
    Want("last", "bob.Force_z", Take::Last);
    PrepareResults(m_scenario);
    WriteStates({1.0, std::numeric_limits<double>::quiet_NaN()});
    EXPECT_THAT(Values(), ElementsAre(-999.0, -999.0));
    const auto document = nlohmann::json::parse([&] {
        m_scenario.resultFile = m_scenario.outputFolder / "result.json";
        RunFacts facts;
        facts.scenarioFile = "scenario.json";
        return ResultJson(m_scenario, facts, TakeResults(m_scenario));
    }());
    EXPECT_TRUE(document["results"]["unknown"].is_null());
}

TEST_F(RunResultsTest, OfTheStatesHaveAFileForThem) {
    Want("force", "bob.Force_z", Take::Last);
    PrepareResults(m_scenario);
    EXPECT_EQ(FilesOf(m_scenario).csv, m_scenario.outputFolder / "run.states.csv");
    m_scenario.csvFile = "mine.csv";
    PrepareResults(m_scenario);
    EXPECT_EQ(m_scenario.csvFile, "mine.csv");
}

TEST_F(RunResultsTest, ComeFromTheCouplingLogToo) {
    Want("x", "bob_X", Take::Last);
    Want("pull", "Force_bob_Z", Take::Least);
    Want("torque", "Torque_bob_Y", Take::Greatest);
    Want("turn", "bob_Psi", Take::Last);
    Want("end", "SimTime", Take::Greatest);
    PrepareResults(m_scenario);
    EXPECT_FALSE(m_scenario.csvFile) << "the log alone will do";
    std::ofstream(FilesOf(m_scenario).couplingLog, std::ios::binary)
        << "Step,SimTime,bob_X,bob_Y,bob_Z,bob_Phi,bob_Theta,bob_Psi,Force_bob_X,Force_bob_Y,Force_bob_Z,Torque_bob_X,"
           "Torque_bob_Y,Torque_bob_Z\r\n0,0,1,2,3,4,5,6,7,8,9,10,11,12\r\n1,0.1,21,22,23,24,25,26,27,28,-29,30,31,"
           "32\r\n";
    EXPECT_THAT(Values(), ElementsAre(21.0, -29.0, 31.0, 26.0, 0.1));
    std::vector<std::string> units;
    for (const RunResult& result : ResultsToCome(m_scenario)) {
        units.push_back(result.unit);
    }
    EXPECT_THAT(units, ElementsAre("m", "N", "mN m", "rad", "s"));
}

TEST_F(RunResultsTest, OfAColumnThatWillNotBeThereAreRefused) {
    Want("force", "bob.Forc_z", Take::Last);
    Want("other", "Torque_rob_X", Take::Last);
    EXPECT_EQ(Refusal(),
              "results: \"force\": neither the states nor the coupling log have a column \"bob.Forc_z\". Did you "
              "mean \"bob.Force_z\"?\n"
              "results: \"other\": neither the states nor the coupling log have a column \"Torque_rob_X\". Did you "
              "mean \"Torque_bob_X\"?");
}

TEST_F(RunResultsTest, AFileThatWasChangedIsToldOf) {
    Want("force", "bob.Force_z", Take::Last);
    PrepareResults(m_scenario);
    std::ofstream(*FilesOf(m_scenario).csv) << "Step,Time [s]\n0,0\n";
    EXPECT_THROW(TakeResults(m_scenario), RunError);
}

TEST_F(RunResultsTest, AreWrittenWithWhatLedToThem) {
    Want("pull", "bob.Force_z", Take::Greatest);
    m_scenario.title = "Pull";
    m_scenario.parameters = {{"gap", 0.004, "4*mm", "m", "Between"}};
    m_scenario.resultFile = m_scenario.outputFolder / "result.json";
    PrepareResults(m_scenario);
    WriteStates({1.0, 3.0});
    RunFacts facts;
    facts.scenarioFile = m_scenario.outputFolder / "scenario.json";
    facts.overrides = {{"gap", "4*mm", {}}, {"bodies.bob.mass", "2.5", {}}};
    facts.wallSeconds = 0.25;
    facts.versions = {{"kinora-run", "1.2.3"}};
    facts.reportPage = m_scenario.outputFolder / "run.report.html";
    const auto document = nlohmann::json::parse(ResultJson(m_scenario, facts, TakeResults(m_scenario)));
    EXPECT_EQ(document["status"], "complete");
    EXPECT_THAT(document["scenario"].get<std::string>(), EndsWith("/scenario.json"));
    EXPECT_EQ(document["parameters"], (nlohmann::json{{"gap", 0.004}}));
    EXPECT_EQ(document["set"], (nlohmann::json{{"gap", "4*mm"}, {"bodies.bob.mass", 2.5}}));
    EXPECT_EQ(document["results"], (nlohmann::json{{"pull", 3.0}}));
    EXPECT_EQ(document["units"], (nlohmann::json{{"pull", "N"}}));
    EXPECT_EQ(document["wallSeconds"], 0.25);
    EXPECT_EQ(document["versions"], (nlohmann::json{{"kinora-run", "1.2.3"}}));
    EXPECT_EQ(document["files"], (nlohmann::json{{"project", "run.vantor"},
                                                 {"log", "run.reports/run.coupling.csv"},
                                                 {"states", "run.states.csv"},
                                                 {"report", "run.report.html"}}));
}

TEST_F(RunResultsTest, AreDeclaredForOtherPrograms) {
    Want("pull", "bob.Force_z", Take::At, 0.2);
    m_scenario.parameters = {{"gap", 0.004, "4*mm", "m", {}}};
    const auto document = nlohmann::json::parse(DeclarationsJson(m_scenario));
    EXPECT_EQ(document["parameters"],
              (nlohmann::json{{"gap", {{"value", 0.004}, {"formula", "4*mm"}, {"unit", "m"}}}}));
    EXPECT_EQ(document["results"],
              (nlohmann::json{{"pull", {{"column", "bob.Force_z"}, {"take", "at"}, {"time", 0.2}, {"unit", "N"}}}}));
}

} // namespace
} // namespace kinora::host
