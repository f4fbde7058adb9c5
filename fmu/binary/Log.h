#pragma once

#include <functional>
#include <string>

namespace kinora::fmu {

/// The part of the status that both versions of the standard have, with their values.
enum class Status { Ok, Warning, Discard, Error, Fatal };

/// What a text is about: the categories of FMI 2.0 that fit.
constexpr const char* errorCategory = "logStatusError";
constexpr const char* warningCategory = "logStatusWarning";
constexpr const char* eventCategory = "logEvents";

/// Hands a text to the importing tool.
using Log = std::function<void(Status status, const char* category, const std::string& text)>;

} // namespace kinora::fmu
