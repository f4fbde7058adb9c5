#pragma once

#include <chrono>
#include <mutex>
#include <optional>

namespace vantor::automation {

/// Decides when the server leaves: counts the objects that clients hold and remembers when the last one went.
///
/// Safe to use from any thread.
class Lifetime {
public:
    using Clock = std::chrono::steady_clock;

    /// @param idleTime how long the server stays without clients; at least two seconds, so that a client that comes
    ///                 right after another finds it. None: until it is to quit.
    explicit Lifetime(std::optional<std::chrono::seconds> idleTime);

    void AddObject();
    void RemoveObject();

    /// The desktop is to leave.
    void RequestQuit();
    bool IsQuitting() const;

    /// True when the server may leave now: nobody holds an object and the idle time is over (two seconds after a
    /// request to quit; ten when the client that asked holds on to objects).
    bool MayLeave(Clock::time_point now) const;

private:
    const std::optional<std::chrono::seconds> m_idleTime;
    mutable std::mutex m_mutex;
    int m_objects = 0;
    bool m_quitting = false;
    Clock::time_point m_quitRequested;
    Clock::time_point m_lastRelease = Clock::now();
};

} // namespace vantor::automation
