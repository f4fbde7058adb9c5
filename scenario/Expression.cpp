#include "scenario/Expression.h"

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
struct UnaryFunction {
    std::string_view name;
    double (*function)(double);
};
struct BinaryFunction {
    std::string_view name;
    double (*function)(double, double);
};

constexpr std::array<Constant, 4> constants = {{{"pi", pi}, {"deg", pi / 180.0}, {"mm", 0.001}, {"g", 9.80665}}};

/// Lambdas pick the overload for double on every standard library.
const std::array<UnaryFunction, 11> unaryFunctions = {{
    {"sin", [](double x) { return std::sin(x); }},
    {"cos", [](double x) { return std::cos(x); }},
    {"tan", [](double x) { return std::tan(x); }},
    {"asin", [](double x) { return std::asin(x); }},
    {"acos", [](double x) { return std::acos(x); }},
    {"atan", [](double x) { return std::atan(x); }},
    {"sqrt", [](double x) { return std::sqrt(x); }},
    {"exp", [](double x) { return std::exp(x); }},
    {"log", [](double x) { return std::log(x); }},
    {"abs", [](double x) { return std::fabs(x); }},
    {"step", [](double x) { return x < 0.0 ? 0.0 : 1.0; }},
}};

const std::array<BinaryFunction, 3> binaryFunctions = {{
    {"min", [](double a, double b) { return std::fmin(a, b); }},
    {"max", [](double a, double b) { return std::fmax(a, b); }},
    {"atan2", [](double a, double b) { return std::atan2(a, b); }},
}};

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
    ExpressionParser(std::string_view formula, Expression::Variables variables)
        : m_text(formula), m_variables(variables) {}

    std::vector<Expression::Instruction> Parse() {
        Sum();
        SkipBlanks();
        if (m_at < m_text.size()) {
            Fail(fmt::format("\"{}\" is not expected", m_text[m_at]));
        }
        return std::move(m_program);
    }

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
        while (m_at < m_text.size() && std::isalnum(static_cast<unsigned char>(m_text[m_at])) != 0) {
            ++m_at;
        }
        const std::string_view name = m_text.substr(start, m_at - start);
        if (const auto* constant = Find(constants, name)) {
            return Emit(Operation::Number, constant->value);
        }
        if (name == "t" && m_variables != Expression::Variables::None) {
            return Emit(Operation::Time);
        }
        if (name == "q" && m_variables == Expression::Variables::TimeAndCoordinate) {
            return Emit(Operation::Coordinate);
        }
        if (const auto* function = Find(unaryFunctions, name)) {
            Require('(');
            Sum();
            Require(')');
            m_program.push_back({Operation::Unary, 0.0, function->function, nullptr});
            return;
        }
        if (const auto* function = Find(binaryFunctions, name)) {
            Require('(');
            Sum();
            Require(',');
            Sum();
            Require(')');
            m_program.push_back({Operation::Binary, 0.0, nullptr, function->function});
            return;
        }
        m_at = start;
        Fail(fmt::format("\"{}\" is not known here", name));
    }

    std::string_view m_text;
    Expression::Variables m_variables;
    std::size_t m_at = 0;
    int m_depth = 0;
    std::vector<Expression::Instruction> m_program;
};

Expression::Expression(double value)
    : m_formula(fmt::format("{}", value)), m_program{{Operation::Number, value, nullptr, nullptr}} {}

Expression Expression::Parse(std::string_view formula, Variables variables) {
    Expression result;
    result.m_formula = std::string(formula);
    result.m_program = ExpressionParser(formula, variables).Parse();
    return result;
}

double Expression::Evaluate(double time, double coordinate) const {
    std::vector<double> stack;
    const auto pop = [&stack] {
        const double value = stack.back();
        stack.pop_back();
        return value;
    };
    const auto combine = [&](auto&& function) {
        const double right = pop();
        stack.back() = function(stack.back(), right);
    };
    for (const Instruction& instruction : m_program) {
        switch (instruction.operation) {
        case Operation::Number:
            stack.push_back(instruction.number);
            break;
        case Operation::Time:
            stack.push_back(time);
            break;
        case Operation::Coordinate:
            stack.push_back(coordinate);
            break;
        case Operation::Add:
            combine([](double a, double b) { return a + b; });
            break;
        case Operation::Subtract:
            combine([](double a, double b) { return a - b; });
            break;
        case Operation::Multiply:
            combine([](double a, double b) { return a * b; });
            break;
        case Operation::Divide:
            combine([](double a, double b) { return a / b; });
            break;
        case Operation::Power:
            combine([](double a, double b) { return std::pow(a, b); });
            break;
        case Operation::Binary:
            combine(instruction.binary);
            break;
        case Operation::Negate:
            stack.back() = -stack.back();
            break;
        case Operation::Unary:
            stack.back() = instruction.unary(stack.back());
            break;
        }
    }
    return stack.back();
}

} // namespace kinora::scenario
