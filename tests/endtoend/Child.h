#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace endtoend {

/// Runs a program to its end, four minutes at most (a busy machine is slow).
/// @param arguments  without the program's name, UTF-8
/// @param output     file for both its streams. (A pipe would stay open as long as a desktop that the child started:
///                   under Wine it gets the child's streams.)
/// @return its exit status; 999 for one that hangs, and is ended, or was ended by a signal
/// @throws std::runtime_error  it does not start
int RunChild(const std::filesystem::path& program, const std::vector<std::string>& arguments,
             const std::filesystem::path& output);

} // namespace endtoend
