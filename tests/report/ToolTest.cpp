#include "report/tool/Tool.h"

#include "report/core/Report.h"
#include "scenario/EnergyBooks.h"
#include "scenario/Text.h"
#include "tests/report/LogText.h"

#include <algorithm>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kinora::report {
namespace {

using scenario::ExitStatus;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr const char* smallTemplate = "<html><script type=\"application/json\">@KINORA_RUN_DATA@</script></html>";

constexpr const char* scenarioText = R"({
  // Comments are allowed.
  "title": "A <b>bold</b> run",
  "project": { "file": "run.vantor" },
  "geometry": { "file": "magnets.obj", "units": "mm" },
  "bodies": [ { "name": "a", "objects": ["magnet"], "mass": 0.1, "position": [0, 0, "12*mm"] } ],
  "joints": [ { "name": "lift", "type": "slider", "axis": [0, 0, 1], "bodies": ["a"], "free": {} } ],
  "solver": { "step": 0.1, "end": 1 },
  "output": { "csv": "states.csv" }
})";

/// A run's folder as the host leaves it, in a folder whose name is not ASCII.
class Tool : public testing::Test {
protected:
    void SetUp() override {
        m_folder =
            std::filesystem::temp_directory_path() / scenario::PathFromUtf8("kinora-report-t\xC3\xA4st-\xE7\xA3\x81");
        std::filesystem::remove_all(m_folder);
        std::filesystem::create_directories(m_folder / "run.reports");
        m_log = m_folder / "run.reports" / "run.coupling.csv";
        Write(m_log, HeadLine({"a"}) + "\r\n" + StepLine(0, "0") + "\r\n" + StepLine(1, "0.1") + "\r\n");
        Write(m_folder / "template.html", smallTemplate);
        Write(m_folder / "scenario.json", scenarioText);
        Write(m_folder / "magnets.obj", "o magnet\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    }
    void TearDown() override { std::filesystem::remove_all(m_folder); }

    static void Write(const std::filesystem::path& file, const std::string& text) {
        std::ofstream(file, std::ios::binary) << text;
    }

    ExitStatus Run(std::vector<std::string> words, bool withTemplate = true) {
        if (withTemplate) {
            words.insert(words.end(), {"--template", scenario::Utf8FromPath(m_folder / "template.html")});
        }
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const ExitStatus status = RunTool(words);
        m_output = testing::internal::GetCapturedStdout();
        m_errors = testing::internal::GetCapturedStderr();
        return status;
    }

    std::string Log() const { return scenario::Utf8FromPath(m_log); }
    std::string Page() const { return scenario::ReadFile(m_folder / "run.report.html"); }

    std::filesystem::path m_folder, m_log;
    std::string m_output, m_errors;
};

TEST_F(Tool, WritesThePageBesideTheProject) {
    EXPECT_EQ(Run({Log()}), ExitStatus::Done);
    EXPECT_EQ(m_errors.find("error"), std::string::npos);
    EXPECT_THAT(m_output,
                StartsWith("report " + scenario::Utf8FromPath(m_folder / "run.report.html") + " (2 steps, 1 bodies"));
    EXPECT_THAT(Page(), HasSubstr(R"("project":"run")"));
}

TEST_F(Tool, TakesScenarioGeometryAndStates) {
    Write(m_folder / "states.csv", "Step,Time [s],lift.Coordinate [m]\n0,0,0\n1,0.1,0.5\n");
    EXPECT_EQ(Run({Log(), "--scenario", scenario::Utf8FromPath(m_folder / "scenario.json")}), ExitStatus::Done);
    const std::string page = Page();
    EXPECT_THAT(page, HasSubstr(R"("title":"A \u003cb\u003ebold\u003c/b\u003e run")"));
    EXPECT_THAT(page, HasSubstr(R"("scenario":"scenario.json")"));
    EXPECT_THAT(page, HasSubstr(R"("obj":"o magnet\nv 0 0 0)"));
    EXPECT_THAT(page, HasSubstr(R"("series":[{"group":"lift","name":"Coordinate","unit":"m","values":[0.0,0.5]}])"));
}

TEST_F(Tool, TellsOnceWhatTheHostHasToldAlready) {
    Write(m_folder / "states.csv",
          "Step,Time [s],lift.Kinetic [J],lift.Potential [J],lift.Field work [J],lift.Load work [J],"
          "lift.Dissipated [J],lift.Imbalance [J]\n0,0,0,0,0,0,0,0\n1,0.1,2,0,1,0,0,1\n");
    scenario::EnergyBooks books;
    books.Add({0.0});
    books.Add({0.1, 2.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0});
    ReportSources sources;
    sources.log = m_log;
    sources.states = m_folder / "states.csv";
    sources.notices = {{Severity::Warning, books.Warning("lift")}, {Severity::Warning, "Another."}};
    const WrittenReport written = WriteReport(sources, m_folder / "template.html", m_folder / "run.report.html");
    EXPECT_THAT(written.notices[0].text, StartsWith("The energy books of joint \"lift\" do not close: 1 J at 0.1 s"));
    EXPECT_EQ(written.notices[1].text, "Another.");
    EXPECT_EQ(std::count_if(written.notices.begin(), written.notices.end(),
                            [&](const Notice& notice) { return notice.text == books.Warning("lift"); }),
              1);
}

TEST_F(Tool, TakesTheOrientationFromTheHostsStateFile) {
    const auto said = [this](const std::string& state) {
        Write(m_folder / "run.state.json", state);
        EXPECT_EQ(Run({Log()}), ExitStatus::Done);
        const std::string page = Page();
        const std::size_t at = page.find("\"orientation\":");
        return page.substr(at, page.find(',', at) - at);
    };
    EXPECT_EQ(said(R"({"format": 2, "step": 1})"), R"("orientation":"exact")");
    EXPECT_THAT(m_errors, Not(HasSubstr("frame")));
    EXPECT_EQ(said(R"({"step": 1})"), R"("orientation":"direct")");
    EXPECT_THAT(m_errors, HasSubstr("warning: Body \"a\": the desktop's frame is up to"));
    // Neither a state file of a run, nor readable.
    for (const char* other : {R"({"name": "state"})", R"({"format": "new", "step": 1})", "[", "[1]"}) {
        EXPECT_EQ(said(other), R"("orientation":"exact")") << other;
        EXPECT_THAT(m_errors, HasSubstr("note: Body \"a\" is shown in the desktop's frame")) << other;
    }
}

TEST_F(Tool, TakesTheOrientationThatItIsTold) {
    Write(m_folder / "run.state.json", R"({"format": 2, "step": 1})");
    EXPECT_EQ(Run({Log(), "--orientation", "direct"}), ExitStatus::Done);
    EXPECT_THAT(Page(), HasSubstr(R"("orientation":"direct")"));
    EXPECT_THAT(m_errors, HasSubstr("warning: Body \"a\": the desktop's frame is up to"));
    std::filesystem::remove(m_folder / "run.state.json");
    EXPECT_EQ(Run({Log(), "--orientation", "exact"}), ExitStatus::Done);
    EXPECT_THAT(Page(), HasSubstr(R"("orientation":"exact")"));
    EXPECT_EQ(m_errors, "");
    EXPECT_EQ(Run({Log(), "--orientation", "turned"}), ExitStatus::BadInput);
    EXPECT_THAT(m_errors, HasSubstr("--orientation: turned not in {exact,direct}"));
}

TEST_F(Tool, WritesWhereItIsTold) {
    const auto page = m_folder / scenario::PathFromUtf8("s\xC3\xA9ite.html");
    EXPECT_EQ(Run({Log(), "--out", scenario::Utf8FromPath(page)}), ExitStatus::Done);
    EXPECT_TRUE(std::filesystem::exists(page));
}

TEST_F(Tool, WarnsInTheTerminalAndOnThePage) {
    Write(m_log, HeadLine({"a"}) + "\r\n" + StepLine(0, "0") + "\r\n1,0.1,2");
    EXPECT_EQ(Run({Log()}), ExitStatus::Done);
    const std::string text = "The last line (line 3) is cut off after 3 of 14 values and was left out.";
    EXPECT_THAT(m_errors, HasSubstr("warning: " + text));
    EXPECT_THAT(Page(), HasSubstr(text));
}

TEST_F(Tool, WritesAPageForAnEmptyLog) {
    Write(m_log, "");
    EXPECT_EQ(Run({Log()}), ExitStatus::Done);
    EXPECT_THAT(m_errors, HasSubstr("error: The log is empty"));
    EXPECT_THAT(Page(), HasSubstr("The log is empty"));
}

TEST_F(Tool, ReplacesAnEarlierPageOnlyByAWholeOne) {
    EXPECT_EQ(Run({Log()}), ExitStatus::Done);
    const std::string before = Page();
    Write(m_log, "no log\n");
    EXPECT_EQ(Run({Log()}), ExitStatus::BadInput);
    EXPECT_THAT(m_errors, HasSubstr("this is no coupling log"));
    EXPECT_EQ(Page(), before);
}

TEST_F(Tool, NamesAMissingLog) {
    EXPECT_EQ(Run({scenario::Utf8FromPath(m_folder / "none.coupling.csv")}), ExitStatus::BadInput);
    EXPECT_THAT(m_errors, HasSubstr("none.coupling.csv: cannot be read"));
}

TEST_F(Tool, NamesAScenarioThatIsWrong) {
    Write(m_folder / "scenario.json", "{ \"bodies\": 3 }");
    EXPECT_EQ(Run({Log(), "--scenario", scenario::Utf8FromPath(m_folder / "scenario.json")}), ExitStatus::BadInput);
    EXPECT_THAT(m_errors, HasSubstr("scenario.json"));
}

TEST_F(Tool, NamesAFolderThatIsNotThere) {
    EXPECT_EQ(Run({Log(), "--out", scenario::Utf8FromPath(m_folder / "no" / "page.html")}), ExitStatus::Failed);
    EXPECT_THAT(m_errors, HasSubstr("cannot be written"));
}

TEST_F(Tool, RefusesATemplateWithoutOrWithTwoPlaces) {
    for (const char* text : {"<html></html>", "@KINORA_RUN_DATA@ @KINORA_RUN_DATA@"}) {
        Write(m_folder / "template.html", text);
        EXPECT_EQ(Run({Log()}), ExitStatus::BadInput);
        EXPECT_THAT(m_errors, HasSubstr("this is not the template of a report"));
    }
}

TEST_F(Tool, FindsTheInstalledTemplate) {
    EXPECT_EQ(Run({Log()}, false), ExitStatus::Done);
    EXPECT_THAT(Page(), StartsWith("<!doctype html>"));
}

TEST_F(Tool, ExplainsItself) {
    EXPECT_EQ(Run({"--help"}, false), ExitStatus::Done);
    EXPECT_THAT(m_output, HasSubstr("--scenario"));
    EXPECT_EQ(Run({}, false), ExitStatus::BadInput);
    EXPECT_THAT(m_errors, HasSubstr("LOG is required"));
    EXPECT_EQ(Run({Log(), "--colour"}, false), ExitStatus::BadInput);
    EXPECT_THAT(m_errors, HasSubstr("--colour"));
}

TEST(DefaultPageFile, StaysOutOfTheFolderThatTheNextRunEmpties) {
    const std::filesystem::path base = std::filesystem::absolute("out");
    EXPECT_EQ(DefaultPageFile("out/run.reports/run.coupling.csv"), base / "run.report.html");
    EXPECT_EQ(DefaultPageFile("out/copy/run.coupling.csv"), base / "copy" / "run.report.html");
    EXPECT_EQ(DefaultPageFile("out/log.csv"), base / "log.report.html");
}

} // namespace
} // namespace kinora::report
