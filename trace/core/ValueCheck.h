#pragma once

#include <nlohmann/json.hpp>

namespace kinora::trace {

/// True when this is a value as a trace holds them, {"vt":"R8","v":0.5}, with everything in it of the right kind: what
/// presents values relies on that.
bool IsValue(const nlohmann::json& value);

/// True for a list of values.
bool AreValues(const nlohmann::json& list);

} // namespace kinora::trace
