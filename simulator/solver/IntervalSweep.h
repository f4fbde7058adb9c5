#pragma once
// Which of many things may meet, by their extents in one direction.
#include <algorithm>
#include <cstdint>
#include <numeric>
#include <utility>
#include <vector>

namespace vantor::solver {

/// Calls visit(i, j), i < j, for every two intervals (lowest, highest) that overlap or touch.
template <class Visit>
void ForOverlappingIntervals(const std::vector<std::pair<double, double>>& intervals, const Visit& visit) {
    using Index = std::uint32_t;
    std::vector<Index> order(intervals.size()), active;
    std::iota(order.begin(), order.end(), Index(0));
    std::stable_sort(order.begin(), order.end(),
                     [&](Index a, Index b) { return intervals[a].first < intervals[b].first; });
    for (const Index i : order) {
        active.erase(std::remove_if(active.begin(), active.end(),
                                    [&](Index other) { return intervals[other].second < intervals[i].first; }),
                     active.end());
        for (const Index other : active) {
            visit(std::min(i, other), std::max(i, other));
        }
        active.push_back(i);
    }
}

} // namespace vantor::solver
