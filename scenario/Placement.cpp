#include "scenario/Placement.h"

#include <algorithm>
#include <fmt/format.h>

namespace kinora::scenario {
namespace {

/// From one row of a table to the next one, about the global axes.
Vector PieceBefore(std::vector<std::pair<double, Quaternion>>::const_iterator after) {
    return RotationVector(after->second * (after - 1)->second.conjugate());
}

double SecondsBefore(std::vector<std::pair<double, Quaternion>>::const_iterator after) {
    return after->first - (after - 1)->first;
}

Quaternion Evaluate(const TurnTable& table, double time) {
    const auto after = RowAfter(table.rows, time);
    if (after == table.rows.begin()) {
        return table.rows.front().second;
    }
    const auto& [time0, turn0] = *(after - 1);
    if (after == table.rows.end()) {
        return turn0;
    }
    return TurnBy(PieceBefore(after) * ((time - time0) / SecondsBefore(after))) * turn0;
}

Vector AngularVelocity(const TurnTable& table, double time) {
    const auto after = RowAfter(table.rows, time);
    if (after == table.rows.begin() || after == table.rows.end()) {
        return Vector::Zero();
    }
    return PieceBefore(after) / SecondsBefore(after);
}

Vector SweptBetween(const TurnTable& table, double from, double to) {
    Vector swept_W = Vector::Zero();
    for (auto after = RowAfter(table.rows, from); after != table.rows.end(); ++after) {
        if (after == table.rows.begin()) {
            continue;
        }
        const double begin = (after - 1)->first;
        if (begin >= to) {
            break;
        }
        const double seconds = std::min(to, after->first) - std::max(from, begin);
        swept_W += PieceBefore(after) * (seconds / SecondsBefore(after));
    }
    return swept_W;
}

std::string AboutText(const Vector& axis) {
    return fmt::format(" about {}, {}, {}", axis.x(), axis.y(), axis.z());
}

} // namespace

PrescribedTurn::PrescribedTurn() : m_source(AxisTurn{Vector::UnitX(), PrescribedMotion(Expression())}) {}

Quaternion PrescribedTurn::Evaluate(double time) const {
    if (const auto* table = std::get_if<TurnTable>(&m_source)) {
        return scenario::Evaluate(*table, time);
    }
    const auto& [axis_W, angle] = std::get<AxisTurn>(m_source);
    return Quaternion(Eigen::AngleAxisd(angle.Evaluate(time), axis_W));
}

Vector PrescribedTurn::AngularVelocity(double time) const {
    if (const auto* table = std::get_if<TurnTable>(&m_source)) {
        return scenario::AngularVelocity(*table, time);
    }
    const auto& [axis_W, angle] = std::get<AxisTurn>(m_source);
    return axis_W * angle.Speed(time);
}

Vector PrescribedTurn::SweptBetween(double from, double to) const {
    if (const auto* table = std::get_if<TurnTable>(&m_source)) {
        return scenario::SweptBetween(*table, from, to);
    }
    const auto& [axis_W, angle] = std::get<AxisTurn>(m_source);
    return axis_W * (angle.Evaluate(to) - angle.Evaluate(from));
}

std::string PrescribedTurn::Description() const {
    if (const auto* table = std::get_if<TurnTable>(&m_source)) {
        return fmt::format("table of {} turns, {} s to {} s", table->rows.size(), table->rows.front().first,
                           table->rows.back().first);
    }
    const auto& [axis_W, angle] = std::get<AxisTurn>(m_source);
    return angle.Description() + AboutText(axis_W);
}

std::string PrescribedTurn::Definition() const {
    const auto* table = std::get_if<TurnTable>(&m_source);
    if (!table) {
        const auto& [axis_W, angle] = std::get<AxisTurn>(m_source);
        return angle.Definition() + AboutText(axis_W);
    }
    std::string text;
    for (const auto& [time, turn] : table->rows) {
        text +=
            fmt::format("{}{} s: {} {} {} {}", text.empty() ? "" : ", ", time, turn.w(), turn.x(), turn.y(), turn.z());
    }
    return text;
}

} // namespace kinora::scenario
