#include "simulator/model/Expression.h"

#include "simulator/model/Text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <unordered_map>
#include <vector>

namespace vantor::model {
namespace {

constexpr int maximumNesting = 200;

/// Recursive descent over the text; values are computed on the way, so chains of any length need no tree.
class Evaluator {
public:
    Evaluator(const std::string& text, const NameLookup& lookup) : m_text(text), m_lookup(lookup) {}

    Quantity Run() {
        const Quantity result = Sum();
        SkipBlanks();
        if (m_position < m_text.size()) {
            Fail(m_position, "unexpected " + Quoted(m_text.substr(m_position, 1)));
        }
        return result;
    }

private:
    struct Function {
        std::size_t arguments;
        Quantity (Evaluator::*apply)(const std::vector<Quantity>&, std::size_t position) const;
    };

    [[noreturn]] void Fail(std::size_t position, const std::string& reason) const {
        throw ExpressionError(reason + " at position " + std::to_string(position + 1) + " of " + Quoted(m_text));
    }

    void SkipBlanks() {
        while (m_position < m_text.size() && (m_text[m_position] == ' ' || m_text[m_position] == '\t')) {
            ++m_position;
        }
    }

    bool Take(char symbol) {
        SkipBlanks();
        if (m_position < m_text.size() && m_text[m_position] == symbol) {
            ++m_position;
            return true;
        }
        return false;
    }

    Quantity Checked(Quantity quantity, std::size_t position) const {
        if (!std::isfinite(quantity.value)) {
            Fail(position, "the result is not a finite number");
        }
        for (const double exponent : quantity.dimension.exponents) {
            if (!(std::abs(exponent) < 1e6)) {
                Fail(position, "the unit's power is out of range");
            }
        }
        return quantity;
    }

    Quantity Sum() {
        Quantity left = Product();
        for (;;) {
            SkipBlanks();
            const std::size_t position = m_position;
            const bool plus = Take('+');
            if (!plus && !Take('-')) {
                return left;
            }
            left = Added(left, Product(), plus ? 1.0 : -1.0, position);
        }
    }

    Quantity Added(const Quantity& left, const Quantity& right, double sign, std::size_t position) const {
        if (!left.dimension.Matches(right.dimension)) {
            Fail(position, "cannot " + std::string(sign > 0 ? "add " : "subtract ") + Describe(right.dimension) +
                               (sign > 0 ? " to " : " from ") + Describe(left.dimension));
        }
        const Dimension& dimension = left.dimension.IsNumber() ? right.dimension : left.dimension;
        return Checked({left.value + sign * right.value, dimension}, position);
    }

    Quantity Product() {
        Quantity left = Signed();
        for (;;) {
            SkipBlanks();
            const std::size_t position = m_position;
            if (Take('*')) {
                const Quantity right = Signed();
                left = Checked({left.value * right.value, left.dimension * right.dimension}, position);
            } else if (Take('/')) {
                const Quantity right = Signed();
                if (right.value == 0.0) {
                    Fail(position, "division by zero");
                }
                left = Checked({left.value / right.value, left.dimension / right.dimension}, position);
            } else {
                return left;
            }
        }
    }

    Quantity Signed() {
        double sign = 1.0;
        for (;;) {
            if (Take('-')) {
                sign = -sign;
            } else if (!Take('+')) {
                break;
            }
        }
        Quantity value = PowerChain();
        value.value *= sign;
        return value;
    }

    Quantity PowerChain() {
        const Quantity base = Primary();
        SkipBlanks();
        const std::size_t position = m_position;
        if (!Take('^')) {
            return base;
        }
        Nest(position);
        const Quantity exponent = Signed();
        --m_nesting;
        return Raised(base, exponent, position);
    }

    Quantity Raised(const Quantity& base, const Quantity& exponent, std::size_t position) const {
        if (!exponent.dimension.IsNumber()) {
            Fail(position, "the exponent must be a plain number, not " + Describe(exponent.dimension));
        }
        return Checked({std::pow(base.value, exponent.value), Power(base.dimension, exponent.value)}, position);
    }

    void Nest(std::size_t position) {
        if (++m_nesting > maximumNesting) {
            Fail(position, "more than " + std::to_string(maximumNesting) + " nested parts");
        }
    }

    Quantity Primary() {
        SkipBlanks();
        const std::size_t position = m_position;
        if (position >= m_text.size()) {
            Fail(position, "a value is missing");
        }
        if (Take('(')) {
            Nest(position);
            const Quantity inner = Sum();
            Close(position);
            --m_nesting;
            return inner;
        }
        const char first = m_text[position];
        if (IsDigit(first) || first == '.') {
            return Number();
        }
        if (IsNameStart(first)) {
            return NameOrCall();
        }
        Fail(position, "unexpected " + Quoted(m_text.substr(position, 1)));
    }

    void Close(std::size_t opened) {
        if (!Take(')')) {
            Fail(m_position, "\")\" is missing for the \"(\" at position " + std::to_string(opened + 1));
        }
    }

    Quantity Number() {
        const std::size_t start = m_position;
        std::size_t end = start;
        while (end < m_text.size() && (IsDigit(m_text[end]) || m_text[end] == '.')) {
            ++end;
        }
        if (const std::size_t exponent = ExponentEnd(end); exponent != 0) {
            end = exponent;
        }
        double value = 0.0;
        if (!ParseNumber(std::string_view(m_text).substr(start, end - start), value)) {
            Fail(start, "not a number: " + Quoted(m_text.substr(start, end - start)));
        }
        m_position = end;
        if (end == m_text.size() || !IsNameStart(m_text[end])) {
            return {value, numberDimension};
        }
        const std::string unitName = Word();
        const std::optional<Quantity> unit = FindUnit(unitName);
        if (!unit) {
            Fail(end, "unknown unit " + Quoted(unitName));
        }
        return Checked({value * unit->value, unit->dimension}, start);
    }

    /// Where an exponent that begins at `begin` ends; 0 when the letter begins a unit.
    std::size_t ExponentEnd(std::size_t begin) const {
        if (begin >= m_text.size() || (m_text[begin] != 'e' && m_text[begin] != 'E')) {
            return 0;
        }
        std::size_t end = begin + 1;
        if (end < m_text.size() && (m_text[end] == '+' || m_text[end] == '-')) {
            ++end;
        }
        if (end >= m_text.size() || !IsDigit(m_text[end])) {
            return 0;
        }
        while (end < m_text.size() && IsDigit(m_text[end])) {
            ++end;
        }
        return end;
    }

    std::string Word() {
        const std::size_t start = m_position;
        while (m_position < m_text.size() && IsNamePart(m_text[m_position])) {
            ++m_position;
        }
        return m_text.substr(start, m_position - start);
    }

    Quantity NameOrCall() {
        const std::size_t start = m_position;
        std::string name = Word();
        while (m_position + 1 < m_text.size() && m_text[m_position] == '.' && IsNameStart(m_text[m_position + 1])) {
            ++m_position;
            name += "." + Word();
        }
        SkipBlanks();
        if (m_position < m_text.size() && m_text[m_position] == '(') {
            return Call(name, start);
        }
        if (const std::optional<Quantity> value = m_lookup ? m_lookup(name) : std::nullopt) {
            return *value;
        }
        if (name == "pi") {
            return {3.14159265358979323846, numberDimension};
        }
        Fail(start, "unknown name " + Quoted(name));
    }

    Quantity Call(const std::string& name, std::size_t start) {
        static const std::unordered_map<std::string, Function> functions = {
            {"sin", {1, &Evaluator::Sine}},          {"cos", {1, &Evaluator::Cosine}},
            {"tan", {1, &Evaluator::Tangent}},       {"asin", {1, &Evaluator::ArcSine}},
            {"acos", {1, &Evaluator::ArcCosine}},    {"atan", {1, &Evaluator::ArcTangent}},
            {"atan2", {2, &Evaluator::ArcTangent2}}, {"sqrt", {1, &Evaluator::SquareRoot}},
            {"abs", {1, &Evaluator::Absolute}},      {"exp", {1, &Evaluator::Exponential}},
            {"ln", {1, &Evaluator::Logarithm}},      {"log10", {1, &Evaluator::Logarithm10}},
            {"pow", {2, &Evaluator::PowerOf}},       {"min", {2, &Evaluator::Minimum}},
            {"max", {2, &Evaluator::Maximum}},
        };
        const auto function = functions.find(name);
        if (function == functions.end()) {
            Fail(start, "unknown function " + Quoted(name));
        }
        const std::vector<Quantity> arguments = CallArguments();
        if (arguments.size() != function->second.arguments) {
            Fail(start, name + " takes " + std::to_string(function->second.arguments) + " argument(s), not " +
                            std::to_string(arguments.size()));
        }
        return Checked((this->*function->second.apply)(arguments, start), start);
    }

    std::vector<Quantity> CallArguments() {
        const std::size_t opened = m_position;
        Take('(');
        Nest(opened);
        std::vector<Quantity> arguments;
        if (!Take(')')) {
            do {
                arguments.push_back(Sum());
            } while (Take(','));
            Close(opened);
        }
        --m_nesting;
        return arguments;
    }

    double Angle(const Quantity& argument, std::size_t position) const {
        if (!argument.dimension.IsAngle() && !argument.dimension.IsNumber()) {
            Fail(position, "an angle is needed, not " + Describe(argument.dimension));
        }
        return argument.value;
    }

    double Plain(const Quantity& argument, std::size_t position) const {
        if (!argument.dimension.IsNumber()) {
            Fail(position, "a plain number is needed, not " + Describe(argument.dimension));
        }
        return argument.value;
    }

    void SameKind(const std::vector<Quantity>& a, std::size_t position) const {
        if (!a[0].dimension.Matches(a[1].dimension)) {
            Fail(position, "the arguments are " + Describe(a[0].dimension) + " and " + Describe(a[1].dimension));
        }
    }

    using Arguments = std::vector<Quantity>;
    Quantity Sine(const Arguments& a, std::size_t p) const { return {std::sin(Angle(a[0], p)), {}}; }
    Quantity Cosine(const Arguments& a, std::size_t p) const { return {std::cos(Angle(a[0], p)), {}}; }
    Quantity Tangent(const Arguments& a, std::size_t p) const { return {std::tan(Angle(a[0], p)), {}}; }
    Quantity ArcSine(const Arguments& a, std::size_t p) const { return {std::asin(Plain(a[0], p)), angleDimension}; }
    Quantity ArcCosine(const Arguments& a, std::size_t p) const { return {std::acos(Plain(a[0], p)), angleDimension}; }
    Quantity ArcTangent(const Arguments& a, std::size_t p) const { return {std::atan(Plain(a[0], p)), angleDimension}; }
    Quantity ArcTangent2(const Arguments& a, std::size_t p) const {
        SameKind(a, p);
        return {std::atan2(a[0].value, a[1].value), angleDimension};
    }
    // NOLINTNEXTLINE(*-convert-member-functions-to-static): the table holds members
    Quantity SquareRoot(const Arguments& a, std::size_t) const {
        return {std::sqrt(a[0].value), Power(a[0].dimension, 0.5)};
    }
    // NOLINTNEXTLINE(*-convert-member-functions-to-static): as above
    Quantity Absolute(const Arguments& a, std::size_t) const { return {std::abs(a[0].value), a[0].dimension}; }
    Quantity Exponential(const Arguments& a, std::size_t p) const { return {std::exp(Plain(a[0], p)), {}}; }
    Quantity Logarithm(const Arguments& a, std::size_t p) const { return {std::log(Plain(a[0], p)), {}}; }
    Quantity Logarithm10(const Arguments& a, std::size_t p) const { return {std::log10(Plain(a[0], p)), {}}; }
    Quantity PowerOf(const Arguments& a, std::size_t p) const { return Raised(a[0], a[1], p); }
    Quantity Minimum(const Arguments& a, std::size_t p) const {
        SameKind(a, p);
        return a[0].value <= a[1].value ? a[0] : a[1];
    }
    Quantity Maximum(const Arguments& a, std::size_t p) const {
        SameKind(a, p);
        return a[0].value >= a[1].value ? a[0] : a[1];
    }

    const std::string& m_text;
    const NameLookup& m_lookup;
    std::size_t m_position = 0;
    int m_nesting = 0;
};

} // namespace

Quantity Evaluate(const std::string& text, const NameLookup& lookup) {
    return Evaluator(text, lookup).Run();
}

double EvaluateLength(const std::string& text, const NameLookup& lookup, double modelUnit) {
    const Quantity quantity = Evaluate(text, lookup);
    if (quantity.dimension.IsNumber()) {
        return quantity.value * modelUnit;
    }
    if (!quantity.dimension.IsLength()) {
        throw ExpressionError(Quoted(text) + " is " + Describe(quantity.dimension) + " where a length is needed");
    }
    return quantity.value;
}

double EvaluateAngle(const std::string& text, const NameLookup& lookup) {
    const Quantity quantity = Evaluate(text, lookup);
    if (!quantity.dimension.IsNumber() && !quantity.dimension.IsAngle()) {
        throw ExpressionError(Quoted(text) + " is " + Describe(quantity.dimension) + " where an angle is needed");
    }
    return quantity.value;
}

} // namespace vantor::model
