#pragma once

#include <string>

namespace kinora::programs {

/// The value of an environment variable as UTF-8, for a DLL too whose host has another C runtime; empty when it is not
/// set. Not while another thread changes the environment.
std::string EnvironmentValue(const char* name);

} // namespace kinora::programs
