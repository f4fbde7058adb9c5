#include "host/app/Ticker.h"

#include <utility>

namespace kinora::host {

Ticker::Ticker(std::chrono::milliseconds period, std::function<void(int)> tick)
    : m_period(period), m_tick(std::move(tick)), m_thread([this] { Run(); }) {}

Ticker::~Ticker() {
    Between([this] { m_isLeaving = true; });
    m_changed.notify_all();
    m_thread.join();
}

void Ticker::Begin() {
    Between([this] {
        m_start = std::chrono::steady_clock::now();
        m_count = 0;
    });
    m_changed.notify_all();
}

void Ticker::End() {
    Between([this] { m_count = -1; });
}

void Ticker::Run() {
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_isLeaving) {
        if (m_count < 0) {
            m_changed.wait(lock);
            continue;
        }
        const auto next = m_start + (m_count + 1) * m_period;
        if (std::chrono::steady_clock::now() < next) {
            m_changed.wait_until(lock, next);
        } else {
            m_tick(++m_count);
        }
    }
}

} // namespace kinora::host
