#pragma once

#include "capi/kinora_veltrix.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <optional>

namespace kinora::capi {

/// How long calls that a busy desktop turns away are repeated. Safe to use from any thread.
class BusyPatience {
public:
    /// @param limitMs  for one call; KV_WAIT_FOREVER
    explicit BusyPatience(std::uint32_t limitMs) : m_limitMs(limitMs) {}

    /// A call was turned away.
    /// @param elapsedMs  since the call was first made
    /// @return milliseconds until the next try; nothing to give the call up
    std::optional<std::uint32_t> OnRejected(std::uint32_t elapsedMs) const {
        constexpr std::uint32_t retryMs = 100;
        if (m_hasEnded || (m_limitMs != KV_WAIT_FOREVER && elapsedMs >= m_limitMs)) {
            return std::nullopt;
        }
        return std::min(retryMs, m_limitMs - elapsedMs);
    }

    /// From now on nothing is repeated.
    void End() { m_hasEnded = true; }

private:
    const std::uint32_t m_limitMs;
    std::atomic<bool> m_hasEnded{false};
};

} // namespace kinora::capi
