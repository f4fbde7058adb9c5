#pragma once

#include "simulator/commands/Value.h"

#include <string>
#include <string_view>
#include <vector>

namespace vantor::commands {

/// The positional arguments of one call, read strictly one after the other.
class Arguments {
public:
    explicit Arguments(const std::vector<Value>& values) : m_values(values) {}

    const std::string& Text();
    bool Flag();
    double Number();
    int Integer();
    const Value::List& List();
    const Value& Any();

    /// An argument that has to be this very text.
    void Literal(std::string_view text);

    /// An argument that has to be an array without elements.
    void EmptyList();

    /// Complains about arguments that nobody has read.
    void End() const;

private:
    const Value& Next();
    std::string Location() const { return "argument " + std::to_string(m_next); }

    const std::vector<Value>& m_values;
    std::size_t m_next = 0;
};

} // namespace vantor::commands
