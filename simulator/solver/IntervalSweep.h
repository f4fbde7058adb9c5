#pragma once
// Which of many things may meet, by their extents in one direction.
#include <algorithm>
#include <cstdint>
#include <numeric>
#include <utility>
#include <vector>

namespace vantor::solver {

/// Lowest and highest value.
using Interval = std::pair<double, double>;

/// Hands out intervals by their lowest values, and remembers those that have not ended.
class IntervalSweep {
public:
    using Index = std::uint32_t;

    /// @param intervals  must outlive this object
    explicit IntervalSweep(const std::vector<Interval>& intervals) : m_intervals(intervals), m_order(intervals.size()) {
        std::iota(m_order.begin(), m_order.end(), Index(0));
        std::stable_sort(m_order.begin(), m_order.end(),
                         [&](Index a, Index b) { return intervals[a].first < intervals[b].first; });
    }
    bool IsDone() const { return m_next == m_order.size(); }
    /// @pre !IsDone()
    Index Next() const { return m_order[m_next]; }
    double NextLowest() const { return m_intervals[Next()].first; }
    /// The next one is remembered.
    void Advance() { m_active.push_back(m_order[m_next++]); }
    /// Those that have begun and do not end below a value, which never falls.
    const std::vector<Index>& ActiveAt(double value) {
        m_active.erase(
            std::remove_if(m_active.begin(), m_active.end(), [&](Index i) { return m_intervals[i].second < value; }),
            m_active.end());
        return m_active;
    }

private:
    const std::vector<Interval>& m_intervals;
    std::vector<Index> m_order, m_active;
    std::size_t m_next = 0;
};

/// Calls visit(i, j), i < j, for every two intervals that overlap or touch.
template <class Visit>
void ForOverlapping(const std::vector<Interval>& intervals, const Visit& visit) {
    for (IntervalSweep sweep(intervals); !sweep.IsDone(); sweep.Advance()) {
        const IntervalSweep::Index i = sweep.Next();
        for (const IntervalSweep::Index other : sweep.ActiveAt(sweep.NextLowest())) {
            visit(std::min(i, other), std::max(i, other));
        }
    }
}

/// Calls visit(i, j) for every interval i of one list and j of another that overlap or touch.
template <class Visit>
void ForOverlapping(const std::vector<Interval>& first, const std::vector<Interval>& second, const Visit& visit) {
    IntervalSweep firstSweep(first), secondSweep(second);
    while (!firstSweep.IsDone() || !secondSweep.IsDone()) {
        if (secondSweep.IsDone() || (!firstSweep.IsDone() && firstSweep.NextLowest() < secondSweep.NextLowest())) {
            for (const IntervalSweep::Index j : secondSweep.ActiveAt(firstSweep.NextLowest())) {
                visit(firstSweep.Next(), j);
            }
            firstSweep.Advance();
        } else {
            for (const IntervalSweep::Index i : firstSweep.ActiveAt(secondSweep.NextLowest())) {
                visit(i, secondSweep.Next());
            }
            secondSweep.Advance();
        }
    }
}

} // namespace vantor::solver
