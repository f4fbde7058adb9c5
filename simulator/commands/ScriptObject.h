#pragma once

#include "simulator/commands/Arguments.h"
#include "simulator/commands/Session.h"
#include "simulator/commands/Value.h"

#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantor::commands {

/// The arguments of a call, written as a braced list: {"Setup1", List{...}}. A single array in braces is one argument,
/// which a bare vector would take for the whole list.
struct ArgumentList {
    ArgumentList() = default;
    ArgumentList(std::initializer_list<Value> list) : values(list) {}
    ArgumentList(std::vector<Value> list) : values(std::move(list)) {}

    std::vector<Value> values;
};

/// An object of the scripting interface: a table from method name to handler.
///
/// Names are told apart by letter case. One client's objects share its session. Objects stay valid after the thing
/// they stand for is gone; their methods then fail with ObjectDeleted.
class ScriptObject {
public:
    using Handler = Value (*)(ScriptObject& object, Arguments& arguments);

    struct Method {
        const char* name;
        Handler handler;
    };

    /// The methods of one class of objects; never empty.
    using MethodTable = std::vector<Method>;

    virtual ~ScriptObject() = default;
    ScriptObject(const ScriptObject&) = delete;
    ScriptObject& operator=(const ScriptObject&) = delete;

    /// The index of a method in the table; nothing for an unknown name.
    std::optional<int> FindMethod(const std::string& name) const;

    /// Number of methods; valid indices are 0 to count - 1.
    int MethodCount() const { return static_cast<int>(m_methods.size()); }

    /// Runs a method. A failure is added to the desktop's messages as an error and thrown on.
    /// @throws model::DesktopError, whose text names method, code and reason.
    Value Invoke(int methodIndex, const std::vector<Value>& arguments);

    /// FindMethod and Invoke in one.
    /// @pre the method exists.
    Value Call(const std::string& method, const ArgumentList& arguments = {});

    Session& ItsSession() const { return *m_session; }

protected:
    /// @param methods the one table of the object's class; it has to outlive the object.
    ScriptObject(const MethodTable& methods, SessionPointer session)
        : m_methods(methods), m_session(std::move(session)) {}

    /// Names of the project and design that messages about this object belong to; empty where there is none.
    virtual std::string ProjectName() const { return {}; }
    virtual std::string DesignName() const { return {}; }

    /// Adds a message that belongs to this object's project and design.
    void Report(model::Severity severity, const std::string& text) const;

    const SessionPointer& SharedSession() const { return m_session; }
    model::Desktop& TheDesktop() const { return m_session->TheDesktop(); }

private:
    const MethodTable& m_methods;
    SessionPointer m_session;
};

/// Makes a table entry's handler from a member function `Value (Class::*)(Arguments&)`.
template <auto member>
struct Bound;

template <typename Class, Value (Class::*member)(Arguments&)>
struct Bound<member> {
    static Value Handle(ScriptObject& object, Arguments& arguments) {
        return (static_cast<Class&>(object).*member)(arguments);
    }
};

} // namespace vantor::commands
