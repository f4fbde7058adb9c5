#pragma once

namespace kinora::programs {

/// Whether this program alone has a console that a user sees, which goes with the program: it was started by a double
/// click, or by dropping a file on it. Never elsewhere than on Windows.
bool HasConsoleForItself();

/// Lets the user read what stands in such a console, until a key is pressed.
void WaitForKey();

/// Has WaitForKey return at once from now on: the console is being closed.
void ExpectNoKey();

} // namespace kinora::programs
