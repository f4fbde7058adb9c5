#include "scenario/Parameters.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <set>

namespace kinora::scenario {
namespace {

/// Evaluates every parameter once, those first that others use.
class ParameterReader {
public:
    explicit ParameterReader(const Node& node) : m_node(node), m_names(node.Keys()) {}

    std::vector<Parameter> Read() {
        std::vector<Parameter> parameters;
        m_node.RequireNames();
        for (const std::string& name : m_names) {
            if (Expression::IsReserved(name)) {
                m_node.At(name).Report(fmt::format("\"{}\" means something in formulas; choose another name.", name));
            }
        }
        for (const std::string& name : m_names) {
            if (Evaluate(name)) {
                parameters.push_back(Describe(name));
            }
        }
        return parameters;
    }

private:
    /// The quantity of a parameter, wherever it stands.
    Node Quantity(const std::string& name) const {
        const Node parameter = m_node.At(name);
        return parameter.IsObject() ? parameter.At("default") : parameter;
    }

    /// False when it is wrong, or uses one that is: that has been told.
    bool Evaluate(const std::string& name) {
        if (m_values.count(name) > 0 || m_wrong.count(name) > 0) {
            return m_wrong.count(name) == 0;
        }
        if (std::find(m_underWay.begin(), m_underWay.end(), name) != m_underWay.end()) {
            m_node.At(name).Report(fmt::format("it depends on itself: {} -> {}.", fmt::join(m_underWay, " -> "), name));
            return false;
        }
        // A bound on the depth keeps hostile input from exhausting the stack.
        if (m_underWay.size() > 100) {
            m_node.At(name).Report("more than a hundred parameters depend on one another in a row.");
            return false;
        }
        m_underWay.push_back(name);
        const bool isKnown = EvaluateUsed(name) && EvaluateItself(name);
        m_underWay.pop_back();
        if (!isKnown) {
            m_wrong.insert(name);
        }
        return isKnown;
    }

    bool EvaluateUsed(const std::string& name) {
        const Node quantity = Quantity(name);
        if (!quantity.IsText()) {
            return true;
        }
        for (const std::string& used : Expression::NamesIn(quantity.Text())) {
            if (std::find(m_names.begin(), m_names.end(), used) != m_names.end() && !Evaluate(used)) {
                return false;
            }
        }
        return true;
    }

    bool EvaluateItself(const std::string& name) {
        const double value = Quantity(name).Knowing(m_values).Number();
        if (std::isnan(value)) {
            return false;
        }
        m_values[name] = value;
        return true;
    }

    Parameter Describe(const std::string& name) const {
        const Node node = m_node.At(name);
        const Node quantity = Quantity(name);
        Parameter parameter;
        parameter.name = name;
        parameter.value = m_values.at(name);
        parameter.formula = quantity.IsText() ? quantity.Text() : fmt::format("{}", parameter.value);
        if (node.IsObject()) {
            parameter.unit = node.TextOr("unit", {});
            parameter.description = node.TextOr("description", {});
        }
        return parameter;
    }

    const Node m_node;
    const std::vector<std::string> m_names;
    NamedValues m_values;
    std::set<std::string> m_wrong;
    std::vector<std::string> m_underWay;
};

} // namespace

std::vector<Parameter> ReadParameters(const Node& node) {
    return ParameterReader(node).Read();
}

NamedValues ValuesOf(const std::vector<Parameter>& parameters) {
    NamedValues values;
    for (const Parameter& parameter : parameters) {
        values[parameter.name] = parameter.value;
    }
    return values;
}

} // namespace kinora::scenario
