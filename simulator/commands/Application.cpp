#include "simulator/commands/Application.h"

#include "simulator/commands/DesktopObject.h"
#include "simulator/commands/ScriptObject.h"

namespace vantor::commands {
namespace {

/// What a client gets when it asks the system for the desktop.
class Application : public ScriptObject {
public:
    explicit Application(SessionPointer session) : ScriptObject(std::move(session)) {}

    const char* Kind() const override { return "Application"; }

private:
    const std::vector<Method>& Methods() const override {
        static const std::vector<Method> methods = {
            {"GetAppDesktop", Bound<&Application::GetAppDesktop>::Handle},
        };
        return methods;
    }

    Value GetAppDesktop(Arguments& arguments) {
        arguments.End();
        return MakeDesktop(SharedSession());
    }
};

} // namespace

Value::Object MakeApplication(SessionPointer session) {
    return std::make_shared<Application>(std::move(session));
}

} // namespace vantor::commands
