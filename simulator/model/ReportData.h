#pragma once

#include "simulator/model/Design.h"

#include <filesystem>
#include <string>
#include <vector>

namespace vantor::model {

/// Reads traces from comma-separated text. The first line labels the columns "quantity [unit]"; the first column is
/// shared by all traces, every further column is one trace.
/// @param fileName for messages.
/// @throws DesktopError (ReadFile) naming file, line and reason.
std::vector<Trace> ReadTraces(const std::string& text, const std::string& fileName);

/// As ReadTraces, from a file whose name ends in .csv.
std::vector<Trace> ReadTraceFile(const std::filesystem::path& path);

} // namespace vantor::model
