#pragma once

#include "scenario/Expression.h"
#include "scenario/Findings.h"
#include "scenario/Rigid.h"

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

namespace kinora::scenario {

/// A value of a document together with its place, so that whatever is wrong with it is told where it stands.
///
/// What is wrong is reported and reading goes on. A number that is wrong is NaN from there on: write further checks so
/// that they find no fault with NaN, as every comparison with it is false.
///
/// @pre  the document obeys the schema: types and the keys that must be there are not checked again
class Node {
public:
    /// The whole document. Document and findings must outlive every node.
    Node(const nlohmann::json& document, Findings& findings) : Node(document, {}, findings, nullptr) {}

    /// The same value, whose formulas may name these quantities; they must outlive every node that comes from it.
    Node Knowing(const NamedValues& parameters) const {
        Node node = *this;
        node.m_parameters = &parameters;
        return node;
    }

    /// Notes what is wrong with this value.
    void Report(const std::string& text) const { m_findings->Add(m_pointer, text); }

    /// A line about this value, with its place, for what is not wrong enough to be reported.
    std::string Line(const std::string& text) const { return m_findings->Line(m_pointer, text); }

    bool Has(const char* key) const;
    Node At(const std::string& key) const;
    Node At(std::size_t index) const;
    std::size_t Size() const;
    std::vector<std::string> Keys() const;
    /// Reports every key that is no name: a letter, then letters, digits and underscores.
    void RequireNames() const;
    /// The value of a key that must be there; nothing, and reported, where it is missing.
    std::optional<Node> Required(const char* key) const;
    /// The one key of these that is there; empty, and reported, where it is not exactly one.
    std::string OnlyOneOf(const std::vector<std::string>& keys) const;
    /// Reports every key but these, for what the schema allows elsewhere only.
    /// @param owner  whose keys they are: "a hinge"
    void AllowOnly(const std::vector<std::string>& keys, const std::string& owner) const;
    /// The values of a list.
    std::vector<Node> Items() const;

    bool IsText() const;
    bool IsObject() const;
    std::string Text() const;
    std::string TextOr(const char* key, const std::string& fallback) const {
        return Has(key) ? At(key).Text() : fallback;
    }
    bool Flag() const;

    /// Nothing when the formula is wrong.
    std::optional<Expression> Formula(Expression::Variables variables) const;

    /// A finite number.
    double Number() const;
    double NumberOr(const char* key, double fallback) const { return Has(key) ? At(key).Number() : fallback; }
    double NotNegative() const;
    double NotNegativeOr(const char* key, double fallback) const { return Has(key) ? At(key).NotNegative() : fallback; }

    /// Metres, no more than farthestMetres.
    double Length() const;
    double LengthOr(const char* key, double fallback) const { return Has(key) ? At(key).Length() : fallback; }

    Vector Triple() const;
    Vector TripleOr(const char* key, const Vector& fallback) const { return Has(key) ? At(key).Triple() : fallback; }
    /// Three components of 0 or more; 0 where there is no such key.
    Vector NotNegativeTriple(const char* key) const;
    /// The place of a point; the origin where there is no such key.
    Vector PointAt(const char* key) const;
    /// Three components that are not all 0, as they are.
    Vector NonZero() const;
    /// A unit vector.
    Vector Direction() const { return NonZero().stableNormalized(); }

private:
    Node(const nlohmann::json& value, std::string pointer, Findings& findings, const NamedValues* parameters)
        : m_value(&value), m_pointer(std::move(pointer)), m_findings(&findings), m_parameters(parameters) {}

    const nlohmann::json* m_value;
    std::string m_pointer;
    Findings* m_findings;
    /// What formulas may name besides their variables; null for nothing.
    const NamedValues* m_parameters;
};

/// What to say about a length beyond farthestMetres.
std::string TooFarText(double metres);

} // namespace kinora::scenario
