#pragma once

#include <filesystem>
#include <string>

namespace kinora::report {

/// Name of the project that a coupling log is of, UTF-8: "run" of "run.coupling.csv".
std::string ProjectOf(const std::filesystem::path& log);

/// The folder of the project: the log lies in the reports folder beside it, unless it was moved.
std::filesystem::path ProjectFolder(const std::filesystem::path& log);

} // namespace kinora::report
