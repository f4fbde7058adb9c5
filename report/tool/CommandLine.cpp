#include "report/tool/CommandLine.h"

#include "scenario/Errors.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace kinora::report {

CommandLine ReadCommandLine(std::vector<std::string> words) {
    CommandLine line;
    CLI::App parser("Writes the page of a coupled run: charts and a 3D replay in one HTML file that opens offline.\n"
                    "Exit status: 0 written, 1 the page could not be written, 2 bad input.",
                    "kinora-report");
    // A path may begin with a slash.
    parser.allow_windows_style_options(false);
    parser.add_option("LOG", line.logFile, "Coupling log of the run (PROJECT.coupling.csv)")->required();
    parser.add_option("--scenario", line.scenarioFile, "The run's scenario: title, geometry, joints");
    parser.add_option("--states", line.statesFile, "The host's own states (default: as the scenario says)");
    parser.add_option("--out", line.pageFile, "Page to write (default: PROJECT.report.html beside the project)");
    parser.add_option("--template", line.templateFile, "Another template than the installed one");
    std::string orientation;
    parser
        .add_option(
            "--orientation", orientation,
            "What the log's angles mean: \"exact\" where the desktop's frame is the body's, \"direct\" of a host "
            "that hands over the body's own axes (default: as the host's state file says, else exact)")
        ->check(CLI::IsMember({"exact", "direct"}));
    std::reverse(words.begin(), words.end());
    try {
        parser.parse(words);
        if (!orientation.empty()) {
            line.orientation = orientation == "exact" ? Orientation::Exact : Orientation::Direct;
        }
    } catch (const CLI::CallForHelp&) {
        line.helpText = parser.help();
    } catch (const CLI::ParseError& error) {
        throw scenario::InputError(std::string(error.what()) + " (--help lists the options)");
    }
    return line;
}

} // namespace kinora::report
