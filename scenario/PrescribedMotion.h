#pragma once

#include "scenario/Expression.h"

#include <utility>
#include <variant>
#include <vector>

namespace kinora::scenario {

/// A coordinate given by pairs of time and value, straight lines between them; it stands still before the first and
/// after the last.
struct MotionTable {
    /// Times strictly ascending; at least one row.
    std::vector<std::pair<double, double>> rows;
    double Evaluate(double time) const;
};

/// A joint's coordinate as a function of time.
class PrescribedMotion {
public:
    explicit PrescribedMotion(Expression expression) : m_source(std::move(expression)) {}
    explicit PrescribedMotion(MotionTable table) : m_source(std::move(table)) {}

    /// @return the coordinate, metres or radians; may be infinite or NaN where an expression is
    double Evaluate(double time) const;

    /// One line for people.
    std::string Description() const;

private:
    std::variant<Expression, MotionTable> m_source;
};

} // namespace kinora::scenario
