#include "scenario/PrescribedMotion.h"

#include <algorithm>
#include <fmt/format.h>

namespace kinora::scenario {

double MotionTable::Evaluate(double time) const {
    const auto after = std::upper_bound(rows.begin(), rows.end(), time,
                                        [](double wanted, const auto& row) { return wanted < row.first; });
    if (after == rows.begin()) {
        return rows.front().second;
    }
    if (after == rows.end()) {
        return rows.back().second;
    }
    const auto& [time0, value0] = *(after - 1);
    const auto& [time1, value1] = *after;
    return value0 + (value1 - value0) * ((time - time0) / (time1 - time0));
}

double PrescribedMotion::Evaluate(double time) const {
    if (const auto* table = std::get_if<MotionTable>(&m_source)) {
        return table->Evaluate(time);
    }
    return std::get<Expression>(m_source).Evaluate(time);
}

std::string PrescribedMotion::Description() const {
    if (const auto* table = std::get_if<MotionTable>(&m_source)) {
        return fmt::format("table of {} rows, {} s to {} s", table->rows.size(), table->rows.front().first,
                           table->rows.back().first);
    }
    return std::get<Expression>(m_source).Formula();
}

} // namespace kinora::scenario
