#pragma once

#include "simulator/commands/Value.h"
#include "simulator/model/DesktopError.h"

#include <string>
#include <string_view>
#include <vector>

namespace vantor::commands {

/// Turns one value into what a command needs, or complains with the place where it stands.
/// @param place "argument 2", or "\"Axis:=\" of \"NAME:Torque_Rotor_X\"".
/// @throws model::DesktopError: MissingArgument for VT_EMPTY, NonNumericArgument or UnsupportedArgumentType for another
///         type.
const std::string& NeedText(const Value& value, const std::string& place);
bool NeedFlag(const Value& value, const std::string& place);

/// A VT_R8, or a VT_I2 (what a script's literal without a decimal point is); finite.
double NeedNumber(const Value& value, const std::string& place);

/// A VT_INT, or a VT_I2 (no script can make a VT_INT).
int NeedInteger(const Value& value, const std::string& place);
const Value::List& NeedList(const Value& value, const std::string& place);
std::vector<std::string> NeedTexts(const Value& value, const std::string& place);

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
    std::string Place() const { return "argument " + std::to_string(m_next); }

    const std::vector<Value>& m_values;
    std::size_t m_next = 0;
};

/// Reads a named argument array element by element: "NAME:..." first, then keys with their values and nested blocks in
/// the one order that the command knows.
///
/// Every complaint is a model::DesktopError that names block, key and what stands there: MissingArgument (array ends
/// too early, "NAME:" is missing), InvalidArgument (another key, something left over), IncompleteArray (key without
/// value), and those of the Need functions.
class BlockReader {
public:
    /// Reads the block's head and remembers its name.
    BlockReader(const Value::List& elements, const std::string& place);

    /// Reads a block that has to have this name.
    BlockReader(const Value::List& elements, const std::string& place, std::string_view name);

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
    std::string PlaceOf(std::string_view key) const;

private:
    const Value& ValueOf(std::string_view key);
    const Value& NextElement(std::string_view expected);

    const Value::List& m_elements;
    std::string m_name;
    std::size_t m_next = 0;
};

} // namespace vantor::commands
