#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace kinora::scenario {

struct UnaryFunction;
struct BinaryFunction;

/// Quantities that formulas may name, by their names: SI units.
using NamedValues = std::map<std::string, double, std::less<>>;

/// A formula of time and, where that makes sense, of a joint's coordinate or of a place.
///
/// Numbers, + - * / ^ (right-associative), parentheses, the variables `t` (seconds), `q` (coordinate) and `x`, `y`,
/// `z` (place, metres), the constants `pi`, `deg` (pi/180), `mm` (0.001), `gram` (0.001) and `gn` (9.80665, free
/// fall), and the functions sin, cos, tan, asin, acos, atan, sqrt, exp, log, abs, step (0 below 0, else 1), min, max
/// and atan2. Angles are radians: write 30*deg.
class Expression {
public:
    /// Which variables a formula may name.
    enum class Variables { None, Time, TimeAndCoordinate, TimeAndPlace };

    /// What the variables stand for.
    struct Values {
        double t = 0.0;
        double q = 0.0;
        double x = 0.0;
        double y = 0.0;
        double z = 0.0;
    };

    /// Zero.
    Expression() : Expression(0.0) {}

    /// A constant.
    explicit Expression(double value);

    /// @param parameters  what it may name besides; their values are taken in
    /// @throws std::invalid_argument  one line that quotes the formula and says what is wrong at which column
    static Expression Parse(std::string_view formula, Variables variables, const NamedValues& parameters = {});

    /// The names in a formula, right or wrong, in their order.
    static std::vector<std::string> NamesIn(std::string_view formula);

    /// Whether a name stands for a variable, constant or function already.
    static bool IsReserved(std::string_view name);

    /// @return what the formula gives; not finite where the mathematics is not (1/0, sqrt(-1))
    double Evaluate(const Values& values) const;

    /// As above, of a formula that names no place.
    /// @param time        value of t, seconds
    /// @param coordinate  value of q
    double Evaluate(double time, double coordinate = 0.0) const;

    /// The exact derivative with respect to time, the coordinate held fixed. Where the left and the right side differ
    /// (abs, min, max, step) it is that of the time that follows: abs(t) gives 1 at 0.
    ///
    /// @pre    the formula names no place
    /// @return not finite where the mathematics has no finite derivative (sqrt(t) at 0) or the formula no value
    double Slope(double time, double coordinate = 0.0) const;

    /// The formula as it was written, with the values of the parameters that it names: "2*gap (gap = 0.004)".
    const std::string& Formula() const { return m_formula; }

private:
    friend class ExpressionParser;
    enum class Operation { Number, Variable, Add, Subtract, Multiply, Divide, Power, Negate, Unary, Binary };
    struct Instruction {
        Operation operation = Operation::Number;
        double number = 0.0;
        const UnaryFunction* unary = nullptr;
        const BinaryFunction* binary = nullptr;
        /// Which of the values, in their order.
        std::size_t variable = 0;
    };

    /// The one interpreter, for numbers and for numbers that carry their derivative along.
    template <class Value>
    Value Run(const std::array<Value, 5>& variables) const;

    std::string m_formula;
    /// In postfix order.
    std::vector<Instruction> m_program;
};

} // namespace kinora::scenario
