#pragma once

#include <string>

namespace kinora::trace {

/// What a registration did, as a line for the user.
struct RegistrationResult {
    bool succeeded = false;
    std::wstring text;
};

/// Registers vantor-trace-server.dll, which lies beside this program: for the machine, and where that may not be
/// written for the current user, if the system looks at the user's classes.
RegistrationResult RegisterServer();

/// Takes back what RegisterServer wrote, and nothing else.
RegistrationResult UnregisterServer();

} // namespace kinora::trace
