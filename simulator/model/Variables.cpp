#include "simulator/model/Variables.h"

#include "simulator/model/DesktopError.h"
#include "simulator/model/Text.h"

#include <algorithm>
#include <memory>

namespace vantor::model {
namespace {

constexpr std::size_t longestChain = 100;

} // namespace

const std::string& Variables::RequireValue(const std::string& name) const {
    const auto index = m_indices.find(name);
    if (index == m_indices.end()) {
        throw BadValue("there is no variable " + Quoted(name));
    }
    return m_variables[index->second].value;
}

void Variables::Add(const std::vector<Variable>& additions) {
    Variables changed = *this;
    for (const auto& variable : additions) {
        if (!IsIdentifier(variable.name)) {
            throw BadValue("a variable cannot be named " + Quoted(variable.name) +
                           ": names are letters, digits and underscores, and begin with no digit");
        }
        if (!changed.m_indices.emplace(variable.name, changed.m_variables.size()).second) {
            throw BadValue("the variable " + Quoted(variable.name) + " exists already");
        }
        changed.m_variables.push_back(variable);
    }
    changed.CheckAll(additions);
    *this = std::move(changed);
}

void Variables::Change(const std::vector<Variable>& changes) {
    Variables changed = *this;
    for (const auto& variable : changes) {
        const auto index = changed.m_indices.find(variable.name);
        if (index == changed.m_indices.end()) {
            throw BadValue("there is no variable " + Quoted(variable.name) + " to change");
        }
        changed.m_variables[index->second].value = variable.value;
    }
    changed.CheckAll(changes);
    *this = std::move(changed);
}

void Variables::CheckAll(const std::vector<Variable>& touched) const {
    const NameLookup lookup = Lookup();
    for (const auto& variable : touched) {
        try {
            lookup(variable.name);
        } catch (const ExpressionError& error) {
            throw BadValue("variable " + Quoted(variable.name) + ": " + error.what());
        }
    }
}

std::optional<Quantity> Variables::Evaluate(const std::string& name) const {
    return Lookup()(name);
}

NameLookup Variables::Lookup() const {
    // What one variable is worth is worked out once per lookup object, however often it is referred to.
    const auto known = std::make_shared<std::map<std::string, Quantity>>();
    return [this, known](const std::string& name) {
        std::vector<std::string> chain;
        return EvaluateNested(name, chain, *known);
    };
}

std::optional<Quantity> Variables::EvaluateNested(const std::string& name, std::vector<std::string>& chain,
                                                  std::map<std::string, Quantity>& known) const {
    const auto index = m_indices.find(name);
    if (index == m_indices.end()) {
        return std::nullopt;
    }
    if (const auto value = known.find(name); value != known.end()) {
        return value->second;
    }
    if (std::find(chain.begin(), chain.end(), name) != chain.end()) {
        throw ExpressionError("variable " + Quoted(name) + " refers to itself by way of " + QuotedList(chain));
    }
    if (chain.size() >= longestChain) {
        throw ExpressionError("more than " + std::to_string(longestChain) +
                              " variables refer to each other in a chain");
    }
    chain.push_back(name);
    const Quantity value = model::Evaluate(m_variables[index->second].value, [&](const std::string& other) {
        return EvaluateNested(other, chain, known);
    });
    chain.pop_back();
    known.emplace(name, value);
    return value;
}

} // namespace vantor::model
