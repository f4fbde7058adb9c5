#pragma once

#include <string>

namespace kinora::host {

/// True when projects are open in the desktop of a version ("" for the plain one); false when none are, or when it
/// cannot be asked. Its own client lets go at once. Needs a ComScope around it.
bool HasOpenProjects(const std::string& version);

/// What helps on this system when no desktop starts after one has died; empty for nothing.
std::string LaunchHint();

} // namespace kinora::host
