#include "simulator/commands/Projects.h"

#include "simulator/commands/ProjectObject.h"
#include "simulator/commands/ScriptObject.h"
#include "simulator/model/DesktopError.h"

namespace vantor::commands {
namespace {

using model::DesktopError;
using model::ErrorCode;

/// The open projects that a client may take, numbered from 0.
class Projects : public ScriptObject {
public:
    explicit Projects(SessionPointer session) : ScriptObject(methods, std::move(session)) {
        for (const auto& project : TheDesktop().projects) {
            if (!IsChangedByOther(*project, SharedSession())) {
                m_projects.push_back(project);
            }
        }
    }

private:
    static const MethodTable methods;

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

const ScriptObject::MethodTable Projects::methods = {
    {"Count", Bound<&Projects::Count>::Handle},
    {"Item", Bound<&Projects::Item>::Handle},
};

} // namespace

Value::Object MakeProjects(SessionPointer session) {
    return std::make_shared<Projects>(std::move(session));
}

} // namespace vantor::commands
