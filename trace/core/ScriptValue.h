#pragma once

#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

namespace kinora::trace {

/// Text as a VBScript expression of printable ASCII: "a" & ChrW(176) & "b".
std::string VbText(const std::string& text);

/// Turns recorded values into VBScript expressions. Long lists, for which one expression would be too long, are built
/// by statements ahead of the call in variables of their own.
class ScriptValues {
public:
    /// Gives the script's expression for an object by its number in the trace.
    using Namer = std::function<std::string(std::uint64_t)>;

    explicit ScriptValues(Namer namer) : m_namer(std::move(namer)) {}

    /// @param argument  position of the value in its call, from 0; variables of different arguments do not clash
    std::string Expression(const nlohmann::json& value, std::size_t argument);

    /// Statements that must stand before the call; they are then forgotten.
    std::vector<std::string> TakeStatements() { return std::exchange(m_statements, {}); }

    /// Variables that the statements use so far.
    const std::vector<std::string>& Variables() const { return m_variables; }

private:
    std::string Nested(const nlohmann::json& value, std::size_t argument, std::size_t depth);
    std::string List(const nlohmann::json& elements, std::size_t argument, std::size_t depth);
    std::string ListVariable(std::size_t argument, std::size_t depth);

    Namer m_namer;
    std::vector<std::string> m_statements;
    std::vector<std::string> m_variables;
};

} // namespace kinora::trace
