#pragma once

#include <filesystem>

namespace kinora::programs {

/// The running program's own file; empty when the system does not tell.
std::filesystem::path ProgramFile();

} // namespace kinora::programs
