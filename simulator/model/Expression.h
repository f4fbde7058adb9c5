#pragma once

#include "simulator/model/Units.h"

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>

namespace vantor::model {

/// An expression that cannot be evaluated; the text says what and at which position (1 = first character).
class ExpressionError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Gives the value of a name that stands in an expression; nothing when there is no such name.
/// May throw ExpressionError for a name whose own value cannot be evaluated.
using NameLookup = std::function<std::optional<Quantity>(const std::string& name)>;

/// Evaluates an expression of the desktop.
///
/// Numbers may carry a unit (10mm, 0.1Meter, 0.5Rad, 1s, 1e-3mm), names refer to variables and may hold points
/// (Force_Rotor.Force_x). Operators: + - * / ^ (right to left), unary + and -, parentheses. Functions: sin cos tan
/// asin acos atan atan2 sqrt abs exp ln log10 pow min max. Constant: pi. Angles are radians; a plain number stands for
/// radians where an angle is meant.
/// @throws ExpressionError for bad syntax, unknown names and units, dimensions that do not go together, and results
///         that are not finite.
Quantity Evaluate(const std::string& text, const NameLookup& lookup);

/// The value of an expression where a length is meant, in metres; a plain number is in model units.
/// @param modelUnit size of the model unit in metres.
double EvaluateLength(const std::string& text, const NameLookup& lookup, double modelUnit);

/// The value of an expression where an angle is meant, in radians; a plain number is radians.
double EvaluateAngle(const std::string& text, const NameLookup& lookup);

} // namespace vantor::model
