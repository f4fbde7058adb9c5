#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace kinora::host {

/// How long a desktop that turns calls away (a dialog is open, it is solving) is waited for.
class BusyWait {
public:
    /// @param limitSeconds  how long one call is tried
    /// @param notice        hears, at once and then every five seconds, that the program waits, and when it gives up
    BusyWait(double limitSeconds, std::function<void(const std::string&)> notice);

    /// A call was turned away.
    /// @param elapsedMs  since the call was first made
    /// @return milliseconds until the next try; nothing to give the call up
    std::optional<std::uint32_t> OnRejected(std::uint32_t elapsedMs);

private:
    double m_limitSeconds;
    std::function<void(const std::string&)> m_notice;
    std::uint32_t m_lastElapsedMs = 0;
    std::uint32_t m_nextNoticeMs = 0;
};

} // namespace kinora::host
