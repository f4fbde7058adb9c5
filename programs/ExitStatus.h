#pragma once

namespace kinora::programs {

/// What every program answers to the one who started it.
enum class ExitStatus {
    Done = 0,
    /// The work failed: the desktop, a file that cannot be written, a registration.
    Failed = 1,
    /// The command line, or a file that was to be read, is wrong.
    BadInput = 2
};

} // namespace kinora::programs
