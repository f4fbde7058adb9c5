#include "scenario/PrescribedMotion.h"

#include <cmath>
#include <fmt/format.h>

namespace kinora::scenario {

double MotionTable::Evaluate(double time) const {
    const auto after = RowAfter(rows, time);
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

double MotionTable::Slope(double time) const {
    const auto after = RowAfter(rows, time);
    if (after == rows.begin() || after == rows.end()) {
        return 0.0;
    }
    const auto& [time0, value0] = *(after - 1);
    const auto& [time1, value1] = *after;
    return (value1 - value0) / (time1 - time0);
}

double PrescribedMotion::Evaluate(double time) const {
    if (const auto* table = std::get_if<MotionTable>(&m_source)) {
        return table->Evaluate(time);
    }
    return std::get<Expression>(m_source).Evaluate(time);
}

double PrescribedMotion::Speed(double time) const {
    const auto* table = std::get_if<MotionTable>(&m_source);
    const double speed = table ? table->Slope(time) : std::get<Expression>(m_source).Slope(time);
    return std::isfinite(speed) ? speed : 0.0;
}

std::string PrescribedMotion::Description() const {
    if (const auto* table = std::get_if<MotionTable>(&m_source)) {
        return fmt::format("table of {} rows, {} s to {} s", table->rows.size(), table->rows.front().first,
                           table->rows.back().first);
    }
    return std::get<Expression>(m_source).Formula();
}

std::string PrescribedMotion::Definition() const {
    const auto* table = std::get_if<MotionTable>(&m_source);
    if (!table) {
        return std::get<Expression>(m_source).Formula();
    }
    std::string text;
    for (const auto& [time, value] : table->rows) {
        text += fmt::format("{}{} s: {}", text.empty() ? "" : ", ", time, value);
    }
    return text;
}

} // namespace kinora::scenario
