#include "trace/app/CommandLine.h"
#include "trace/app/Registration.h"
#include "trace/core/Diff.h"
#include "trace/core/Script.h"
#include "trace/core/Stats.h"
#include "trace/core/TraceFiles.h"
#include "trace/server/JsonText.h"
#include "trace/server/Recorder.h"

#include <windows.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <io.h>
#include <sstream>
#include <stdexcept>

namespace {

using namespace kinora::trace;

enum ExitStatus { done = 0, failedOrDifferent = 1, badInput = 2 };

void Print(std::FILE* stream, const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fflush(stream);
}

void ReadPart(const std::filesystem::path& file, Session& session) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream.is_open()) {
        throw std::runtime_error(file.u8string() + " cannot be opened. Traces are in the folder " +
                                 std::filesystem::path(RecorderSettings::FromEnvironment().folder).u8string() + ".");
    }
    ReadTrace(stream, file.u8string(), session);
}

/// The files to read, when the user named none, one, or the parts of a trace one by one.
std::vector<std::filesystem::path> FilesOf(const std::vector<std::string>& named) {
    if (named.empty()) {
        const std::filesystem::path folder = RecorderSettings::FromEnvironment().folder;
        const std::filesystem::path newest = NewestTrace(folder).make_preferred();
        if (newest.empty()) {
            throw std::runtime_error("there is no trace in " + folder.u8string() +
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
    for (const std::filesystem::path& file : FilesOf(named)) {
        ReadPart(file, session);
    }
    WarnOfGaps(session);
    for (const std::string& warning : session.warnings) {
        Print(stderr, "warning: " + warning + "\n");
    }
    return session;
}

/// Switches a console to colours, if the output is one that can.
bool HasColours() {
    HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    return _isatty(_fileno(stdout)) != 0 && GetConsoleMode(output, &mode) != FALSE &&
           SetConsoleMode(output, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != FALSE;
}

int PrintDiff(const CommandLine& line) {
    std::ostringstream out;
    const std::size_t differences = Diff(ReadSession({line.files[0]}), ReadSession({line.files[1]}), out);
    Print(stdout, out.str());
    return differences == 0 ? done : failedOrDifferent;
}

int PrintSession(const CommandLine& line) {
    const Session session = ReadSession(line.files);
    std::ostringstream out;
    if (line.task == CommandLine::Task::Show) {
        ShowOptions options = line.show;
        options.isColoured =
            line.colour == CommandLine::Colour::Always || (line.colour == CommandLine::Colour::Auto && HasColours());
        Show(session, options, out);
    } else if (line.task == CommandLine::Task::Stats) {
        PrintStats(ComputeStats(session), out);
    } else {
        WriteScript(session, out);
    }
    Print(stdout, out.str());
    return done;
}

int PrintResult(const RegistrationResult& result) {
    Print(result.succeeded ? stdout : stderr, Utf8(result.text.data(), result.text.size()));
    return result.succeeded ? done : failedOrDifferent;
}

int Run(const CommandLine& line) {
    switch (line.task) {
    case CommandLine::Task::Register:
        return PrintResult(RegisterServer());
    case CommandLine::Task::Unregister:
        return PrintResult(UnregisterServer());
    case CommandLine::Task::Diff:
        return PrintDiff(line);
    case CommandLine::Task::Help:
        Print(stdout, line.text);
        return done;
    case CommandLine::Task::Bad:
        Print(stderr, line.text);
        return badInput;
    default:
        return PrintSession(line);
    }
}

} // namespace

int wmain(int count, wchar_t** values) {
    SetConsoleOutputCP(CP_UTF8);
    try {
        std::vector<std::string> words;
        for (int i = 1; i < count; ++i) {
            words.push_back(Utf8(values[i], std::char_traits<wchar_t>::length(values[i])));
        }
        return Run(ReadCommandLine(std::move(words)));
    } catch (const std::exception& error) {
        Print(stderr, std::string("error: ") + error.what() + "\n");
        return badInput;
    }
}
