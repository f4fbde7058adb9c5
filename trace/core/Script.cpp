#include "trace/core/Script.h"

#include "trace/core/ErrorText.h"
#include "trace/core/ObjectPath.h"
#include "trace/core/ScriptValue.h"

#include <algorithm>
#include <cctype>
#include <fmt/format.h>
#include <map>
#include <set>

namespace kinora::trace {
namespace {

using nlohmann::json;

/// VBScript allows 127 variables in all; objects beyond these go into one array.
constexpr std::size_t mostVariables = 90;

/// Calls a function for every object that a value refers to.
template <class Function>
void ForEachObject(const json& value, const Function& function) {
    if (value.is_object() && value.contains("id")) {
        function(value["id"].get<std::uint64_t>(), value.value("v", ""));
    } else if (value.is_structured()) {
        for (const json& inner : value) {
            ForEachObject(inner, function);
        }
    }
}

/// The script's variables for the session's objects. A variable is used again once its object is not needed any more.
class ObjectNames {
public:
    explicit ObjectNames(const std::vector<Record>& records) {
        for (std::size_t i = 0; i < records.size(); ++i) {
            m_lastUse[records[i].objectId] = i;
            ForEachObject(records[i].arguments, [&](std::uint64_t id, const std::string&) { m_lastUse[id] = i; });
        }
    }

    bool IsNeededAfter(std::uint64_t id, std::size_t index) const {
        const auto use = m_lastUse.find(id);
        return use != m_lastUse.end() && use->second > index;
    }

    /// The variable of an object that the call with this index gives.
    std::string Define(std::uint64_t id, const std::string& path, std::size_t index) {
        const auto known = m_names.find(id);
        if (known != m_names.end()) {
            return known->second;
        }
        std::vector<Slot>& slots = m_slots[VariableStem(path)];
        auto slot = std::find_if(slots.begin(), slots.end(),
                                 [&](const Slot& candidate) { return !IsNeededAfter(candidate.owner, index); });
        if (slot == slots.end()) {
            slot = slots.insert(slots.end(), {NewVariable(VariableStem(path), slots.size() + 1), id});
        }
        m_names.erase(slot->owner);
        slot->owner = id;
        return m_names[id] = slot->variable;
    }

    /// @return Nothing for an object that no call of the session gave
    std::string NameOf(std::uint64_t id) const {
        const auto known = m_names.find(id);
        return known == m_names.end() ? "Nothing" : known->second;
    }

    bool IsKnown(std::uint64_t id) const { return m_names.count(id) != 0; }
    const std::vector<std::string>& Variables() const { return m_variables; }
    std::size_t ArraySize() const { return m_inArray; }

private:
    struct Slot {
        std::string variable;
        std::uint64_t owner;
    };

    static std::string VariableStem(const std::string& path) {
        std::string stem;
        for (const char c : LastStep(path)) {
            stem += std::isalnum(static_cast<unsigned char>(c)) != 0 ? std::string(1, c) : "";
        }
        const bool isName = !stem.empty() && std::isalpha(static_cast<unsigned char>(stem[0])) != 0;
        // A digit follows, so no word of the language can come out; "list" and "more" are the script's own.
        return isName && stem != "list" && stem != "more" ? stem : "object";
    }

    std::string NewVariable(const std::string& stem, std::size_t number) {
        if (m_variables.size() >= mostVariables) {
            return fmt::format("more({})", m_inArray++);
        }
        m_variables.push_back(fmt::format("{}{}", stem, number));
        return m_variables.back();
    }

    std::map<std::uint64_t, std::size_t> m_lastUse;
    std::map<std::uint64_t, std::string> m_names;
    std::map<std::string, std::vector<Slot>> m_slots;
    std::vector<std::string> m_variables;
    std::size_t m_inArray = 0;
};

/// False for values with a type that no VBScript expression has, the platform's VT_INT for one.
bool IsExact(const json& value) {
    static const std::set<std::string> exact = {"EMPTY", "NULL",     "BSTR",    "BOOL",  "I2",
                                                "I4",    "UI1",      "R4",      "R8",    "DATE",
                                                "CY",    "DISPATCH", "UNKNOWN", "ERROR", "ARRAY|VARIANT"};
    const std::string type = value.is_object() ? value.value("vt", "") : "";
    if (type.rfind("BYREF", 0) == 0) {
        return IsExact(value.value("v", json()));
    }
    const bool isList = type == "ARRAY|VARIANT" && value.contains("v");
    return exact.count(type) != 0 && (!isList || std::all_of(value["v"].begin(), value["v"].end(), IsExact));
}

bool IsNumber(const json& value) {
    const std::string type = value.is_object() ? value.value("vt", "") : "";
    return type == "R8" || type == "R4";
}

/// True for names that stand in a script as they are. Nothing else of a trace may become a statement.
bool IsIdentifier(const std::string& name) {
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    return !name.empty() && isLetter(name[0]) && std::all_of(name.begin(), name.end(), [&](char c) {
        return isLetter(c) || (c >= '0' && c <= '9') || c == '_';
    });
}

/// Text for a remark: one line of printable ASCII.
std::string OneLine(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c < 0x20 || c > 0x7E; }, '?');
    return text;
}

class Writer {
public:
    explicit Writer(const Session& session)
        : m_session(session), m_objects(session.records),
          m_values([this](std::uint64_t id) { return m_objects.NameOf(id); }) {}

    void Write(std::ostream& out) {
        for (std::size_t i = 0; i < m_session.records.size(); ++i) {
            WriteRecord(m_session.records[i], i);
        }
        WriteHead(out);
        for (const std::string& line : m_lines) {
            out << line << "\n";
        }
    }

private:
    void WriteHead(std::ostream& out) const {
        out << OneLine("' Replays a session of " + m_session.process + " with " + m_session.target + ".") << "\n"
            << "' Run it with: cscript //nologo FILE\n"
            << "Option Explicit\n"
            << "Dim value, unused\n";
        for (const auto* names : {&m_objects.Variables(), &m_values.Variables()}) {
            for (const std::string& name : *names) {
                out << "Dim " << name << "\n";
            }
        }
        if (m_objects.ArraySize() > 0) {
            out << "Dim more\nReDim more(" << m_objects.ArraySize() - 1 << ")\n";
        }
        // A file that the client wrote between its calls may be missing: the replay tells it and goes on.
        out << "Sub Complain(label)\n"
            << "    WScript.Echo label & \"failed: \" & Err.Description\n"
            << "    Err.Clear\n"
            << "End Sub\n"
            << "On Error Resume Next\n";
    }

    void Remark(const Record& record, const std::string& text) {
        m_lines.push_back(OneLine(fmt::format("' {} {}.{}: {}", record.sequence, record.object, record.method, text)));
    }

    void WriteRecord(const Record& record, std::size_t index) {
        if (record.kind == Record::Kind::Create) {
            WriteCreate(record, index);
        } else if (record.kind == Record::Kind::Lookup) {
            if (record.HasFailed()) {
                Remark(record, "the object does not know this name");
            }
        } else if (!m_objects.IsKnown(record.objectId)) {
            Remark(record, "left out, its object is not known to this trace");
        } else if (!IsIdentifier(record.method)) {
            Remark(record, "left out, this is no name that VBScript knows");
        } else if (!record.named.empty() && !IsPut(record)) {
            Remark(record, "left out, VBScript has no named arguments");
        } else {
            WriteCall(record, index);
        }
    }

    void WriteCreate(const Record& record, std::size_t index) {
        if (record.HasFailed() || !record.result.contains("id")) {
            Remark(record, "the desktop could not be created");
            return;
        }
        const std::string name = m_objects.Define(record.result["id"].get<std::uint64_t>(), "application", index);
        m_lines.push_back(fmt::format("Set {} = CreateObject({})", name, VbText(record.method)));
    }

    static bool IsPut(const Record& record) { return (record.flags & (propertyPut | propertyPutReference)) != 0; }

    void WriteCall(const Record& record, std::size_t index) {
        const std::string statement = Statement(record, index);
        for (const std::string& line : m_values.TakeStatements()) {
            m_lines.push_back(line);
        }
        const std::string doubt = Doubt(record);
        if (!doubt.empty()) {
            Remark(record, doubt);
        }
        m_lines.push_back(statement);
        WriteFollowUp(record, index);
        m_lines.push_back(fmt::format("If Err.Number <> 0 Then Complain {}", Label(record)));
    }

    /// Why a call may fail in the script; empty when it should not.
    static std::string Doubt(const Record& record) {
        if (record.isOpen) {
            return "never came back";
        }
        if (record.HasFailed()) {
            return "failed with " + HResultNumber(record.code) + " " + record.scriptError;
        }
        const bool isExact = std::all_of(record.arguments.begin(), record.arguments.end(), IsExact);
        return isExact ? "" : "VBScript lacks the type of an argument; a strict desktop refuses the nearest one";
    }

    static std::string Label(const Record& record) {
        return VbText(fmt::format("{} {}.{}({}) ", record.sequence, record.object, record.method,
                                  record.arguments.empty() ? "" : TextOf(record.arguments[0])));
    }

    static std::string TextOf(const json& value) {
        const json content = value.is_object() ? value.value("v", json()) : json();
        return content.is_string() ? content.get<std::string>() : "..";
    }

    std::string Statement(const Record& record, std::size_t index) {
        std::vector<std::string> arguments;
        for (const json& argument : record.arguments) {
            arguments.push_back(m_values.Expression(argument, arguments.size()));
        }
        const std::string call = m_objects.NameOf(record.objectId) + "." + record.method;
        if (IsPut(record) && !arguments.empty()) {
            const std::string value = arguments.back();
            arguments.pop_back();
            const bool isReference = (record.flags & propertyPutReference) != 0;
            return (isReference ? "Set " : "") + call + InBrackets(arguments) + " = " + value;
        }
        const bool isObject = record.result.is_object() && record.result.contains("id");
        if (isObject) {
            return "Set " + Target(record, index) + " = " + call + InBrackets(arguments);
        }
        const bool hasValue = record.result.is_object() && record.result.value("vt", "EMPTY") != "EMPTY";
        if (hasValue || (record.flags & 3U) == propertyGet) {
            return "value = " + call + InBrackets(arguments);
        }
        return call + (arguments.empty() ? "" : " " + Joined(arguments));
    }

    std::string Target(const Record& record, std::size_t index) {
        const auto id = record.result["id"].get<std::uint64_t>();
        return m_objects.IsNeededAfter(id, index) ? m_objects.Define(id, record.result.value("v", ""), index)
                                                  : "unused";
    }

    /// Prints numbers, and takes objects out of a list that the call gave.
    void WriteFollowUp(const Record& record, std::size_t index) {
        if (IsNumber(record.result)) {
            m_lines.push_back(fmt::format("If Err.Number = 0 Then WScript.Echo {} & value", Label(record)));
        }
        const bool isList = record.result.is_object() && record.result.value("vt", "").rfind("ARRAY", 0) == 0;
        for (std::size_t i = 0; isList && i < record.result["v"].size(); ++i) {
            const json& element = record.result["v"][i];
            if (!element.is_object() || !element.contains("id")) {
                continue;
            }
            const auto id = element["id"].get<std::uint64_t>();
            if (m_objects.IsNeededAfter(id, index)) {
                m_lines.push_back(
                    fmt::format("Set {} = value({})", m_objects.Define(id, element.value("v", ""), index), i));
            }
        }
    }

    static std::string Joined(const std::vector<std::string>& arguments) {
        std::string text;
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            text += (i == 0 ? "" : ", ") + arguments[i];
        }
        return text;
    }

    static std::string InBrackets(const std::vector<std::string>& arguments) {
        return arguments.empty() ? "" : "(" + Joined(arguments) + ")";
    }

    const Session& m_session;
    ObjectNames m_objects;
    ScriptValues m_values;
    std::vector<std::string> m_lines;
};

} // namespace

void WriteScript(const Session& session, std::ostream& out) {
    Writer(session).Write(out);
}

} // namespace kinora::trace
