#pragma once

#include "trace/core/Session.h"

#include <string>

namespace kinora::trace {

/// How much of a value is written out.
struct TextLimits {
    /// Elements of a list; more are counted.
    std::size_t elements = 8;
    /// Characters of a text; more are counted.
    std::size_t characters = 120;

    static TextLimits None() { return {static_cast<std::size_t>(-1), static_cast<std::size_t>(-1)}; }
};

/// A recorded value as people write it: "text", true, 0.5, [..], desktop.project("P"); integers and rarer types with
/// their type, as in I4(3).
std::string ValueText(const nlohmann::json& value, const TextLimits& limits);

/// The values of a call, separated by commas.
std::string ArgumentsText(const nlohmann::json& arguments, const TextLimits& limits);

/// Text in double quotes, with the escapes of C++ where needed.
std::string Quoted(const std::string& text);

} // namespace kinora::trace
