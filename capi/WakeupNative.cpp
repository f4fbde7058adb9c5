#include "capi/Wakeup.h"

#include <condition_variable>
#include <mutex>

namespace kinora::capi {

struct Wakeup::State {
    std::mutex mutex;
    std::condition_variable changed;
    bool isNotified = false;
};

Wakeup::Wakeup() : m_state(std::make_unique<State>()) {}

Wakeup::~Wakeup() = default;

void Wakeup::Notify() noexcept {
    {
        const std::lock_guard<std::mutex> lock(m_state->mutex);
        m_state->isNotified = true;
    }
    m_state->changed.notify_one();
}

void Wakeup::Wait() noexcept {
    std::unique_lock<std::mutex> lock(m_state->mutex);
    m_state->changed.wait(lock, [this] { return m_state->isNotified; });
    m_state->isNotified = false;
}

} // namespace kinora::capi
