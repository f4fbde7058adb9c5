#pragma once

#include <string>

namespace kinora::report {

/// Text as UTF-8: unchanged when it is that already, otherwise taken for Windows-1252.
std::string ToUtf8(std::string text);

} // namespace kinora::report
