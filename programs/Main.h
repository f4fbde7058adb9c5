#pragma once

#include "programs/ExitStatus.h"

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace kinora::programs {

/// What the system gives a main function: wmain on Windows, main elsewhere.
#ifdef _WIN32
using MainArgument = wchar_t*;
#else
using MainArgument = char*;
#endif

/// Runs a program to its exit status: the body gets the arguments as UTF-8, without the program's name, and consoles
/// show UTF-8. What the body throws becomes one line on the error stream, and the status that a ProgramError names,
/// Failed for anything else.
/// @param work  begins the line of an error that nobody foresaw: "the run" gives "the run failed unexpectedly: .."
int RunMain(int count, const MainArgument* values, const std::string& work,
            const std::function<ExitStatus(std::vector<std::string>)>& body);

/// Writes a text at once.
/// @return false when not all of it could be written
bool Print(std::FILE* stream, const std::string& text);

} // namespace kinora::programs
