#pragma once

#include <string>
#include <vector>

namespace kinora::trace {

/// Path of the object that a call gave, for people to read: SetActiveDesign("D") on desktop.project("P") gives
/// desktop.project("P").design("D").
/// @param parent  path of the object that was called
/// @param method  the method's name as the client wrote it
/// @param texts   the call's text arguments, first argument first, others left out
std::string ChildPath(const std::string& parent, const std::string& method, const std::vector<std::string>& texts);

/// How many steps a path has: 0 for desktop, 1 for desktop.project("P").
int PathDepth(const std::string& path);

/// The last step of a path without its argument: design for desktop.project("P").design("D").
std::string LastStep(const std::string& path);

} // namespace kinora::trace
