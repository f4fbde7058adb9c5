#pragma once

#include "simulator/commands/Value.h"

#include <string>
#include <string_view>
#include <vector>

namespace vantor::commands {

/// Reads a named argument array element by element: "NAME:..." first, then keys with their values and nested blocks in
/// the one order that the command knows.
///
/// Every complaint is a model::DesktopError that names block, key and what stands there: MissingArgument (array ends
/// too early, "NAME:" is missing), InvalidArgument (another key, something left over), IncompleteArray (key without
/// value), and those of the Require functions.
class BlockReader {
public:
    /// Reads the block's head and remembers its name.
    BlockReader(const Value::List& elements, const std::string& location);

    /// Reads a block that has to have this name.
    BlockReader(const Value::List& elements, const std::string& location, std::string_view name);

    const std::string& Name() const { return m_name; }

    const std::string& Text(std::string_view key);
    bool Flag(std::string_view key);
    double Number(std::string_view key);
    std::vector<std::string> Texts(std::string_view key);
    const Value::List& List(std::string_view key);

    /// A value that has to be this very text, flag or number.
    void Literal(std::string_view key, const char* text); // no string_view: a text would become a flag
    void Literal(std::string_view key, bool flag);
    void Literal(std::string_view key, double number);

    /// A nested block that stands by itself.
    BlockReader Block(std::string_view name);
    BlockReader Block();

    /// An element without a key that has to be a text.
    const std::string& BareText();

    /// True when the next element is this key.
    bool NextIs(std::string_view key) const;
    bool AtEnd() const { return m_next >= m_elements.size(); }

    /// Complains about elements that nobody has read.
    void End() const;

    /// "\"Axis:=\" of \"NAME:Torque_Rotor_X\"".
    std::string LocationOf(std::string_view key) const;

private:
    const Value& ValueOf(std::string_view key);
    const Value& NextElement(std::string_view expected);

    const Value::List& m_elements;
    std::string m_name;
    std::size_t m_next = 0;
};

} // namespace vantor::commands
