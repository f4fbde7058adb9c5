#pragma once

namespace kinora::host {

/// Initialises COM on the thread, single-threaded as the coupling does, and lets go of it at the end.
class ComScope {
public:
    /// @throws RunError  COM cannot be initialised
    ComScope();
    ~ComScope();
    ComScope(const ComScope&) = delete;
    ComScope& operator=(const ComScope&) = delete;
};

} // namespace kinora::host
