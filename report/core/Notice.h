#pragma once

#include <string>

namespace kinora::report {

enum class Severity { Error, Warning, Info };

/// One line that the reader of a report must know. UTF-8.
struct Notice {
    Severity severity = Severity::Warning;
    std::string text;
};

} // namespace kinora::report
