#pragma once

#include "trace/core/Session.h"

#include <ostream>
#include <string>
#include <vector>

namespace kinora::trace {

/// What a session spent on one method, on all objects together. Times in microseconds.
struct MethodStats {
    std::string method;
    std::size_t count = 0;
    std::size_t failed = 0;
    double total = 0.0;
    double median = 0.0;
    double largest = 0.0;
    /// Of the time spent in all calls and look-ups, 0 to 1.
    double share = 0.0;
};

/// One entry per method, and one for all look-ups of names; the most expensive first. Calls that never came back do not
/// count.
std::vector<MethodStats> ComputeStats(const Session& session);

/// Writes the entries as a table.
void PrintStats(const std::vector<MethodStats>& entries, std::ostream& out);

} // namespace kinora::trace
