#include "simulator/commands/BoundObjects.h"
#include "simulator/model/Files.h"
#include "simulator/model/ProjectFile.h"
#include "simulator/model/Text.h"

namespace vantor::commands {
namespace {

using model::DesktopError;
using model::ErrorCode;
using model::Quoted;

/// True when another client that is still there has changed the project and not saved it.
bool IsChangedByOther(const model::Project& project, const SessionPointer& session) {
    const auto owner = project.changedBy.lock();
    return project.changed && owner && owner != session;
}

/// The open projects that a client may take, numbered from 0.
class Projects : public ScriptObject {
public:
    explicit Projects(SessionPointer session) : ScriptObject(std::move(session)) {
        for (const auto& project : TheDesktop().projects) {
            if (!IsChangedByOther(*project, SharedSession())) {
                m_projects.push_back(project);
            }
        }
    }

    const char* Kind() const override { return "Projects"; }

private:
    const std::vector<Method>& Methods() const override {
        static const std::vector<Method> methods = {
            {"Count", Bound<&Projects::Count>::Handle},
            {"Item", Bound<&Projects::Item>::Handle},
        };
        return methods;
    }

    Value Count(Arguments& arguments) {
        arguments.End();
        return Value::Long(static_cast<std::int32_t>(m_projects.size()));
    }

    Value Item(Arguments& arguments) {
        const int index = arguments.Integer();
        arguments.End();
        if (index < 0 || static_cast<std::size_t>(index) >= m_projects.size()) {
            throw DesktopError(ErrorCode::BadArgumentValue, "there is no project number " + std::to_string(index) +
                                                                " among " + std::to_string(m_projects.size()));
        }
        return MakeProject(SharedSession(), m_projects[static_cast<std::size_t>(index)]);
    }

    std::vector<ProjectPointer> m_projects;
};

/// The desktop itself.
class DesktopObject : public ScriptObject {
public:
    explicit DesktopObject(SessionPointer session) : ScriptObject(std::move(session)) {}

    const char* Kind() const override { return "Desktop"; }

private:
    const std::vector<Method>& Methods() const override {
        static const std::vector<Method> methods = {
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
        return methods;
    }

    Value NewProject(Arguments& arguments) {
        arguments.End();
        const ProjectPointer project = TheDesktop().NewProject();
        project->changedBy = SharedSession();
        return MakeProject(SharedSession(), project);
    }

    Value OpenProject(Arguments& arguments) {
        const std::string& text = arguments.Text();
        arguments.End();
        const auto file = std::filesystem::absolute(model::PathFromUtf8(text)).lexically_normal().make_preferred();
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
        return std::static_pointer_cast<ScriptObject>(std::make_shared<Projects>(SharedSession()));
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
        return Option(key);
    }

    Value SetRegistryString(Arguments& arguments) {
        const std::string& key = arguments.Text();
        std::string& option = Option(key);
        option = arguments.Text();
        arguments.End();
        return {};
    }

    std::string& Option(const std::string& key) const {
        const auto option = TheDesktop().options.find(key);
        if (option == TheDesktop().options.end()) {
            throw DesktopError(ErrorCode::BadArgumentValue,
                               "there is no option " + Quoted(key) + "; known is " + Quoted(model::updateReportsKey));
        }
        return option->second;
    }
};

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
        return std::static_pointer_cast<ScriptObject>(std::make_shared<DesktopObject>(SharedSession()));
    }
};

} // namespace

Value::Object MakeApplication(SessionPointer session) {
    return std::make_shared<Application>(std::move(session));
}

} // namespace vantor::commands
