#include "report/tool/Tool.h"

#include "programs/Print.h"
#include "report/core/Report.h"
#include "report/tool/CommandLine.h"
#include "scenario/ScenarioReader.h"
#include "scenario/Text.h"

#include <fmt/format.h>

namespace kinora::report {
namespace {

using programs::Print;

const char* SeverityName(Severity severity) {
    switch (severity) {
    case Severity::Error:
        return "error";
    case Severity::Warning:
        return "warning";
    case Severity::Info:
        return "note";
    }
    return "note";
}

void WritePage(const CommandLine& arguments) {
    ReportSources sources;
    sources.log = scenario::PathFromUtf8(arguments.logFile);
    sources.generator = "kinora-report " KINORA_VERSION;
    sources.orientation = arguments.orientation;
    scenario::Scenario scenario;
    if (!arguments.scenarioFile.empty()) {
        sources.scenarioFile = scenario::PathFromUtf8(arguments.scenarioFile);
        scenario = scenario::ReadScenario(sources.scenarioFile, {}, scenario::Purpose::Report);
        sources.scenario = &scenario;
        sources.states = FindStates(sources.log, scenario);
    }
    if (!arguments.statesFile.empty()) {
        sources.states = scenario::PathFromUtf8(arguments.statesFile);
    }
    const std::filesystem::path page =
        arguments.pageFile.empty() ? DefaultPageFile(sources.log) : scenario::PathFromUtf8(arguments.pageFile);
    const std::filesystem::path pageTemplate =
        arguments.templateFile.empty() ? FindTemplate() : scenario::PathFromUtf8(arguments.templateFile);
    const WrittenReport written = WriteReport(sources, pageTemplate, page);
    for (const Notice& notice : written.notices) {
        Print(stderr, fmt::format("{}: {}\n", SeverityName(notice.severity), notice.text));
    }
    Print(stdout, fmt::format("report {} ({} steps, {} bodies, {:.1f} MB)\n", scenario::Utf8FromPath(page),
                              written.rows, written.bodies, static_cast<double>(written.bytes) / 1e6));
}

} // namespace

scenario::ExitStatus RunTool(const std::vector<std::string>& words) {
    try {
        const CommandLine arguments = ReadCommandLine(words);
        if (arguments.helpText.empty()) {
            WritePage(arguments);
        } else {
            Print(stdout, arguments.helpText);
        }
        return scenario::ExitStatus::Done;
    } catch (const programs::ProgramError& error) {
        Print(stderr, fmt::format("error: {}\n", error.what()));
        return error.Status();
    } catch (const std::exception& error) {
        Print(stderr, fmt::format("error: {}\n", error.what()));
        return scenario::ExitStatus::Failed;
    }
}

} // namespace kinora::report
