#pragma once

#include "simulator/model/Expression.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace vantor::model {

/// A design's local variables in the order of their creation.
class Variables {
public:
    struct Variable {
        std::string name;
        /// The expression.
        std::string value;
    };

    bool Has(const std::string& name) const { return m_indices.count(name) != 0; }
    const std::vector<Variable>& All() const { return m_variables; }

    /// The expression of a variable.
    /// @throws DesktopError (BadArgumentValue) for an unknown name.
    const std::string& RequireValue(const std::string& name) const;

    /// Adds variables, then evaluates each: all are added, or none.
    /// @throws DesktopError (BadArgumentValue) for a name that is taken or that expressions cannot refer to, and for a
    ///         value that cannot be evaluated.
    void Add(const std::vector<Variable>& additions);

    /// Changes variables, then evaluates each: all are changed, or none.
    /// @throws DesktopError (BadArgumentValue) for an unknown name and for a value that cannot be evaluated.
    void Change(const std::vector<Variable>& changes);

    /// The value of a variable; nothing when there is none of this name.
    /// @throws ExpressionError when its expression, or one that it refers to, cannot be evaluated (cycles included).
    std::optional<Quantity> Evaluate(const std::string& name) const;

    /// Evaluate() as a lookup for expressions. The variables must outlive it and must not change meanwhile.
    NameLookup Lookup() const;

private:
    std::optional<Quantity> EvaluateNested(const std::string& name, std::vector<std::string>& chain,
                                           std::map<std::string, Quantity>& known) const;
    void CheckAll(const std::vector<Variable>& touched) const;

    std::vector<Variable> m_variables;
    std::map<std::string, std::size_t> m_indices;
};

} // namespace vantor::model
