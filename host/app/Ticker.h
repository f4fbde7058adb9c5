#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace kinora::host {

/// Counts the periods that some work takes, in a thread of its own: whoever works is busy.
class Ticker {
public:
    /// @param tick called with 1, 2, 3, ... when so many periods of the work have passed; must not throw and must not
    ///        call the ticker
    Ticker(std::chrono::milliseconds period, std::function<void(int)> tick);
    ~Ticker();
    Ticker(const Ticker&) = delete;
    Ticker& operator=(const Ticker&) = delete;

    /// Work begins; what was counted before is done.
    void Begin();

    /// The work is done. There is no tick after that until other work begins.
    void End();

    /// Does something while no tick is under way; the count goes on.
    template <class Action>
    void Between(Action action) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        action();
    }

private:
    void Run();

    const std::chrono::milliseconds m_period;
    const std::function<void(int)> m_tick;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::chrono::steady_clock::time_point m_start;
    /// Periods told of since the work began; negative while there is none.
    int m_count = -1;
    bool m_isLeaving = false;
    /// Last, so that everything that it needs is there before it starts.
    std::thread m_thread;
};

} // namespace kinora::host
