#include "trace/app/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>

namespace kinora::trace {
namespace {

const std::map<std::string, CommandLine::Colour> colours = {{"auto", CommandLine::Colour::Auto},
                                                            {"always", CommandLine::Colour::Always},
                                                            {"never", CommandLine::Colour::Never}};

std::string ComplaintAboutColour(const std::string& text) {
    return colours.count(text) != 0 ? "" : "\"" + text + "\" is none of auto, always, never";
}

std::string ComplaintAboutDuration(const std::string& text) {
    double milliseconds = -1.0;
    const bool isNumber = CLI::detail::lexical_cast(text, milliseconds);
    return isNumber && milliseconds >= 0.0 ? "" : "\"" + text + "\" is no number of milliseconds";
}

} // namespace

CommandLine ReadCommandLine(std::vector<std::string> words) {
    CommandLine line;
    CLI::App parser("Records and reads the calls between a client and the QUORIX Vantor Desktop.\n"
                    "Exit status: 0 done, 1 failed or (diff) the sessions differ, 2 bad input.",
                    "vantor-trace");
    // A path may begin with a slash.
    parser.allow_windows_style_options(false);
    parser.require_subcommand(1);
    const auto add = [&](const char* name, const char* description, CommandLine::Task task) {
        CLI::App* command = parser.add_subcommand(name, description);
        command->allow_windows_style_options(false);
        command->callback([&line, task] { line.task = task; });
        return command;
    };
    const auto addFiles = [&](CLI::App* command) {
        command->add_option("FILE", line.files,
                            "Trace file; its further parts are found beside it. Without one: the newest trace");
    };
    const auto addFull = [&](CLI::App* command) {
        command->add_flag("--full", line.show.isFull, "Print long lists and texts whole");
    };
    add("register", "Register the trace server, selected with KINORA_VELTRIX_VTDK_VERSION=Trace",
        CommandLine::Task::Register);
    add("unregister", "Take the registration back", CommandLine::Task::Unregister);
    CLI::App* show = add("show", "Print a session as a tree", CommandLine::Task::Show);
    addFiles(show);
    show->add_flag("--failed", line.show.onlyFailed, "Only what failed or never came back");
    show->add_option("--slow", line.show.slowMilliseconds, "Only calls of so many milliseconds or more")
        ->check(CLI::Validator(ComplaintAboutDuration, ""));
    show->add_option("--grep", line.show.containing, "Only calls that contain this text");
    addFull(show);
    std::string colour = "auto";
    show->add_option("--colour", colour, "When to colour: auto (on a terminal), always, never")
        ->check(CLI::Validator(ComplaintAboutColour, ""));
    addFiles(add("stats", "Print where the time went, method by method", CommandLine::Task::Stats));
    addFiles(add("script", "Print a VBScript that replays the session", CommandLine::Task::Script));
    CLI::App* diff = add("diff", "Compare two sessions call by call, ignoring times", CommandLine::Task::Diff);
    diff->add_option("A B", line.files, "The two trace files")->required()->expected(2);
    addFull(diff);
    const std::string first = words.empty() ? "" : words.front();
    std::reverse(words.begin(), words.end());
    try {
        parser.parse(words);
        line.colour = colours.at(colour);
    } catch (const CLI::CallForHelp&) {
        line.task = CommandLine::Task::Help;
        const auto chosen = parser.get_subcommands();
        line.text = chosen.empty() ? parser.help() : chosen.front()->help(parser.get_name());
    } catch (const CLI::ParseError& error) {
        line.task = CommandLine::Task::Bad;
        const bool isNoCommand = parser.get_subcommands().empty() && !first.empty() && first[0] != '-';
        line.text = "error: " + (isNoCommand ? "\"" + first + "\" is no command" : error.what()) +
                    " (--help lists the commands)\n";
    }
    return line;
}

} // namespace kinora::trace
