#pragma once

#include "programs/ClassRegistration.h"

namespace kinora::trace {

using programs::RegistrationResult;

/// Registers vantor-trace-server.dll, which lies beside this program: for the current user; for the machine where the
/// system does not look at the user's classes.
RegistrationResult RegisterServer();

/// Takes back what RegisterServer wrote, and nothing else.
RegistrationResult UnregisterServer();

} // namespace kinora::trace
