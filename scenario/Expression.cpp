#include "scenario/Expression.h"

#include "scenario/Text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <fmt/format.h>
#include <stdexcept>
#include <system_error>

namespace kinora::scenario {
namespace {

constexpr double pi = 3.14159265358979323846;

struct Constant {
    std::string_view name;
    double value;
};

/// A value and its derivative with respect to time.
struct Dual {
    double value = 0.0;
    double slope = 0.0;
};

} // namespace

/// What a name with one argument stands for.
struct UnaryFunction {
    std::string_view name;
    double (*value)(double);
    /// Derivative of the function of something that changes with time.
    double (*slope)(const Dual&);
};

/// What a name with two arguments stands for.
struct BinaryFunction {
    std::string_view name;
    double (*value)(double, double);
    double (*slope)(const Dual&, const Dual&);
};

namespace {

constexpr std::array<Constant, 5> constants = {
    {{"pi", pi}, {"deg", pi / 180.0}, {"mm", 0.001}, {"gram", 0.001}, {"gn", 9.80665}}};

/// The names of the values, in their order: one letter each.
constexpr std::string_view variableNames = "tqxyz";

struct AllowedVariables {
    std::string_view names;
    /// For people.
    const char* text;
};

AllowedVariables Allowed(Expression::Variables variables) {
    switch (variables) {
    case Expression::Variables::None:
        return {"", "a constant is wanted"};
    case Expression::Variables::Time:
        return {"t", "the only variable is t"};
    case Expression::Variables::TimeAndCoordinate:
        return {"tq", "the variables are t and q"};
    case Expression::Variables::TimeAndPlace:
        return {"txyz", "the variables are t, x, y and z"};
    }
    return {};
}

bool IsIn(std::string_view names, std::string_view name) {
    return name.size() == 1 && names.find(name) != std::string_view::npos;
}

/// Whether a character may stand in a name.
bool IsOfName(char character) {
    return std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '_';
}

std::string WithValues(std::string_view formula, const NamedValues& used) {
    std::string values;
    for (const auto& [name, value] : used) {
        values += fmt::format("{}{} = {}", values.empty() ? " (" : ", ", name, value);
    }
    return std::string(formula).append(values).append(used.empty() ? "" : ")");
}

/// The chain rule. What does not change stays, even where the outer derivative is infinite: sqrt(0) is a constant.
double Chained(double outer, double inner) {
    return inner == 0.0 ? 0.0 : outer * inner;
}

/// Slope of the one of two values that a function has chosen; where they are equal, the caller's choice of slopes.
double SlopeOfChosen(const Dual& a, const Dual& b, double chosen, double slopeWhenEqual) {
    return a.value == b.value ? slopeWhenEqual : chosen == a.value ? a.slope : b.slope;
}

/// Lambdas pick the overload for double on every standard library.
const std::array<UnaryFunction, 11> unaryFunctions = {{
    {"sin", [](double x) { return std::sin(x); }, [](const Dual& x) { return std::cos(x.value) * x.slope; }},
    {"cos", [](double x) { return std::cos(x); }, [](const Dual& x) { return -std::sin(x.value) * x.slope; }},
    {"tan", [](double x) { return std::tan(x); },
     [](const Dual& x) { return x.slope / (std::cos(x.value) * std::cos(x.value)); }},
    {"asin", [](double x) { return std::asin(x); },
     [](const Dual& x) { return Chained(1.0 / std::sqrt(1.0 - x.value * x.value), x.slope); }},
    {"acos", [](double x) { return std::acos(x); },
     [](const Dual& x) { return Chained(-1.0 / std::sqrt(1.0 - x.value * x.value), x.slope); }},
    {"atan", [](double x) { return std::atan(x); }, [](const Dual& x) { return x.slope / (1.0 + x.value * x.value); }},
    {"sqrt", [](double x) { return std::sqrt(x); },
     [](const Dual& x) { return Chained(0.5 / std::sqrt(x.value), x.slope); }},
    {"exp", [](double x) { return std::exp(x); }, [](const Dual& x) { return std::exp(x.value) * x.slope; }},
    {"log", [](double x) { return std::log(x); }, [](const Dual& x) { return Chained(1.0 / x.value, x.slope); }},
    {"abs", [](double x) { return std::fabs(x); },
     [](const Dual& x) { return x.value == 0.0 ? std::fabs(x.slope) : std::copysign(1.0, x.value) * x.slope; }},
    {"step", [](double x) { return x < 0.0 ? 0.0 : 1.0; }, [](const Dual&) { return 0.0; }},
}};

const std::array<BinaryFunction, 3> binaryFunctions = {{
    {"min", [](double a, double b) { return std::fmin(a, b); },
     [](const Dual& a, const Dual& b) {
         return SlopeOfChosen(a, b, std::fmin(a.value, b.value), std::fmin(a.slope, b.slope));
     }},
    {"max", [](double a, double b) { return std::fmax(a, b); },
     [](const Dual& a, const Dual& b) {
         return SlopeOfChosen(a, b, std::fmax(a.value, b.value), std::fmax(a.slope, b.slope));
     }},
    {"atan2", [](double y, double x) { return std::atan2(y, x); },
     [](const Dual& y, const Dual& x) {
         return Chained(1.0 / (x.value * x.value + y.value * y.value), x.value * y.slope - y.value * x.slope);
     }},
}};

Dual operator+(const Dual& a, const Dual& b) {
    return {a.value + b.value, a.slope + b.slope};
}
Dual operator-(const Dual& a, const Dual& b) {
    return {a.value - b.value, a.slope - b.slope};
}
Dual operator-(const Dual& a) {
    return {-a.value, -a.slope};
}
Dual operator*(const Dual& a, const Dual& b) {
    return {a.value * b.value, a.slope * b.value + a.value * b.slope};
}
Dual operator/(const Dual& a, const Dual& b) {
    const double value = a.value / b.value;
    return {value, (a.slope - value * b.slope) / b.value};
}

double Power(double base, double exponent) {
    return std::pow(base, exponent);
}
Dual Power(const Dual& base, const Dual& exponent) {
    const double value = Power(base.value, exponent.value);
    // The logarithm of 0 does not matter where the power is 0, nor do derivatives of what does not change.
    const double byBase =
        exponent.value == 0.0 ? 0.0 : Chained(exponent.value * Power(base.value, exponent.value - 1.0), base.slope);
    const double byExponent = value == 0.0 ? 0.0 : Chained(value * std::log(base.value), exponent.slope);
    return {value, byBase + byExponent};
}

double Call(const UnaryFunction& function, double x) {
    return function.value(x);
}
Dual Call(const UnaryFunction& function, const Dual& x) {
    return {function.value(x.value), function.slope(x)};
}
double Call(const BinaryFunction& function, double a, double b) {
    return function.value(a, b);
}
Dual Call(const BinaryFunction& function, const Dual& a, const Dual& b) {
    return {function.value(a.value, b.value), function.slope(a, b)};
}

template <class Table>
const typename Table::value_type* Find(const Table& table, std::string_view name) {
    for (const auto& entry : table) {
        if (entry.name == name) {
            return &entry;
        }
    }
    return nullptr;
}

} // namespace

/// Recursive descent, one method per level of precedence; emits postfix.
class ExpressionParser {
public:
    ExpressionParser(std::string_view formula, Expression::Variables variables, const NamedValues& parameters)
        : m_text(formula), m_variables(Allowed(variables)), m_parameters(parameters) {}

    std::vector<Expression::Instruction> Parse() {
        Sum();
        SkipBlanks();
        if (m_at < m_text.size()) {
            Fail(fmt::format("\"{}\" is not expected", m_text[m_at]));
        }
        return std::move(m_program);
    }

    /// The parameters that it names.
    const NamedValues& Used() const { return m_used; }

private:
    using Operation = Expression::Operation;

    [[noreturn]] void Fail(const std::string& reason) const {
        throw std::invalid_argument(fmt::format("formula \"{}\", column {}: {}", m_text, m_at + 1, reason));
    }

    void SkipBlanks() {
        while (m_at < m_text.size() && std::isspace(static_cast<unsigned char>(m_text[m_at])) != 0) {
            ++m_at;
        }
    }

    bool Take(char wanted) {
        SkipBlanks();
        if (m_at == m_text.size() || m_text[m_at] != wanted) {
            return false;
        }
        ++m_at;
        return true;
    }

    void Require(char wanted) {
        if (!Take(wanted)) {
            Fail(fmt::format("\"{}\" is missing", wanted));
        }
    }

    void Emit(Operation operation, double number = 0.0) { m_program.push_back({operation, number, nullptr, nullptr}); }

    void Sum() {
        // A bound on the nesting keeps hostile input from exhausting the stack.
        if (++m_depth > 200) {
            Fail("too deeply nested");
        }
        Product();
        for (;;) {
            if (Take('+')) {
                Product(), Emit(Operation::Add);
            } else if (Take('-')) {
                Product(), Emit(Operation::Subtract);
            } else {
                break;
            }
        }
        --m_depth;
    }

    void Product() {
        Signed();
        for (;;) {
            if (Take('*')) {
                Signed(), Emit(Operation::Multiply);
            } else if (Take('/')) {
                Signed(), Emit(Operation::Divide);
            } else {
                break;
            }
        }
    }

    void Signed() {
        bool negative = false;
        for (;;) {
            if (Take('-')) {
                negative = !negative;
            } else if (!Take('+')) {
                break;
            }
        }
        Power();
        if (negative) {
            Emit(Operation::Negate);
        }
    }

    void Power() {
        Primary();
        if (!Take('^')) {
            return;
        }
        if (++m_depth > 200) {
            Fail("too deeply nested");
        }
        Signed();
        --m_depth;
        Emit(Operation::Power);
    }

    void Primary() {
        if (Take('(')) {
            Sum();
            Require(')');
            return;
        }
        if (m_at == m_text.size()) {
            Fail("it ends too early");
        }
        const auto first = static_cast<unsigned char>(m_text[m_at]);
        if (std::isdigit(first) != 0 || first == '.') {
            Number();
        } else if (std::isalpha(first) != 0) {
            Name();
        } else {
            Fail(fmt::format("\"{}\" is not expected", m_text[m_at]));
        }
    }

    std::size_t TakeDigits() {
        const std::size_t start = m_at;
        while (m_at < m_text.size() && std::isdigit(static_cast<unsigned char>(m_text[m_at])) != 0) {
            ++m_at;
        }
        return m_at - start;
    }

    void Number() {
        const std::size_t start = m_at;
        std::size_t digits = TakeDigits();
        if (m_at < m_text.size() && m_text[m_at] == '.') {
            ++m_at;
            digits += TakeDigits();
        }
        if (digits == 0) {
            Fail("a number needs digits");
        }
        if (m_at < m_text.size() && (m_text[m_at] == 'e' || m_text[m_at] == 'E')) {
            ++m_at;
            if (m_at < m_text.size() && (m_text[m_at] == '+' || m_text[m_at] == '-')) {
                ++m_at;
            }
            if (TakeDigits() == 0) {
                Fail("the exponent needs digits");
            }
        }
        double value = 0.0;
        if (std::from_chars(m_text.data() + start, m_text.data() + m_at, value).ec != std::errc()) {
            Fail("the number is too large or too small");
        }
        Emit(Operation::Number, value);
    }

    void Name() {
        const std::size_t start = m_at;
        while (m_at < m_text.size() && IsOfName(m_text[m_at])) {
            ++m_at;
        }
        const std::string_view name = m_text.substr(start, m_at - start);
        if (const auto* constant = Find(constants, name)) {
            return Emit(Operation::Number, constant->value);
        }
        if (IsIn(m_variables.names, name)) {
            m_program.push_back({Operation::Variable, 0.0, nullptr, nullptr, variableNames.find(name)});
            return;
        }
        if (const auto* function = Find(unaryFunctions, name)) {
            Require('(');
            Sum();
            Require(')');
            m_program.push_back({Operation::Unary, 0.0, function, nullptr});
            return;
        }
        if (const auto* function = Find(binaryFunctions, name)) {
            Require('(');
            Sum();
            Require(',');
            Sum();
            Require(')');
            m_program.push_back({Operation::Binary, 0.0, nullptr, function});
            return;
        }
        if (const auto parameter = m_parameters.find(name); parameter != m_parameters.end()) {
            m_used.insert(*parameter);
            return Emit(Operation::Number, parameter->second);
        }
        m_at = start;
        if (name == "g") {
            Fail("\"g\" could mean grams or the acceleration of free fall; write gram or gn");
        }
        if (IsIn(variableNames, name)) {
            Fail(fmt::format("\"{}\" is not known here; {}", name, m_variables.text));
        }
        Fail(fmt::format("\"{}\" is not known here{}", name, ParameterHint(name)));
    }

    std::string ParameterHint(std::string_view name) const {
        std::vector<std::string> names;
        for (const auto& parameter : m_parameters) {
            names.push_back(parameter.first);
        }
        const std::string nearest = NearestName(name, names);
        return nearest.empty() ? nearest : fmt::format("; did you mean the parameter \"{}\"?", nearest);
    }

    std::string_view m_text;
    AllowedVariables m_variables;
    const NamedValues& m_parameters;
    NamedValues m_used;
    std::size_t m_at = 0;
    int m_depth = 0;
    std::vector<Expression::Instruction> m_program;
};

Expression::Expression(double value)
    : m_formula(fmt::format("{}", value)), m_program{{Operation::Number, value, nullptr, nullptr}} {}

Expression Expression::Parse(std::string_view formula, Variables variables, const NamedValues& parameters) {
    ExpressionParser parser(formula, variables, parameters);
    Expression result;
    result.m_program = parser.Parse();
    result.m_formula = WithValues(formula, parser.Used());
    return result;
}

std::vector<std::string> Expression::NamesIn(std::string_view formula) {
    std::vector<std::string> names;
    for (std::size_t at = 0; at < formula.size();) {
        std::size_t end = at;
        while (end < formula.size() && IsOfName(formula[end])) {
            ++end;
        }
        // What begins with a digit is a number, be it one with an exponent.
        if (end > at && std::isalpha(static_cast<unsigned char>(formula[at])) != 0) {
            names.emplace_back(formula.substr(at, end - at));
        }
        at = std::max(end, at + 1);
    }
    return names;
}

bool Expression::IsReserved(std::string_view name) {
    return Find(constants, name) || Find(unaryFunctions, name) || Find(binaryFunctions, name) ||
           IsIn(variableNames, name);
}

template <class Value>
Value Expression::Run(const std::array<Value, 5>& variables) const {
    std::vector<Value> stack;
    stack.reserve(m_program.size());
    const auto pop = [&stack] {
        const Value value = stack.back();
        stack.pop_back();
        return value;
    };
    const auto combine = [&](auto&& function) {
        const Value right = pop();
        stack.back() = function(stack.back(), right);
    };
    for (const Instruction& instruction : m_program) {
        switch (instruction.operation) {
        case Operation::Number:
            stack.push_back(Value{instruction.number});
            break;
        case Operation::Variable:
            stack.push_back(variables[instruction.variable]);
            break;
        case Operation::Add:
            combine([](const Value& a, const Value& b) { return a + b; });
            break;
        case Operation::Subtract:
            combine([](const Value& a, const Value& b) { return a - b; });
            break;
        case Operation::Multiply:
            combine([](const Value& a, const Value& b) { return a * b; });
            break;
        case Operation::Divide:
            combine([](const Value& a, const Value& b) { return a / b; });
            break;
        case Operation::Power:
            combine([](const Value& a, const Value& b) { return Power(a, b); });
            break;
        case Operation::Binary:
            combine([&](const Value& a, const Value& b) { return Call(*instruction.binary, a, b); });
            break;
        case Operation::Negate:
            stack.back() = -stack.back();
            break;
        case Operation::Unary:
            stack.back() = Call(*instruction.unary, stack.back());
            break;
        }
    }
    return stack.back();
}

double Expression::Evaluate(const Values& values) const {
    return Run<double>({values.t, values.q, values.x, values.y, values.z});
}

double Expression::Evaluate(double time, double coordinate) const {
    return Evaluate(Values{time, coordinate});
}

double Expression::Slope(double time, double coordinate) const {
    return Run<Dual>({Dual{time, 1.0}, Dual{coordinate}}).slope;
}

} // namespace kinora::scenario
