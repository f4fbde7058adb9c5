#include "report/core/Report.h"

#include "programs/ProgramFile.h"
#include "report/core/PageData.h"
#include "report/core/ProjectFiles.h"
#include "scenario/Errors.h"
#include "scenario/Text.h"

#include <algorithm>
#include <fmt/format.h>

namespace kinora::report {
namespace {

constexpr const char* marker = "@KINORA_RUN_DATA@";

/// The geometry file's bytes. A report without meshes is better than none.
std::string ReadGeometry(const scenario::Scenario& scenario, std::vector<Notice>& notices) {
    try {
        return scenario::ReadFile(scenario.geometryFile);
    } catch (const scenario::InputError& error) {
        notices.push_back({Severity::Warning, fmt::format("The replay shows frames only: {}", error.what())});
        return {};
    }
}

/// The notices without those whose text an earlier one has: the host tells by itself some of what its files tell.
std::vector<Notice> WithoutRepeats(const std::vector<Notice>& notices) {
    std::vector<Notice> once;
    for (const Notice& notice : notices) {
        if (std::none_of(once.begin(), once.end(), [&](const Notice& other) { return other.text == notice.text; })) {
            once.push_back(notice);
        }
    }
    return once;
}

} // namespace

std::string FillTemplate(std::string page, const std::string& data, const std::string& templateName) {
    const std::size_t at = page.find(marker);
    if (at == std::string::npos || page.find(marker, at + 1) != std::string::npos) {
        throw scenario::InputError(
            fmt::format("{}: this is not the template of a report; install the program anew.", templateName));
    }
    return page.replace(at, std::string(marker).size(), data);
}

WrittenReport WriteReport(const ReportSources& sources, const std::filesystem::path& templateFile,
                          const std::filesystem::path& pageFile) {
    const auto append = [](std::vector<Notice>& to, const std::vector<Notice>& from) {
        to.insert(to.end(), from.begin(), from.end());
    };
    const std::string page = scenario::ReadFile(templateFile);
    const CouplingLog log = ParseCouplingLog(scenario::ReadFile(sources.log), scenario::Utf8FromPath(sources.log));
    PageContext context;
    context.generator = sources.generator;
    context.project = ProjectOf(sources.log);
    context.logName = scenario::Utf8FromPath(sources.log.filename());
    context.scenarioName = scenario::Utf8FromPath(sources.scenarioFile.filename());
    context.scenario = sources.scenario;
    context.notices = sources.notices;
    append(context.notices, log.notices);
    const std::optional<Orientation> orientation =
        sources.orientation ? sources.orientation : FindOrientation(sources.log);
    context.orientation = orientation.value_or(Orientation::Exact);
    append(context.notices, CheckRun(log, sources.scenario, orientation));
    if (sources.scenario) {
        context.geometry = ReadGeometry(*sources.scenario, context.notices);
    }
    HostStates states;
    if (sources.states) {
        states = ParseHostStates(scenario::ReadFile(*sources.states), scenario::Utf8FromPath(*sources.states), log);
        append(context.notices, states.notices);
    }
    context.notices = WithoutRepeats(context.notices);
    const std::string templateName = scenario::Utf8FromPath(templateFile);
    const std::string filled = FillTemplate(page, MakePageData(log, states, context), templateName);
    scenario::WriteWholeFile(pageFile, filled);
    return {filled.size(), log.rows, log.bodies.size(), context.notices};
}

std::filesystem::path DefaultPageFile(const std::filesystem::path& log) {
    return ProjectFolder(log) / scenario::PathFromUtf8(ProjectOf(log) + ".report.html");
}

std::optional<std::filesystem::path> FindStates(const std::filesystem::path& log, const scenario::Scenario& scenario) {
    if (!scenario.csvFile) {
        return std::nullopt;
    }
    const std::filesystem::path file = ProjectFolder(log) / *scenario.csvFile;
    std::error_code ignored;
    return std::filesystem::is_regular_file(file, ignored) ? std::optional(file) : std::nullopt;
}

std::filesystem::path FindTemplate() {
    std::filesystem::path file =
        (programs::ProgramFile().parent_path().parent_path() / "share" / "kinora" / "report.html").lexically_normal();
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(file, ignored)) {
        throw scenario::InputError(
            fmt::format("{}: the template of the reports is missing; install the program anew, or "
                        "build it with KINORA_BUILD_REPORT.",
                        scenario::Utf8FromPath(file)));
    }
    return file;
}

} // namespace kinora::report
