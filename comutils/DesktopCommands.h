#pragma once

#include "comutils/Dispatch.h"

#include <string>
#include <string_view>
#include <vector>

/// Commands of the application, the desktop and the desktop's list of projects. One function per command.
namespace DesktopCommands {

/// "GetAppDesktop" of the application.
/// @param desktop  receives what the call gives, without a look at its type: an application that answers here gives its
///                 desktop
/// @return false when the call fails
bool GetAppDesktop(IDispatch* application, CObject& desktop);

/// "NewProject". @return null unless the result is an object
CObject NewProject(IDispatch* desktop);

/// "OpenProject". @return null unless the result is an object
CObject OpenProject(IDispatch* desktop, std::string_view path);

/// "GetProjects". @return the list of the open projects; null unless the result is an object
CObject GetProjects(IDispatch* desktop);

/// "Count" of a list of projects. @param count  receives the result's four bytes as an integer, whatever its type
bool GetCount(IDispatch* projects, LONG& count);

/// "Item" of a list of projects. @return null unless the result is an object
CObject GetItem(IDispatch* projects, LONG index);

/// "GetMessages" for a project and a design of it.
/// @param messages  replaced on success, also by none when the result is no list
bool GetMessages(IDispatch* desktop, std::string_view project, std::string_view design, int severity,
                 std::vector<std::string>& messages);

/// "AddMessage".
bool AddMessage(IDispatch* desktop, std::string_view project, std::string_view design, int severity,
                std::string_view text);

/// "ClearMessages".
bool ClearMessages(IDispatch* desktop, std::string_view project, std::string_view design, int severity);

/// "GetRegistryString". @return empty on failure and when the setting is no text
std::string GetRegistryString(IDispatch* desktop, std::string_view key);

/// "QuitApplication".
bool QuitApplication(IDispatch* desktop);

} // namespace DesktopCommands
