#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace kinora::host {

/// True when projects are open in the desktop of a version ("" for the plain one); false when none are, when it cannot
/// be asked, and for a desktop that lives in this very process, which nobody else uses. Its own client lets go at once.
/// Needs a ComScope around it.
bool HasOpenProjects(const std::string& version);

/// Closes the project of a file in the desktop of a version without saving it; nothing happens when it is not open
/// there, the desktop cannot be asked, or lives in this very process and so has been left nothing. Waits until what a
/// dead process held is free. Needs a ComScope around it.
void CloseProjectOf(const std::filesystem::path& file, const std::string& version);

/// What to try when no desktop starts.
std::vector<std::string> LaunchAdvice();

/// What helps on this system when no desktop starts after one has died; empty for nothing.
std::string LaunchHint();

} // namespace kinora::host
