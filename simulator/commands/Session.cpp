#include "simulator/commands/Session.h"

namespace vantor::commands {

bool IsChangedByOther(const model::Project& project, const SessionPointer& session) {
    const auto owner = project.changedBy.lock();
    return project.changed && owner && owner != session;
}

} // namespace vantor::commands
