#include "host/app/CommandLine.h"

#include "host/project/GeometrySurvey.h"
#include "host/project/Templates.h"
#include "scenario/Errors.h"
#include "scenario/Text.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>

namespace kinora::host {
namespace {

std::string TemplateList() {
    std::string list;
    for (const ProjectTemplate& entry : ProjectTemplates()) {
        list += fmt::format("{}{}", list.empty() ? "" : ", ", entry.name);
    }
    return fmt::format("{} (default: {})", list, ProjectTemplates().front().name);
}

[[noreturn]] void Refuse(const std::string& text) {
    throw scenario::InputError(text + " (--help lists the options)");
}

/// What makes a project runs nothing, and takes no options of runs.
void RequireNoRun(const CLI::App& parser, const CommandLine& line) {
    const bool isNew = parser.count("--new") > 0;
    const bool isGeometry = IsGeometryFile(scenario::PathFromUtf8(line.scenarioFile));
    if (!isNew && !isGeometry) {
        return;
    }
    const std::string what = isNew ? "--new" : line.scenarioFile + ", a geometry,";
    for (const CLI::Option* option : parser.get_options()) {
        const std::string name = option->get_name();
        if (option->count() > 0 && name != "SCENARIO" && name != "--new" && name != "--template") {
            Refuse(fmt::format("{} runs nothing: leave out {}", what, name));
        }
    }
    if (isNew && line.newFolder.empty()) {
        Refuse("--new: name a folder");
    }
    if (isNew && !line.scenarioFile.empty() && !isGeometry) {
        Refuse("--new makes a scenario and takes none, or a geometry (.obj or .stl): leave out " + line.scenarioFile);
    }
    if (isGeometry && !line.templateName.empty()) {
        Refuse("--template has a geometry of its own: leave out " + line.scenarioFile + ", or --template");
    }
}

} // namespace

CommandLine ReadCommandLine(std::vector<std::string> words) {
    CommandLine line;
    CLI::App parser("Runs a coupled scenario: moves its bodies, has the desktop solve the field, reports the loads.\n"
                    "Exit status: 0 done, 1 the run failed or was interrupted, 2 bad input.",
                    "kinora-run");
    // A path may begin with a slash.
    parser.allow_windows_style_options(false);
    bool isQuiet = false;
    bool isVerbose = false;
    auto* scenario = parser.add_option("SCENARIO", line.scenarioFile,
                                       "Scenario file (JSON, comments allowed); for a geometry (.obj or .stl) a "
                                       "scenario to start from is printed");
    auto* newFolder =
        parser.add_option("--new", line.newFolder,
                          "Make a project in this folder: scenario, geometry, run script. With a geometry "
                          "in the place of SCENARIO, one around that");
    parser.add_option("--template", line.templateName, "With --new: " + TemplateList())->needs(newFolder);
    parser.add_option("--out", line.outputFolder, "Folder for everything that is written (default: the scenario's)");
    parser.add_option("--desktop", line.desktopVersion, "Version of the desktop to start, for example Simulator");
    parser.add_option("--csv", line.csvFile, "Write the host's own states to this file");
    auto* overwrite = parser.add_flag("--overwrite", line.overwrite, "Replace a project of an earlier run");
    auto* resume = parser.add_flag("--resume", line.resume, "Go on with an earlier run")->excludes(overwrite);
    parser.add_flag("--force", line.force, "With --resume: although the scenario has changed or files are missing")
        ->needs(resume);
    parser.add_flag("--report", line.report, "End with the report page: charts and a 3D replay in one HTML file");
    auto* compare = parser.add_option("--compare", line.expectedFile,
                                      "Compare the run with the states in this CSV file (\"Time [s]\" and columns of "
                                      "--csv): a table, and status 1 when one deviates by more than --tolerance");
    parser
        .add_option("--tolerance", line.tolerancePercent,
                    "With --compare: percent of a column's largest expected value (default: 0.5)")
        ->check(CLI::NonNegativeNumber)
        ->needs(compare);
    parser
        .add_option("--set", line.set,
                    "PATH=VALUE: a value in place of the scenario's, or where it has none. PATH is the name of a "
                    "parameter, names with dots (solver.end, bodies.rotor.mass) or a JSON pointer; VALUE is JSON, a "
                    "formula or a text. May be given often; the last one counts")
        ->allow_extra_args(false); // what follows is the scenario
    parser.add_option("--parameters", line.parametersFile, "File with a JSON object of such paths and values");
    parser.add_option("--result", line.resultFile,
                      "Write the results to this file, last and at once: where it is, the run is complete");
    auto* printParameters = parser.add_flag("--print-parameters", line.printParameters,
                                            "Print the scenario's parameters and results as JSON, start nothing");
    auto* printSchema = parser.add_flag("--print-schema", line.printSchema, "Print the JSON schema of scenarios")
                            ->excludes(printParameters);
    parser.add_flag("--dry-run", line.dryRun, "Check the scenario, print the model, start nothing");
    parser.add_option("--steps", line.stepLimit, "Stop after so many steps, as Ctrl-C would")
        ->check(CLI::PositiveNumber);
    auto* quiet = parser.add_flag("--quiet,-q", isQuiet, "Say only where the files are");
    parser.add_flag("--verbose,-v", isVerbose, "One line per step, on a terminal too")->excludes(quiet);
    std::reverse(words.begin(), words.end());
    try {
        parser.parse(words);
        RequireNoRun(parser, line);
        if (scenario->empty() && printSchema->empty() && newFolder->empty()) {
            throw CLI::RequiredError("SCENARIO");
        }
    } catch (const CLI::CallForHelp&) {
        line.helpText = parser.help();
    } catch (const CLI::ParseError& error) {
        throw scenario::InputError(std::string(error.what()) + " (--help lists the options)");
    }
    line.talk = isQuiet ? Talk::Quiet : isVerbose ? Talk::Verbose : Talk::Normal;
    return line;
}

} // namespace kinora::host
