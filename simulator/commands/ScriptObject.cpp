#include "simulator/commands/ScriptObject.h"

#include "simulator/model/DesktopError.h"

#include <new>

namespace vantor::commands {

using model::DesktopError;
using model::ErrorCode;

std::optional<int> ScriptObject::FindMethod(const std::string& name) const {
    for (std::size_t i = 0; i < m_methods.size(); ++i) {
        if (name == m_methods[i].name) {
            return static_cast<int>(i);
        }
    }
    return std::nullopt;
}

Value ScriptObject::Invoke(int methodIndex, const std::vector<Value>& arguments) {
    const Method& entry = m_methods.at(static_cast<std::size_t>(methodIndex));
    const auto fail = [&](ErrorCode code, const std::string& reason) -> DesktopError {
        const std::string text = std::string(entry.name) + ": " + model::ErrorText(code) + ": " + reason;
        Report(model::Severity::Error, text);
        return DesktopError(code, text);
    };
    try {
        Arguments reader(arguments);
        return entry.handler(*this, reader);
    } catch (const DesktopError& error) {
        throw fail(error.Code(), error.what());
    } catch (const std::bad_alloc&) {
        throw fail(ErrorCode::OutOfMemory, "not enough memory for this command");
    } catch (const std::exception& error) {
        throw fail(ErrorCode::InternalError, error.what());
    }
}

Value ScriptObject::Call(const std::string& method, const ArgumentList& arguments) {
    return Invoke(FindMethod(method).value(), arguments.values);
}

void ScriptObject::Report(model::Severity severity, const std::string& text) const {
    TheDesktop().messages.Add({ProjectName(), DesignName(), severity, text});
}

} // namespace vantor::commands
