#pragma once

#include <chrono>

namespace kinora::trace {

/// Runs from its creation on.
class Stopwatch {
public:
    double Microseconds() const {
        return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - m_start).count();
    }

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

} // namespace kinora::trace
