#pragma once

#include "scenario/Scenario.h"

#include <map>
#include <string>
#include <vector>

namespace kinora::host {

/// What the numbers of a run depend on, by where it stands in the scenario ("/joints/slide/free/spring/stiffness";
/// bodies and joints by their names) with its value as text. Of the geometry file a digest of the content.
using RunIdentity = std::map<std::string, std::string>;

/// The end time is no part of it: a longer run begins as a shorter one.
/// @throws InputError  the geometry file cannot be read
RunIdentity IdentityOf(const scenario::Scenario& scenario);

/// One line for each key that differs, with both values.
std::vector<std::string> Differences(const RunIdentity& before, const RunIdentity& now);

} // namespace kinora::host
