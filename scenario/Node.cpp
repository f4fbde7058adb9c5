#include "scenario/Node.h"

#include "scenario/Text.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <iterator>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace kinora::scenario {
namespace {

/// A number that is wrong and has been told.
constexpr double unknown = std::numeric_limits<double>::quiet_NaN();

} // namespace

std::string TooFarText(double metres) {
    return fmt::format("{} m is farther than {} m; lengths are metres: write \"12*mm\" for 12 millimetres.", metres,
                       farthestMetres);
}

bool Node::Has(const char* key) const {
    return m_value->contains(key);
}

Node Node::At(const std::string& key) const {
    return {m_value->at(key), PointerTo(m_pointer, key), *m_findings, m_parameters};
}

Node Node::At(std::size_t index) const {
    return {m_value->at(index), PointerTo(m_pointer, std::to_string(index)), *m_findings, m_parameters};
}

std::size_t Node::Size() const {
    return m_value->size();
}

std::vector<std::string> Node::Keys() const {
    std::vector<std::string> keys;
    for (const auto& [key, value] : m_value->items()) {
        keys.push_back(key);
    }
    return keys;
}

void Node::RequireNames() const {
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    const auto isOther = [](char c) { return (c >= '0' && c <= '9') || c == '_'; };
    for (const std::string& key : Keys()) {
        const bool isName = !key.empty() && isLetter(key.front()) &&
                            std::all_of(key.begin(), key.end(), [&](char c) { return isLetter(c) || isOther(c); });
        if (!isName) {
            At(key).Report(fmt::format("\"{}\" is no name: use letters, digits and underscores, a letter first.", key));
        }
    }
}

std::optional<Node> Node::Required(const char* key) const {
    if (!Has(key)) {
        Report(fmt::format("the key \"{}\" is missing.", key));
        return std::nullopt;
    }
    return At(key);
}

std::string Node::OnlyOneOf(const std::vector<std::string>& keys) const {
    std::vector<std::string> found;
    std::copy_if(keys.begin(), keys.end(), std::back_inserter(found),
                 [this](const std::string& key) { return Has(key.c_str()); });
    if (found.size() == 1) {
        return found.front();
    }
    Report(fmt::format("exactly one of {} is wanted.", Alternatives(keys)));
    return {};
}

void Node::AllowOnly(const std::vector<std::string>& keys, const std::string& owner) const {
    for (const std::string& key : Keys()) {
        if (std::find(keys.begin(), keys.end(), key) == keys.end()) {
            At(key).Report(fmt::format("{} has no \"{}\" here; it may have {}.", owner, key, Alternatives(keys)));
        }
    }
}

std::vector<Node> Node::Items() const {
    std::vector<Node> items;
    for (std::size_t i = 0; i < Size(); ++i) {
        items.push_back(At(i));
    }
    return items;
}

bool Node::IsText() const {
    return m_value->is_string();
}

bool Node::IsObject() const {
    return m_value->is_object();
}

std::string Node::Text() const {
    return m_value->get<std::string>();
}

bool Node::Flag() const {
    return m_value->get<bool>();
}

std::optional<Expression> Node::Formula(Expression::Variables variables) const {
    if (m_value->is_number()) {
        return Expression(m_value->get<double>());
    }
    try {
        return Expression::Parse(Text(), variables, m_parameters ? *m_parameters : NamedValues());
    } catch (const std::invalid_argument& error) {
        Report(error.what());
        return std::nullopt;
    }
}

double Node::Number() const {
    const std::optional<Expression> formula = Formula(Expression::Variables::None);
    if (!formula) {
        return unknown;
    }
    const double value = formula->Evaluate(0.0);
    if (!std::isfinite(value)) {
        Report("the value is not a finite number.");
        return unknown;
    }
    return value;
}

double Node::NotNegative() const {
    const double value = Number();
    if (value < 0.0) {
        Report(fmt::format("{} is negative; it must be 0 or more.", value));
        return unknown;
    }
    return value;
}

double Node::Length() const {
    const double metres = Number();
    if (std::fabs(metres) > farthestMetres) {
        Report(TooFarText(metres));
        return unknown;
    }
    return metres;
}

Vector Node::Triple() const {
    return {At(0).Number(), At(1).Number(), At(2).Number()};
}

Vector Node::NotNegativeTriple(const char* key) const {
    if (!Has(key)) {
        return Vector::Zero();
    }
    const Node list = At(key);
    return {list.At(0).NotNegative(), list.At(1).NotNegative(), list.At(2).NotNegative()};
}

Vector Node::PointAt(const char* key) const {
    if (!Has(key)) {
        return Vector::Zero();
    }
    const Node point = At(key);
    return {point.At(0).Length(), point.At(1).Length(), point.At(2).Length()};
}

Vector Node::NonZero() const {
    Vector vector = Triple();
    if (vector.isZero(0.0)) {
        Report("a direction must not be 0, 0, 0.");
        return Vector::Constant(unknown);
    }
    return vector;
}

} // namespace kinora::scenario
