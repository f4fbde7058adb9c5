#include "simulator/commands/DesktopObject.h"

#include "simulator/commands/ProjectObject.h"
#include "simulator/commands/Projects.h"
#include "simulator/commands/ScriptObject.h"
#include "simulator/model/DesktopError.h"
#include "simulator/model/Files.h"
#include "simulator/model/ProjectFile.h"
#include "simulator/model/Text.h"

namespace vantor::commands {
namespace {

using model::DesktopError;
using model::ErrorCode;
using model::Quoted;

/// The desktop itself.
class DesktopObject : public ScriptObject {
public:
    explicit DesktopObject(SessionPointer session) : ScriptObject(methods, std::move(session)) {}

private:
    static const MethodTable methods;

    Value NewProject(Arguments& arguments) {
        arguments.End();
        const ProjectPointer project = TheDesktop().NewProject();
        project->changedBy = SharedSession();
        return MakeProject(SharedSession(), project);
    }

    Value OpenProject(Arguments& arguments) {
        const std::string& text = arguments.Text();
        arguments.End();
        const auto file = model::WholePath(text);
        if (const ProjectPointer open = TheDesktop().FindByFile(file)) {
            if (IsChangedByOther(*open, SharedSession())) {
                throw DesktopError(ErrorCode::NotPermitted,
                                   "another client is changing the project " + Quoted(open->name) +
                                       "; it can be opened as soon as that client has saved or let go of it");
            }
            return MakeProject(SharedSession(), open);
        }
        try {
            const ProjectPointer project = model::OpenProjectFile(file);
            TheDesktop().projects.push_back(project);
            return MakeProject(SharedSession(), project);
        } catch (const DesktopError& error) {
            throw DesktopError(ErrorCode::CannotOpenProject, error.what());
        }
    }

    Value GetProjects(Arguments& arguments) {
        arguments.End();
        return MakeProjects(SharedSession());
    }

    Value QuitApplication(Arguments& arguments) {
        arguments.End();
        ItsSession().Quit();
        return {};
    }

    /// Reads project name, design name and severity.
    struct MessageQuery {
        std::string project;
        std::string design;
        int severity = 0;
    };

    static MessageQuery ReadQuery(Arguments& arguments) {
        MessageQuery query;
        query.project = arguments.Text();
        query.design = arguments.Text();
        query.severity = arguments.Integer();
        if (query.severity < 0 || query.severity > 3) {
            throw DesktopError(ErrorCode::BadArgumentValue, "argument 3: a severity is 0 (info) to 3 (fatal), not " +
                                                                std::to_string(query.severity));
        }
        return query;
    }

    Value GetMessages(Arguments& arguments) {
        const MessageQuery query = ReadQuery(arguments);
        arguments.End();
        std::vector<std::string> texts;
        for (const auto& message : TheDesktop().messages.Find(query.project, query.design, query.severity)) {
            texts.push_back(message.text);
        }
        return Value::Texts(texts);
    }

    Value ClearMessages(Arguments& arguments) {
        const MessageQuery query = ReadQuery(arguments);
        arguments.End();
        TheDesktop().messages.Clear(query.project, query.design, query.severity);
        return {};
    }

    Value AddMessage(Arguments& arguments) {
        const MessageQuery query = ReadQuery(arguments);
        const std::string& text = arguments.Text();
        arguments.Literal("");
        arguments.End();
        TheDesktop().messages.Add({query.project, query.design, static_cast<model::Severity>(query.severity), text});
        return {};
    }

    Value GetRegistryString(Arguments& arguments) {
        const std::string& key = arguments.Text();
        arguments.End();
        return RequireOption(key);
    }

    Value SetRegistryString(Arguments& arguments) {
        const std::string& key = arguments.Text();
        std::string& option = RequireOption(key);
        option = arguments.Text();
        arguments.End();
        return {};
    }

    std::string& RequireOption(const std::string& key) const {
        const auto option = TheDesktop().options.find(key);
        if (option == TheDesktop().options.end()) {
            throw DesktopError(ErrorCode::BadArgumentValue,
                               "there is no option " + Quoted(key) + "; known is " + Quoted(model::updateReportsKey));
        }
        return option->second;
    }
};

const ScriptObject::MethodTable DesktopObject::methods = {
    {"NewProject", Bound<&DesktopObject::NewProject>::Handle},
    {"OpenProject", Bound<&DesktopObject::OpenProject>::Handle},
    {"GetProjects", Bound<&DesktopObject::GetProjects>::Handle},
    {"QuitApplication", Bound<&DesktopObject::QuitApplication>::Handle},
    {"GetMessages", Bound<&DesktopObject::GetMessages>::Handle},
    {"ClearMessages", Bound<&DesktopObject::ClearMessages>::Handle},
    {"AddMessage", Bound<&DesktopObject::AddMessage>::Handle},
    {"GetRegistryString", Bound<&DesktopObject::GetRegistryString>::Handle},
    {"SetRegistryString", Bound<&DesktopObject::SetRegistryString>::Handle},
};

} // namespace

Value::Object MakeDesktop(SessionPointer session) {
    return std::make_shared<DesktopObject>(std::move(session));
}

} // namespace vantor::commands
