#include "trace/app/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace kinora::trace {

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
        command->add_option("FILE", line.files, "Trace file; several for the parts of one trace")->required();
    };
    add("register", "Register the trace server, selected with KINORA_VELTRIX_VTDK_VERSION=Trace",
        CommandLine::Task::Register);
    add("unregister", "Take the registration back", CommandLine::Task::Unregister);
    CLI::App* show = add("show", "Print a session as a tree", CommandLine::Task::Show);
    addFiles(show);
    show->add_flag("--failed", line.show.onlyFailed, "Only what failed or never came back");
    show->add_option("--slow", line.show.slowMilliseconds, "Only calls of so many milliseconds or more")
        ->check(CLI::NonNegativeNumber);
    show->add_option("--grep", line.show.containing, "Only calls that contain this text");
    show->add_flag("--full", line.show.isFull, "Print long lists and texts whole");
    addFiles(add("stats", "Print where the time went, method by method", CommandLine::Task::Stats));
    addFiles(add("script", "Print a VBScript that replays the session", CommandLine::Task::Script));
    add("diff", "Compare two sessions call by call, ignoring times", CommandLine::Task::Diff)
        ->add_option("A B", line.files, "The two trace files")
        ->required()
        ->expected(2);
    std::reverse(words.begin(), words.end());
    try {
        parser.parse(words);
    } catch (const CLI::CallForHelp&) {
        line.task = CommandLine::Task::Help;
        const auto chosen = parser.get_subcommands();
        line.text = chosen.empty() ? parser.help() : chosen.front()->help();
    } catch (const CLI::ParseError& error) {
        line.task = CommandLine::Task::Bad;
        line.text = std::string("error: ") + error.what() + " (--help lists the commands)\n";
    }
    return line;
}

} // namespace kinora::trace
