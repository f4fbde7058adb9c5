#include "programs/Main.h"

#include "programs/Errors.h"
#include "programs/Print.h"
#include "programs/Utf.h"
#include "trace/app/CommandLine.h"
#include "trace/app/Registration.h"
#include "trace/core/Diff.h"
#include "trace/core/Script.h"
#include "trace/core/Stats.h"
#include "trace/core/TraceFiles.h"
#include "trace/server/Recorder.h"

#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

using namespace kinora::programs;
using namespace kinora::trace;

/// Prints what was asked for.
/// @throws RunError  it cannot be written
void PrintOutput(const std::string& text) {
    if (!Print(stdout, text)) {
        throw RunError("the output cannot be written.");
    }
}

void ReadPart(const std::filesystem::path& file, Session& session) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream.is_open()) {
        throw InputError(file.u8string() + " cannot be opened. Traces are in the folder " +
                         std::filesystem::path(RecorderSettings::FromEnvironment().folder).u8string() + ".");
    }
    ReadTrace(stream, file.u8string(), session);
}

/// The files to read, when the user named none, one, or the parts of a trace one by one.
std::vector<std::filesystem::path> FilesToRead(const std::vector<std::string>& named) {
    if (named.empty()) {
        const std::filesystem::path folder = RecorderSettings::FromEnvironment().folder;
        const std::filesystem::path newest = NewestTrace(folder).make_preferred();
        if (newest.empty()) {
            throw InputError("there is no trace in " + folder.u8string() +
                             ". Name a file, or record one with KINORA_VELTRIX_VTDK_VERSION=Trace.");
        }
        Print(stderr, "reading " + newest.u8string() + "\n");
        return PartsOf(newest);
    }
    if (named.size() == 1) {
        return PartsOf(std::filesystem::u8path(named.front()));
    }
    std::vector<std::filesystem::path> files;
    files.reserve(named.size());
    for (const std::string& name : named) {
        files.push_back(std::filesystem::u8path(name));
    }
    return files;
}

/// Reads the parts of one trace, and tells what could not be read.
Session ReadSession(const std::vector<std::string>& named) {
    Session session;
    for (const std::filesystem::path& file : FilesToRead(named)) {
        ReadPart(file, session);
    }
    WarnOfGaps(session);
    WarnOfMissingDesktop(session);
    for (const std::string& warning : session.warnings) {
        Print(stderr, "warning: " + warning + "\n");
    }
    return session;
}

ExitStatus PrintDiff(const CommandLine& line) {
    std::ostringstream out;
    const std::size_t differences =
        Diff(ReadSession({line.files[0]}), ReadSession({line.files[1]}), line.show.isFull, out);
    PrintOutput(out.str());
    return differences == 0 ? ExitStatus::Done : ExitStatus::Failed;
}

ExitStatus PrintSession(const CommandLine& line) {
    const Session session = ReadSession(line.files);
    std::ostringstream out;
    if (line.task == CommandLine::Task::Show) {
        ShowOptions options = line.show;
        options.isColoured = line.colour == CommandLine::Colour::Always ||
                             (line.colour == CommandLine::Colour::Auto && ShowsColours(stdout));
        Show(session, options, out);
    } else if (line.task == CommandLine::Task::Stats) {
        PrintStats(ComputeStats(session), out);
    } else {
        WriteScript(session, out);
    }
    PrintOutput(out.str());
    return ExitStatus::Done;
}

ExitStatus PrintResult(const RegistrationResult& result) {
    Print(result.succeeded ? stdout : stderr, Utf8FromWide(result.text));
    return result.succeeded ? ExitStatus::Done : ExitStatus::Failed;
}

ExitStatus Run(const CommandLine& line) {
    switch (line.task) {
    case CommandLine::Task::Register:
        return PrintResult(RegisterServer());
    case CommandLine::Task::Unregister:
        return PrintResult(UnregisterServer());
    case CommandLine::Task::Diff:
        return PrintDiff(line);
    case CommandLine::Task::Help:
        PrintOutput(line.text);
        return ExitStatus::Done;
    case CommandLine::Task::Bad:
        Print(stderr, line.text);
        return ExitStatus::BadInput;
    default:
        return PrintSession(line);
    }
}

} // namespace

int wmain(int count, wchar_t** values) {
    return RunMain(count, values, "vantor-trace",
                   [](std::vector<std::string> words) { return Run(ReadCommandLine(std::move(words))); });
}
