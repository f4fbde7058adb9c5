#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace vantor::commands {

class ScriptObject;

/// What a script passes to a command or gets back: a VARIANT without its Windows clothes.
///
/// The automation types that the scripting interface tells apart stay apart: VT_INT and VT_I4 are different things.
class Value {
public:
    /// VT_BSTR, as UTF-8.
    using Text = std::string;
    /// VT_ARRAY | VT_VARIANT of one dimension.
    using List = std::vector<Value>;
    /// VT_DISPATCH; null for an empty reference.
    using Object = std::shared_ptr<ScriptObject>;

    /// A whole number and the automation type that it came in.
    struct Integer {
        /// VT_I2, VT_I4, VT_INT.
        enum class Type : std::uint16_t { Short = 2, Long = 3, Int = 22 };
        std::int32_t value = 0;
        Type type = Type::Long;
    };

    /// A value of a type that no command takes, kept for its type number.
    struct Foreign {
        std::uint16_t type = 0;
    };

    Value() = default;
    Value(bool flag) : m_data(flag) {}
    Value(double number) : m_data(number) {}
    Value(Integer integer) : m_data(integer) {}
    Value(Text text) : m_data(std::move(text)) {}
    Value(const char* text) : m_data(Text(text)) {}
    Value(List list) : m_data(std::move(list)) {}
    Value(Object object) : m_data(std::move(object)) {}
    Value(Foreign foreign) : m_data(foreign) {}

    /// A VT_I4, the type of status results.
    static Value Long(std::int32_t value) { return Value(Integer{value, Integer::Type::Long}); }
    /// A VT_INT, the type of severities and indices.
    static Value Int(std::int32_t value) { return Value(Integer{value, Integer::Type::Int}); }
    /// A list of texts.
    static Value Texts(const std::vector<std::string>& texts);

    bool IsEmpty() const { return std::holds_alternative<std::monostate>(m_data); }

    const bool* AsFlag() const { return std::get_if<bool>(&m_data); }
    const double* AsNumber() const { return std::get_if<double>(&m_data); }
    const Integer* AsInteger() const { return std::get_if<Integer>(&m_data); }
    const Text* AsText() const { return std::get_if<Text>(&m_data); }
    const List* AsList() const { return std::get_if<List>(&m_data); }
    const Object* AsObject() const { return std::get_if<Object>(&m_data); }
    const Foreign* AsForeign() const { return std::get_if<Foreign>(&m_data); }

    /// What it is, for messages: "a text (VT_BSTR)", "nothing (VT_EMPTY)".
    std::string Kind() const;

private:
    std::variant<std::monostate, bool, double, Integer, Text, List, Object, Foreign> m_data;
};

} // namespace vantor::commands
