#include "host/core/Comparison.h"

#include "host/core/RunFiles.h"
#include "host/core/StatesCsv.h"
#include "scenario/Errors.h"

#include <fmt/format.h>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kinora::host {

using namespace scenario;

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// Of a run of one body, "bob", whose force along z is 10, -20, 40 at 0, 0.1 and 0.2 s.
class ComparisonTest : public testing::Test {
protected:
    void SetUp() override {
        m_scenario.outputFolder = std::filesystem::temp_directory_path() / "kinora-comparison-test";
        std::filesystem::remove_all(m_scenario.outputFolder);
        std::filesystem::create_directories(m_scenario.outputFolder);
        m_scenario.projectFile = "run.vantor";
        m_scenario.bodies = {Body()};
        m_scenario.bodies[0].name = "bob";
        m_scenario.stepping = {0.1, 2};
    }

    std::vector<ComparedQuantity> CompareWith(const std::string& expected) {
        const ExpectedStates read = Read(expected);
        std::ofstream states(*FilesOf(m_scenario).csv, std::ios::binary);
        states << fmt::format("{}\n0,0,0,0,0,0,0,10\n1,0.1,0,0,0,0,0,-20\n2,0.2,0,0,0,0,0,40\n",
                              fmt::join(StateHeads(m_scenario), ","));
        states.close();
        return Compare(m_scenario, read);
    }

    ExpectedStates Read(const std::string& expected) {
        const std::filesystem::path file = m_scenario.outputFolder / "expected.csv";
        std::ofstream(file, std::ios::binary) << expected;
        return ReadExpected(file, m_scenario);
    }

    std::string Refusal(const std::string& expected) {
        try {
            CompareWith(expected);
        } catch (const programs::ProgramError& error) {
            return error.what();
        }
        return "no error";
    }

    Scenario m_scenario;
};

TEST_F(ComparisonTest, GivesDeviationsAsSharesOfTheLargestValue) {
    const auto compared = CompareWith("Time [s],bob.Force_z [N]\r\n0,10\r\n0.1,-21\r\n0.2,50\r\n");
    ASSERT_EQ(compared.size(), 1u);
    EXPECT_EQ(compared[0].head, "bob.Force_z [N]");
    EXPECT_THAT(compared[0].deviations, ElementsAre(0.0, 2.0, -20.0));
    EXPECT_EQ(compared[0].Worst(), 20.0);
}

TEST_F(ComparisonTest, ComparesWhatIsThere) {
    // A mark of UTF-8, no unit, a time between two steps, empty cells.
    const auto compared = CompareWith("\xEF\xBB\xBFTime,bob.Force_x,bob.Force_z\n0,1,\n0.05,,-5\n0.2,1,40\n");
    ASSERT_EQ(compared.size(), 2u);
    EXPECT_THAT(compared[0].times, ElementsAre(0.0, 0.2));
    EXPECT_THAT(compared[0].deviations, ElementsAre(-100.0, -100.0));
    EXPECT_THAT(compared[1].times, ElementsAre(0.05, 0.2));
    EXPECT_THAT(compared[1].actual, ElementsAre(-5.0, 40.0));
    EXPECT_EQ(compared[1].Worst(), 0.0);
}

TEST_F(ComparisonTest, NeedsAFileOfStates) {
    Read("Time,bob.Force_z\n0,1\n");
    EXPECT_EQ(FilesOf(m_scenario).csv, m_scenario.outputFolder / "run.states.csv");
}

TEST_F(ComparisonTest, SaysWhatIsWrongAndWhere) {
    EXPECT_THAT(Refusal(""), HasSubstr("expected.csv:1: the first line must be \"Time [s]\""));
    EXPECT_THAT(Refusal("Time,bob.Force_z\n"), HasSubstr("no line of values"));
    EXPECT_THAT(Refusal("Time,bob.Forcez\n0,1\n"),
                HasSubstr("expected.csv:1: the states of this scenario have no column \"bob.Forcez\". Did you mean "
                          "\"bob.Force_z\"?"));
    EXPECT_THAT(Refusal("Time,bob.Force_z [kN]\n0,1\n"), HasSubstr("is compared in N, not in kN"));
    EXPECT_THAT(Refusal("Time,bob.Force_z\n0,1\n0.1,many\n"), HasSubstr("expected.csv:3: \"many\" is no number"));
    EXPECT_THAT(Refusal("Time,bob.Force_z\n0,1,2\n"), HasSubstr("expected.csv:2: 3 cells, but the first line has 2"));
    EXPECT_THAT(Refusal("Time,bob.Force_z\n0.1,1\n0.1,2\n"), HasSubstr("later than that of the line before"));
    EXPECT_THAT(Refusal("Time,bob.Force_z\n0,0\n0.1,\n"), HasSubstr("zero or empty throughout"));
    EXPECT_THAT(Refusal("Time,bob.Force_z\n0,1\n0.3,1\n"), HasSubstr("up to 0.3 s, the run ends at 0.2 s"));
}

TEST_F(ComparisonTest, IsATable) {
    EXPECT_EQ(ComparisonTable(CompareWith("Time,bob.Force_z\n0,10\n0.2,50\n"), 0.5, 40),
              "bob.Force_z [N]\n"
              "    time s       simulated       expected   deviation %\n"
              "         0              10             10             0\n"
              "       0.2              40             50           -20\n"
              "largest deviation 20 % of the largest value, allowed 0.5 %\n");
}

} // namespace
} // namespace kinora::host
