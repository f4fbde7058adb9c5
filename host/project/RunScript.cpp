#include "host/project/RunScript.h"

#include "scenario/Text.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <fmt/format.h>

namespace kinora::host {
namespace {

std::string Replaced(std::string text, const std::string& old, const std::string& by) {
    for (std::size_t at = 0; (at = text.find(old, at)) != std::string::npos; at += by.size()) {
        text.replace(at, old.size(), by);
    }
    return text;
}

bool IsAscii(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 128; });
}

/// cmd reads a script in the console's code page, line by line.
constexpr const char* intoUtf8 = R"(rem The name of the program below is UTF-8.
for /f "tokens=2 delims=:." %%c in ('chcp') do set "CODE_PAGE=%%c"
chcp 65001 >nul
)";

constexpr const char* cmdScript = R"(@echo off
rem Runs scenario.json, which lies beside this file. Arguments go to kinora-run.
rem --no-pause as the first one: do not wait for a key at the end.
setlocal DisableDelayedExpansion
pushd "%~dp0"
if errorlevel 1 exit /b 1
{into}set "KINORA_RUN={program}"
{back}if not exist "%KINORA_RUN%" set "KINORA_RUN=kinora-run.exe"
set PAUSE=pause
set ARGUMENTS=%*
if /i "%~1"=="--no-pause" set PAUSE=
if /i "%~1"=="--no-pause" set ARGUMENTS=%ARGUMENTS:"--no-pause"=--no-pause%
if /i "%~1"=="--no-pause" set ARGUMENTS=%ARGUMENTS:*--no-pause=%
"%KINORA_RUN%" scenario.json{options} %ARGUMENTS%
set STATUS=%ERRORLEVEL%
if "%STATUS%"=="9009" echo kinora-run is neither where it was when this file was made nor in the PATH.
popd
%PAUSE%
exit /b %STATUS%
)";

constexpr const char* shScript = R"script(#!/bin/sh
# Runs scenario.json, which lies beside this file. Arguments go to kinora-run.
cd "$(dirname "$0")" || exit 1
program={program}
[ -x "$program" ] || program=kinora-run
exec "$program" scenario.json{options} "$@"
)script";

/// A word for the shell.
std::string ShellWord(const std::string& text) {
    const bool isPlain = std::all_of(text.begin(), text.end(), [](unsigned char c) {
        return c > 127 || std::isalnum(c) != 0 || std::strchr("_./-+", c) != nullptr;
    });
    return isPlain ? text : "'" + Replaced(text, "'", R"('\'')") + "'";
}

std::string WithSpace(const std::string& options) {
    return options.empty() ? options : " " + options;
}

} // namespace

ProjectFile RunCmd(const std::filesystem::path& program, const std::string& options) {
    const std::string name = Replaced(scenario::Utf8FromPath(program), "%", "%%");
    const bool isAscii = IsAscii(name);
    const std::string text = fmt::format(
        cmdScript, fmt::arg("into", isAscii ? "" : intoUtf8), fmt::arg("program", name),
        fmt::arg("back", isAscii ? "" : "chcp %CODE_PAGE% >nul\n"), fmt::arg("options", WithSpace(options)));
    return {"run.cmd", Replaced(text, "\n", "\r\n"), true};
}

ProjectFile RunSh(const std::filesystem::path& program, const std::string& options) {
    return {"run.sh",
            fmt::format(shScript, fmt::arg("program", ShellWord(scenario::Utf8FromPath(program))),
                        fmt::arg("options", WithSpace(options))),
            true};
}

std::string AdviceToRun(const std::filesystem::path& script) {
    const std::string name = scenario::Utf8FromPath(script);
    return script.extension() == ".cmd" ? fmt::format("Run it by a double click on {}, or:\n  cmd /c \"{}\"\n",
                                                      scenario::Utf8FromPath(script.filename()), name)
                                        : fmt::format("Run it:\n  {}\n", ShellWord(name));
}

} // namespace kinora::host
