#pragma once

#include "scenario/Errors.h"

#include <string>
#include <vector>

namespace kinora::report {

/// Does what the program's arguments (UTF-8, without its name) say. What was written goes to the standard output, what
/// there is to complain of to the error stream.
scenario::ExitStatus RunTool(const std::vector<std::string>& words);

} // namespace kinora::report
