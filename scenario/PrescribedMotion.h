#pragma once

#include "scenario/Expression.h"

#include <algorithm>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace kinora::scenario {

/// The first of some pairs of time and value that is later than a time.
/// @pre  times ascend
template <class Row>
typename std::vector<Row>::const_iterator RowAfter(const std::vector<Row>& rows, double time) {
    return std::upper_bound(rows.begin(), rows.end(), time,
                            [](double wanted, const Row& row) { return wanted < row.first; });
}

/// A coordinate given by pairs of time and value, straight lines between them; it stands still before the first and
/// after the last.
struct MotionTable {
    /// Times strictly ascending; at least one row.
    std::vector<std::pair<double, double>> rows;
    double Evaluate(double time) const;
    /// Slope of the piece that begins at a time or has begun before it; 0 before the first row and from the last on.
    double Slope(double time) const;
};

/// A joint's coordinate as a function of time.
class PrescribedMotion {
public:
    explicit PrescribedMotion(Expression expression) : m_source(std::move(expression)) {}
    explicit PrescribedMotion(MotionTable table) : m_source(std::move(table)) {}

    /// @return the coordinate, metres or radians; may be infinite or NaN where an expression is
    double Evaluate(double time) const;

    /// The exact time derivative of the coordinate, metres or radians per second; at a corner that of the time that
    /// follows.
    /// @return always finite, so that it can be written down and read again: 0 where there is no finite speed, as of
    ///         sqrt(t) at 0
    double Speed(double time) const;

    /// One line for people.
    std::string Description() const;

    /// The formula, or every row of the table: two motions with the same one are the same.
    std::string Definition() const;

private:
    std::variant<Expression, MotionTable> m_source;
};

} // namespace kinora::scenario
