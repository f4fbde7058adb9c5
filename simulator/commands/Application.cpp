#include "simulator/commands/Application.h"

#include "simulator/commands/DesktopObject.h"
#include "simulator/commands/ScriptObject.h"

namespace vantor::commands {
namespace {

/// What a client gets when it asks the system for the desktop.
class Application : public ScriptObject {
public:
    explicit Application(SessionPointer session) : ScriptObject(methods, std::move(session)) {}

private:
    static const MethodTable methods;

    Value GetAppDesktop(Arguments& arguments) {
        arguments.End();
        return MakeDesktop(SharedSession());
    }
};

const ScriptObject::MethodTable Application::methods = {
    {"GetAppDesktop", Bound<&Application::GetAppDesktop>::Handle},
};

} // namespace

Value::Object MakeApplication(SessionPointer session) {
    return std::make_shared<Application>(std::move(session));
}

} // namespace vantor::commands
