#pragma once

#include "simulator/analysis/FieldExport.h"
#include "simulator/automation/DesktopSetup.h"

#include <chrono>
#include <string>
#include <vector>

namespace vantor::automation {

/// What the program is asked to do.
struct CommandLine {
    enum class Task { Help, Serve, Register, Unregister, List, ExportFields, Bad };

    Task task = Task::Help;
    /// Register: the desktop's own ProgID too.
    bool alsoDefault = false;
    /// Serve: the system started the server, for a client that knows nothing of its streams.
    bool isEmbedded = false;
    /// Serve: how long the server stays without clients.
    std::chrono::seconds idleTime{300};
    /// Serve: value of the desktop option.
    std::string updateReports = usualUpdateReports;
    /// List, ExportFields: the project file.
    std::wstring project;
    /// List: all rows of a long history.
    bool isFull = false;
    /// ExportFields: the file to write, and the points.
    std::wstring output;
    analysis::FieldGrid grid;
    /// Bad: what is wrong.
    std::wstring problem;
};

/// Reads the arguments after the program's name. Switches begin with "/" or "-", letter case does not matter.
CommandLine ParseCommandLine(const std::vector<std::wstring>& arguments);

/// How the program is called.
const wchar_t* UsageText();

} // namespace vantor::automation
