#include "trace/core/ScriptValue.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <map>

namespace kinora::trace {
namespace {

using nlohmann::json;

constexpr std::size_t longestArray = 24;

/// Decodes one character of well-formed UTF-8 and moves on.
std::uint32_t NextCharacter(const std::string& text, std::size_t& position) {
    const auto lead = static_cast<unsigned char>(text[position++]);
    if (lead < 0x80) {
        return lead;
    }
    const int following = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    std::uint32_t character = lead & (0x3FU >> following);
    for (int i = 0; i < following && position < text.size(); ++i) {
        character = (character << 6) | (static_cast<unsigned char>(text[position++]) & 0x3FU);
    }
    return character;
}

std::string CharacterCall(std::uint32_t character) {
    if (character > 0xFFFF) {
        const std::uint32_t rest = character - 0x10000;
        return fmt::format("ChrW({}) & ChrW({})", 0xD800 + (rest >> 10), 0xDC00 + (rest & 0x3FF));
    }
    return fmt::format("ChrW({})", character);
}

bool IsList(const json& value) {
    return value.is_object() && value.value("vt", "").rfind("ARRAY", 0) == 0 && value.contains("v");
}

bool IsLong(const json& value) {
    return IsList(value) && (value["v"].size() > longestArray || std::any_of(value["v"].begin(), value["v"].end(),
                                                                             [](const json& v) { return IsLong(v); }));
}

/// Converts a number with the function that gives the recorded type, or the nearest one that VBScript has.
std::string NumberCall(const std::string& type, const json& content) {
    static const std::map<std::string, const char*> functions = {{"I2", "CInt"},   {"I4", "CLng"}, {"INT", "CLng"},
                                                                 {"UI1", "CByte"}, {"R4", "CSng"}, {"DATE", "CDate"}};
    const auto found = functions.find(type);
    const std::string function = found == functions.end() ? "CDbl" : found->second;
    return function + "(" + (content.is_number_integer() ? content.dump() : fmt::format("{}", content.get<double>())) +
           ")";
}

std::string ScalarExpression(const std::string& type, const json& content) {
    if (type == "BSTR" && content.is_string()) {
        return VbText(content.get<std::string>());
    }
    if (type == "BOOL" && content.is_boolean()) {
        return content.get<bool>() ? "True" : "False";
    }
    if (type == "CY" && content.is_number()) {
        return fmt::format("CCur({} / 10000)", content.dump());
    }
    if (type == "ERROR" && content == "0x80020004") {
        return "";
    }
    if (type == "NULL") {
        return "Null";
    }
    return content.is_number() ? NumberCall(type, content) : "Empty";
}

} // namespace

std::string VbText(const std::string& text) {
    std::string expression;
    bool isOpen = false;
    for (std::size_t position = 0; position < text.size();) {
        const std::uint32_t character = NextCharacter(text, position);
        const bool isPrintable = character >= 0x20 && character <= 0x7E;
        if (isOpen && !isPrintable) {
            expression += '"';
        }
        if (!isOpen || !isPrintable) {
            expression += expression.empty() ? "" : " & ";
            expression += isPrintable ? "\"" : CharacterCall(character);
        }
        if (isPrintable) {
            expression += character == '"' ? "\"\"" : std::string(1, static_cast<char>(character));
        }
        isOpen = isPrintable;
    }
    expression += isOpen ? "\"" : "";
    return expression.empty() ? "\"\"" : expression;
}

std::string ScriptValues::Expression(const json& value, std::size_t argument) {
    return Nested(value, argument, 0);
}

std::string ScriptValues::Nested(const json& value, std::size_t argument, std::size_t depth) {
    if (!value.is_object()) {
        return "Empty";
    }
    const std::string type = value.value("vt", "EMPTY");
    const json content = value.value("v", json());
    if (IsLong(value)) {
        return List(content, argument, depth);
    }
    if (IsList(value)) {
        std::string text;
        for (const json& element : content) {
            text += (text.empty() ? "" : ", ") + Nested(element, argument, depth + 1);
        }
        return "Array(" + text + ")";
    }
    if (type == "DISPATCH" || type == "UNKNOWN") {
        return value.contains("id") ? m_namer(value["id"].get<std::uint64_t>()) : "Nothing";
    }
    return type.rfind("BYREF", 0) == 0 ? Nested(content, argument, depth) : ScalarExpression(type, content);
}

std::string ScriptValues::List(const json& elements, std::size_t argument, std::size_t depth) {
    std::string variable = ListVariable(argument, depth);
    m_statements.push_back(fmt::format("ReDim {}({})", variable, elements.size() - 1));
    for (std::size_t i = 0; i < elements.size(); ++i) {
        const std::string expression = Nested(elements[i], argument, depth + 1);
        const bool isObject = elements[i].is_object() && elements[i].contains("id");
        m_statements.push_back(fmt::format("{}{}({}) = {}", isObject ? "Set " : "", variable, i, expression));
    }
    return variable;
}

std::string ScriptValues::ListVariable(std::size_t argument, std::size_t depth) {
    std::string name = fmt::format("list{}_{}", argument + 1, depth);
    if (std::find(m_variables.begin(), m_variables.end(), name) == m_variables.end()) {
        m_variables.push_back(name);
    }
    return name;
}

} // namespace kinora::trace
