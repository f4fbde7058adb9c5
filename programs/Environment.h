#pragma once

#include <string>

namespace kinora::programs {

/// The value of an environment variable as UTF-8, for a DLL too whose host has another C runtime; empty when it is not
/// set. Not while another thread changes the environment.
std::string EnvironmentValue(const char* name);

/// Sets an environment variable for this process, whose getenv gives the same bytes, and for those that it starts.
/// @param value  in the system's narrow encoding
void SetEnvironmentValue(const char* name, const std::string& value);

/// Whether the Windows around this program is Wine's.
bool IsWine();

} // namespace kinora::programs
