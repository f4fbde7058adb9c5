#include "host/core/BusyWait.h"

#include <fmt/format.h>

namespace kinora::host {
namespace {

constexpr std::uint32_t retryMs = 250;
constexpr std::uint32_t noticeEveryMs = 5000;

} // namespace

BusyWait::BusyWait(double limitSeconds, std::function<void(const std::string&)> notice)
    : m_limitSeconds(limitSeconds), m_notice(std::move(notice)) {}

std::optional<std::uint32_t> BusyWait::OnRejected(std::uint32_t elapsedMs) {
    const bool isNewCall = elapsedMs < m_lastElapsedMs;
    if (isNewCall) {
        m_nextNoticeMs = 0;
    }
    m_lastElapsedMs = elapsedMs;
    const double elapsedSeconds = elapsedMs / 1000.0;
    if (elapsedSeconds >= m_limitSeconds) {
        m_notice(fmt::format("The desktop was busy for {:.0f} s; giving the call up. Close its dialogs, or raise "
                             "\"desktop.busyTimeout\" in the scenario.",
                             elapsedSeconds));
        return std::nullopt;
    }
    if (elapsedMs >= m_nextNoticeMs) {
        m_notice(fmt::format("The desktop is busy (is a dialog open?); waiting, {:.0f} s left.",
                             m_limitSeconds - elapsedSeconds));
        m_nextNoticeMs = elapsedMs + noticeEveryMs;
    }
    return retryMs;
}

} // namespace kinora::host
