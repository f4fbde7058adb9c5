#pragma once

#include "simulator/commands/Value.h"

#include <string>
#include <utility>
#include <vector>

namespace vantor::commands {

/// The pairs "Key:=", value of an array that has no "NAME:"; keys come without ":=".
/// @throws model::DesktopError for a key that is no text or does not end in ":=", and for a missing value.
std::vector<std::pair<std::string, const Value*>> ReadPairs(const Value::List& elements, const std::string& location);

} // namespace vantor::commands
