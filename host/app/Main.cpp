#include "programs/Main.h"

#include "host/app/AnsiText.h"
#include "host/app/ComScope.h"
#include "host/app/CommandLine.h"
#include "host/app/Console.h"
#include "host/app/Desktop.h"
#include "host/app/ProjectCommands.h"
#include "host/app/Terminal.h"
#include "host/core/Comparison.h"
#include "host/core/RunJson.h"
#include "host/core/RunText.h"
#include "host/project/GeometrySurvey.h"
#include "interface/KinoraVeltrixScriptErrors.h"
#include "programs/Environment.h"
#include "programs/Errors.h"
#include "programs/Paths.h"
#include "report/core/Report.h"
#include "scenario/ScenarioReader.h"
#include "scenario/ScenarioSchema.h"
#include "scenario/Text.h"

#include <algorithm>
#include <chrono>
#include <fmt/format.h>
#include <optional>

#ifdef _WIN32
#include "host/core/BusyWait.h"
#include "programs/BusyFilter.h"
#endif

namespace {

using namespace kinora::host;
using namespace kinora::scenario;

/// Of long runs the tables show a choice.
constexpr std::size_t tableRows = 40;

constexpr const char* versionVariable = "KINORA_VELTRIX_VTDK_VERSION";

/// A path as it was written down, without a mark that the standard library does not know.
std::filesystem::path PathFromUser(const std::string& text) {
    return kinora::programs::Joined({}, PathFromUtf8(text));
}

std::filesystem::path PageFile(const Scenario& scenario) {
    return kinora::report::DefaultPageFile(FilesOf(scenario).couplingLog);
}

std::vector<NamedFile> FurtherOutputs(const CommandLine& arguments, const Scenario& scenario) {
    if (!arguments.report) {
        return {};
    }
    return {{"the report page", PageFile(scenario)}};
}

std::vector<NamedFile> InputsOf(const CommandLine& arguments, const Scenario& scenario) {
    std::vector<NamedFile> inputs = {{"the scenario", PathFromUser(arguments.scenarioFile)},
                                     {"the geometry", scenario.geometryFile}};
    if (!arguments.parametersFile.empty()) {
        inputs.push_back({"the parameters", PathFromUser(arguments.parametersFile)});
    }
    if (!arguments.expectedFile.empty()) {
        inputs.push_back({"the expected states", PathFromUser(arguments.expectedFile)});
    }
    return inputs;
}

/// The command line wins over the environment; empty when both leave the choice to the scenario.
std::string ChosenDesktop(const CommandLine& arguments) {
    return arguments.desktopVersion.empty() ? kinora::programs::EnvironmentValue(versionVariable)
                                            : arguments.desktopVersion;
}

/// Those of the file first, so that those of the command line win.
Overrides OverridesOf(const CommandLine& arguments) {
    Overrides overrides;
    if (!arguments.parametersFile.empty()) {
        overrides = ReadOverrides(PathFromUser(arguments.parametersFile));
    }
    for (const std::string& text : arguments.set) {
        overrides.push_back(ParseOverride(text));
    }
    return overrides;
}

/// What is to be run, and what it should give.
struct Task {
    Overrides overrides;
    Scenario scenario;
    std::optional<ExpectedStates> expected;
};

Task Prepare(const CommandLine& arguments) {
    Task task;
    task.overrides = OverridesOf(arguments);
    Scenario& scenario = task.scenario;
    scenario =
        ReadScenario(PathFromUser(arguments.scenarioFile), ChosenDesktop(arguments), Purpose::Run, task.overrides);
    if (!scenario.desktop.version.empty()) {
        kinora::programs::SetEnvironmentValue(versionVariable, AnsiFromUtf8(scenario.desktop.version));
    }
    if (!arguments.outputFolder.empty()) {
        scenario.outputFolder = PathFromUser(arguments.outputFolder);
    }
    if (!arguments.csvFile.empty()) {
        scenario.csvFile = kinora::programs::AbsolutePath(PathFromUser(arguments.csvFile));
    }
    if (!arguments.resultFile.empty()) {
        scenario.resultFile = kinora::programs::AbsolutePath(PathFromUser(arguments.resultFile));
    }
    PrepareResults(scenario);
    if (!arguments.expectedFile.empty()) {
        task.expected = ReadExpected(PathFromUser(arguments.expectedFile), scenario);
    }
    scenario.overwrite = scenario.overwrite || arguments.overwrite;
    RequireDistinctFiles(FilesOf(scenario), InputsOf(arguments, scenario), FurtherOutputs(arguments, scenario));
    return task;
}

RunOptions OptionsFrom(const CommandLine& arguments, const Scenario& scenario) {
    RunOptions options;
    options.resume = arguments.resume;
    options.force = arguments.force;
    options.furtherOutputs = FurtherOutputs(arguments, scenario);
    options.stepLimit = arguments.stepLimit;
    options.isInterrupted = IsInterrupted;
    options.toNarrow = AnsiFromUtf8;
    options.fromNarrow = Utf8FromAnsi;
    options.closeLeftProject = [&scenario](const std::filesystem::path& project) {
        CloseProjectOf(project, scenario.desktop.version);
    };
    options.isDesktopShared = [&scenario] { return HasOpenProjects(scenario.desktop.version); };
    options.launchAdvice = LaunchAdvice();
    options.launchHint = LaunchHint();
    options.scriptErrorText = GetKinoraVeltrixScriptErrorText;
    return options;
}

void PrintResults(const Scenario& scenario, const Console& console, Talk talk) {
    if (console.Records().empty()) {
        return;
    }
    if (talk != Talk::Quiet) {
        Print("\nLoads on the bodies, in their own axes\n");
        Print(LoadTable(scenario, console.Records(), tableRows));
        Print("\n" + EnergyTable(scenario, console.Records().back()));
    }
    Print(FileList(scenario));
}

/// What ends a run that is complete. One that was so before is left as it is.
void FinishResults(const CommandLine& arguments, const Scenario& scenario, const RunFacts& facts) {
    if (scenario.results.empty() && !scenario.resultFile) {
        return;
    }
    std::error_code ignored;
    const std::vector<RunResult> results = TakeResults(scenario);
    if (arguments.talk != Talk::Quiet) {
        Print(ResultTable(results));
    }
    if (scenario.resultFile && !std::filesystem::exists(*scenario.resultFile, ignored)) {
        WriteResult(scenario, facts, results);
        Print(fmt::format("result        {}\n", Utf8FromPath(*scenario.resultFile)));
    }
}

/// @return  false when a quantity deviates by more than is allowed
bool CompareResults(const CommandLine& arguments, const Scenario& scenario, const ExpectedStates& expected) {
    const std::vector<ComparedQuantity> compared = Compare(scenario, expected);
    Print(fmt::format("\nThe run beside {}\n", Utf8FromPath(expected.file)) +
          ComparisonTable(compared, arguments.tolerancePercent, tableRows));
    return std::all_of(compared.begin(), compared.end(), [&](const ComparedQuantity& quantity) {
        return quantity.Worst() <= arguments.tolerancePercent;
    });
}

/// The page of a run, from what the coupling and this host have written.
void WriteReportPage(const CommandLine& arguments, const Scenario& scenario, const Console& console) {
    const RunFiles files = FilesOf(scenario);
    kinora::report::ReportSources sources;
    sources.log = files.couplingLog;
    sources.scenario = &scenario;
    sources.scenarioFile = PathFromUser(arguments.scenarioFile);
    sources.states = files.csv;
    sources.generator = "kinora-run " KINORA_VERSION;
    for (const std::string& warning : console.Warnings()) {
        sources.notices.push_back({kinora::report::Severity::Warning, warning});
    }
    const std::filesystem::path page = PageFile(scenario);
    kinora::report::WriteReport(sources, kinora::report::FindTemplate(), page);
    Print(fmt::format("report        {}\n", Utf8FromPath(page)));
}

/// A library that another compiler made has the same names, and corrupts memory at the first text.
void RequireLibraryOfThisCompiler() {
    if (!IsKinoraVeltrixCompatible()) {
        throw kinora::programs::RunError(fmt::format(
            KINORA_LIBRARY_FILE " is of another build than this program: {} (the library), {} (the program). "
                                "Use the one that came with kinora-run.",
            GetKinoraVeltrixBinaryInterface(), KINORA_VELTRIX_BINARY_INTERFACE));
    }
}

RunFacts FactsOf(const CommandLine& arguments, const Scenario& scenario, const Overrides& overrides,
                 std::chrono::steady_clock::time_point start) {
    RunFacts facts;
    facts.scenarioFile = PathFromUser(arguments.scenarioFile);
    facts.overrides = overrides;
    facts.wallSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    facts.versions = {{"kinora-run", KINORA_VERSION}, {"desktop", scenario.desktop.version}};
    if (arguments.report) {
        facts.reportPage = PageFile(scenario);
    }
    return facts;
}

ExitStatus RunTask(const CommandLine& arguments, const Task& task) {
    const Scenario& scenario = task.scenario;
    const auto start = std::chrono::steady_clock::now();
    RequireLibraryOfThisCompiler();
    const RunOptions options = OptionsFrom(arguments, scenario);
    const ComScope com;
    Console console(scenario, arguments.talk);
#ifdef _WIN32 // elsewhere the desktop lives in this process and is never busy
    BusyWait wait(scenario.desktop.busyTimeoutSeconds, [&](const std::string& text) { console.OnWarning(text); });
    const kinora::programs::BusyFilter filter([&](std::uint32_t elapsedMs) { return wait.OnRejected(elapsedMs); });
#endif
    CatchInterrupts();
    CoupledRun run(scenario, options, *GetKinoraVeltrixFactoryInterface(), console);
    const RunEnd end = run.Run();
    console.EndBar();
    PrintResults(scenario, console, arguments.talk);
    std::error_code ignored;
    const bool wasComplete = end == RunEnd::Complete && console.Records().empty();
    if (arguments.report && !(wasComplete && std::filesystem::exists(PageFile(scenario), ignored))) {
        WriteReportPage(arguments, scenario, console);
    }
    if (end == RunEnd::Complete) {
        FinishResults(arguments, scenario, FactsOf(arguments, scenario, task.overrides, start));
        if (!console.Warnings().empty()) {
            PrintError(fmt::format("The run is complete, with {} warning{} (above).\n", console.Warnings().size(),
                                   console.Warnings().size() == 1 ? "" : "s"));
        }
        if (task.expected && !CompareResults(arguments, scenario, *task.expected)) {
            throw kinora::programs::RunError(
                "The run deviates from what was expected by more than --tolerance allows.");
        }
        return ExitStatus::Done;
    }
    PrintError("The run stopped before its end; --resume goes on with it.\n");
    return ExitStatus::Failed;
}

ExitStatus Execute(const CommandLine& arguments) {
    if (arguments.printSchema) {
        Print(std::string(ScenarioSchema()));
        return ExitStatus::Done;
    }
    if (!arguments.newFolder.empty()) {
        MakeProject(arguments);
        return ExitStatus::Done;
    }
    if (IsGeometryFile(PathFromUser(arguments.scenarioFile))) {
        PrintSuggestion(arguments);
        return ExitStatus::Done;
    }
    const Task task = Prepare(arguments);
    const Scenario& scenario = task.scenario;
    if (arguments.printParameters) {
        Print(DeclarationsJson(scenario));
        return ExitStatus::Done;
    }
    if (!arguments.dryRun) {
        return RunTask(arguments, task);
    }
    for (const std::string& warning : scenario.warnings) {
        PrintError("warning: " + warning + "\n");
    }
    Print(ModelText(scenario));
    return ExitStatus::Done;
}

ExitStatus ExecuteWords(std::vector<std::string> words) {
    const CommandLine arguments = ReadCommandLine(std::move(words));
    if (!arguments.helpText.empty()) {
        Print(arguments.helpText);
        return ExitStatus::Done;
    }
    try {
        return Execute(arguments);
    } catch (const OperationFailed& failure) {
        PrintError(FailureText(failure));
        return ExitStatus::Failed;
    }
}

} // namespace

#ifdef _WIN32
int wmain(int count, wchar_t** values) {
#else
int main(int count, char** values) {
#endif
    return kinora::programs::RunMain(count, values, "the run", ExecuteWords);
}
