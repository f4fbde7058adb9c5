#pragma once

#include <chrono>
#include <functional>
#include <mutex>

namespace vantor::automation {

/// Decides when the server leaves: counts the objects that clients hold and remembers when the last one went.
///
/// Safe to use from any thread.
class Lifetime {
public:
    using Clock = std::chrono::steady_clock;

    /// @param idleTime how long the server stays without clients; at least two seconds, so that a client that comes
    ///                 right after another finds it.
    explicit Lifetime(std::chrono::seconds idleTime);

    void AddObject();
    void RemoveObject();

    /// @param action run by the first `RequestQuit`, before that returns. Set it before clients come.
    void OnQuit(std::function<void()> action) { m_onQuit = std::move(action); }

    /// A client has asked the desktop to leave.
    void RequestQuit();
    bool IsQuitting() const;

    /// True when the server may leave now: nobody holds an object and the idle time is over (two seconds after a
    /// request to quit; ten when clients hold on to objects in spite of it).
    bool MayLeave(Clock::time_point now) const;

private:
    const std::chrono::seconds m_idleTime;
    std::function<void()> m_onQuit;
    mutable std::mutex m_mutex;
    int m_objects = 0;
    bool m_quitting = false;
    Clock::time_point m_quitRequested;
    Clock::time_point m_lastRelease = Clock::now();
};

} // namespace vantor::automation
