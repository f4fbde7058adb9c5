#pragma once

#include "programs/ClassRegistration.h"
#include "simulator/automation/ClassIds.h"

namespace vantor::automation {

/// The desktop's own ProgID, which the simulator takes only when nobody holds it.
inline constexpr const wchar_t* desktopProgId = L"Pellux.VantorDesktop";

using kinora::programs::RegistrationResult;

/// Registers this program, and the DLL beside it, for the current user; for the machine where the system does not look
/// at the user's classes. It has failed when either is not registered, as when the DLL is not there.
/// @param alsoDefault takes the desktop's own ProgID for the program too, unless another class holds it.
RegistrationResult RegisterServer(bool alsoDefault);

/// Takes back what RegisterServer wrote, and nothing else.
RegistrationResult UnregisterServer();

} // namespace vantor::automation
