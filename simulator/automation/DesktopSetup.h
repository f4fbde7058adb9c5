#pragma once

#include "simulator/model/Desktop.h"

#include <memory>
#include <string>

namespace vantor::automation {

/// Value of the desktop option when nobody chooses one.
inline constexpr const char* usualUpdateReports = "Automatically";

/// The library of materials with the user's own, from the file that VANTOR_SIM_MATERIALS names.
/// @throws model::DesktopError for a materials file that cannot be used.
model::MaterialTable MaterialsLibrary();

/// A desktop as a server begins with it: with its library and options, as the environment says. A materials file that
/// cannot be used becomes a message that every client sees.
/// @param updateReports  value of the desktop option unless VANTOR_SIM_UPDATE_REPORTS has one
std::shared_ptr<model::Desktop> SetUpDesktop(const std::string& updateReports);

} // namespace vantor::automation
