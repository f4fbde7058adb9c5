#pragma once

#include <string>

namespace fake {

/// Full path of the running test program.
std::wstring ThisProgram();
/// Full path of a file that lies beside it.
std::wstring BesideThisProgram(const std::wstring& name);
/// The number by which the system knows the running test program.
unsigned long ThisProcess();

} // namespace fake
