#include "host/core/RunFiles.h"

#include "scenario/Errors.h"
#include "scenario/Text.h"

#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kinora::host {
namespace {

using scenario::ReadFile;
using testing::HasSubstr;

class RunFilesTest : public testing::Test {
protected:
    void SetUp() override {
        m_scenario.outputFolder = std::filesystem::temp_directory_path() / "kinora-run-files-test";
        std::filesystem::remove_all(m_scenario.outputFolder);
        std::filesystem::create_directories(m_scenario.outputFolder / "mine.reports");
        m_scenario.projectFile = "mine.vantor";
        m_scenario.geometryFile = m_scenario.outputFolder / "mine.obj";
        Write(m_scenario.geometryFile, "o magnet\n");
        Write(ScenarioFile(), "{}");
    }

    static void Write(const std::filesystem::path& file, const std::string& text) {
        std::ofstream(file, std::ios::binary) << text;
    }

    std::filesystem::path ScenarioFile() const { return m_scenario.outputFolder / "scenario.json"; }

    std::string Refusal(const std::vector<NamedFile>& outputs = {}) const {
        try {
            RequireDistinctFiles(FilesOf(m_scenario),
                                 {{"the scenario", ScenarioFile()}, {"the geometry", m_scenario.geometryFile}},
                                 outputs);
        } catch (const scenario::InputError& error) {
            return error.what();
        }
        return {};
    }

    std::string RefusalOfCsv(const std::filesystem::path& csv) {
        m_scenario.csvFile = csv;
        return Refusal();
    }

    scenario::Scenario m_scenario;
};

TEST_F(RunFilesTest, NoFileOfARunIsOneThatItReads) {
    EXPECT_EQ(RefusalOfCsv("states.csv"), "");
    EXPECT_THAT(RefusalOfCsv("mine.obj"),
                HasSubstr("mine.obj: the states (csv) and the geometry would be the same file"));
    EXPECT_THAT(RefusalOfCsv("scenario.json"), HasSubstr("the states (csv) and the scenario would be"));
    m_scenario.csvFile.reset();
    m_scenario.projectFile = "MINE.obj";
    EXPECT_THAT(Refusal(), HasSubstr("the project and the geometry"));
}

TEST_F(RunFilesTest, NoTwoFilesOfARunAreTheSame) {
    EXPECT_THAT(RefusalOfCsv("mine.vantor"), HasSubstr("the project and the states (csv)"));
    EXPECT_THAT(RefusalOfCsv("Mine.State.json"), HasSubstr("the state file and the states (csv)"));
    EXPECT_THAT(RefusalOfCsv(std::filesystem::u8path("Mine.\u78c1.csv")), "");
    EXPECT_THAT(RefusalOfCsv("kinora-run.lock"), HasSubstr("the states (csv) and the lock"));
    m_scenario.csvFile = "page.html";
    EXPECT_THAT(Refusal({{"the report page", m_scenario.outputFolder / "page.html"}}),
                HasSubstr("the states (csv) and the report page"));
}

TEST_F(RunFilesTest, FilesAreToldByWhatTheyAre) {
    const std::filesystem::path here = m_scenario.outputFolder;
    EXPECT_THAT(RefusalOfCsv(here / "mine.reports" / ".." / "mine.obj"), HasSubstr("and the geometry"));
    EXPECT_THAT(RefusalOfCsv(here / "none" / ".." / "mine.vantor"), HasSubstr("the project and the states"));
    std::error_code error;
    std::filesystem::create_hard_link(here / "mine.obj", here / "other.csv", error);
    ASSERT_FALSE(error) << error.message();
    EXPECT_THAT(RefusalOfCsv("other.csv"), HasSubstr("the states (csv) and the geometry would be the same file"));
}

TEST_F(RunFilesTest, NothingLiesInTheFolderThatIsEmptied) {
    EXPECT_THAT(RefusalOfCsv("mine.reports/states.csv"),
                HasSubstr("the states (csv) lies in the reports folder, which a run empties"));
    m_scenario.csvFile.reset();
    std::filesystem::create_directories(m_scenario.outputFolder / "mine.reports" / "parts");
    m_scenario.geometryFile = m_scenario.outputFolder / "mine.reports" / "parts" / "magnet.obj";
    Write(m_scenario.geometryFile, "o magnet\n");
    EXPECT_THAT(Refusal(), HasSubstr("magnet.obj: the geometry lies in the reports folder"));
}

TEST_F(RunFilesTest, TryingWhatIsWritableChangesNothing) {
    m_scenario.csvFile = "states.csv";
    const RunFiles files = FilesOf(m_scenario);
    Write(files.project, "solved");
    RequireWritableFiles(files, {});
    EXPECT_EQ(ReadFile(files.project), "solved");
    EXPECT_FALSE(std::filesystem::exists(*files.csv));
}

TEST_F(RunFilesTest, CutsToTheSizeThatWasAndToWholeLines) {
    m_scenario.csvFile = "states.csv";
    const RunFiles files = FilesOf(m_scenario);
    Write(files.couplingLog, "Step\r\n0,1\r\n1,2\r\n");
    Write(*files.csv, "Step\n0\n");
    const FileSizes sizes = SizesOf(files);
    EXPECT_TRUE(MissingParts(files, sizes).empty());
    Write(files.couplingLog, "Step\r\n0,1\r\n1,2\r\n2,3\r\n3,");
    Write(*files.csv, "Step\n0");
    EXPECT_THAT(MissingParts(files, sizes),
                testing::ElementsAre(HasSubstr("states.csv: 6 bytes, but the run had written 7")));
    CutFiles(files, sizes);
    EXPECT_EQ(ReadFile(files.couplingLog), "Step\r\n0,1\r\n1,2\r\n");
    EXPECT_EQ(ReadFile(*files.csv), "Step\n");
}

} // namespace
} // namespace kinora::host
