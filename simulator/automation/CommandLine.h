#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace vantor::automation {

/// What the program is asked to do.
struct CommandLine {
    enum class Task { Help, Serve, Register, Unregister, List, ExportFields, Bad };

    Task task = Task::Help;
    bool alsoDefault = false;                      ///< Register: the desktop's own ProgID too
    std::chrono::seconds idleTime{300};            ///< Serve
    std::wstring updateReports = L"Automatically"; ///< Serve: value of the desktop option
    std::wstring project;                          ///< List, ExportFields
    std::wstring output;                           ///< ExportFields
    std::wstring problem;                          ///< Bad: what is wrong
};

/// Reads the arguments after the program's name. Switches begin with "/" or "-", letter case does not matter.
CommandLine ParseCommandLine(const std::vector<std::wstring>& arguments);

/// How the program is called.
const wchar_t* UsageText();

} // namespace vantor::automation
