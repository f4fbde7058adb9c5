#pragma once

#include "programs/ExitStatus.h"

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

/// Runs a program to its exit status: the body gets the arguments as UTF-8, without the program's name. What the body
/// throws becomes one line on the error stream, and the status that a ProgramError names, Failed for anything else. A
/// program that was started by a double click shows its help, and leaves its console open until a key is pressed.
/// @param work  begins the line of an error that nobody foresaw: "the run" gives "the run failed unexpectedly: .."
int RunMain(int count, const MainArgument* values, const std::string& work,
            const std::function<ExitStatus(std::vector<std::string>)>& body);

} // namespace kinora::programs
