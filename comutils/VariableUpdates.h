#pragma once

#include <windows.h>

#include <oaidl.h>

#include <string_view>
#include <utility>
#include <vector>

/// New values of a design's variables.
namespace VariableUpdates {

/// Name and value, which somebody else keeps.
using Update = std::pair<std::string_view, std::string_view>;

/// Puts the updates in the order of their names; of several with one name the first stays.
void Sort(std::vector<Update>& updates);

/// What `CComUtils::UpdateVariables` does, without a copy of names and values.
/// @param updates  in the order in which they are sent
/// @return false when the call fails
bool Send(IDispatch* design, const std::vector<Update>& updates);

} // namespace VariableUpdates
