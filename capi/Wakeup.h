#pragma once

#include <memory>

namespace kinora::capi {

/// What a handle's thread waits for between its calls. Where there are window messages it serves them meanwhile, as COM
/// asks of a single-threaded apartment.
class Wakeup {
public:
    /// @throws std::bad_alloc  the system has none left
    Wakeup();
    ~Wakeup();
    Wakeup(const Wakeup&) = delete;
    Wakeup& operator=(const Wakeup&) = delete;

    /// From any thread. A notice is kept until the next wait.
    void Notify() noexcept;

    /// Returns on a notice, or on one since the last wait.
    void Wait() noexcept;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace kinora::capi
