#include "simulator/automation/Lifetime.h"

#include <algorithm>

namespace vantor::automation {
namespace {

constexpr std::chrono::seconds lingering(2);
constexpr std::chrono::seconds patience(10);

} // namespace

Lifetime::Lifetime(std::optional<std::chrono::seconds> idleTime) : m_idleTime(idleTime) {}

void Lifetime::AddObject() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    ++m_objects;
}

void Lifetime::RemoveObject() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    --m_objects;
    m_lastRelease = Clock::now();
}

void Lifetime::RequestQuit() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_quitting = true;
    m_quitRequested = Clock::now();
}

bool Lifetime::IsQuitting() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_quitting;
}

bool Lifetime::MayLeave(Clock::time_point now) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_objects > 0) {
        return m_quitting && now - m_quitRequested >= patience;
    }
    if (!m_quitting && !m_idleTime) {
        return false;
    }
    const auto wait = m_quitting ? lingering : std::max(*m_idleTime, lingering);
    return now - m_lastRelease >= wait;
}

} // namespace vantor::automation
