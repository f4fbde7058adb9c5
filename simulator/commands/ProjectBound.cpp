#include "simulator/commands/ProjectBound.h"

#include "simulator/model/DesktopError.h"
#include "simulator/model/Text.h"

namespace vantor::commands {

using model::DesktopError;
using model::ErrorCode;
using model::Quoted;

model::Project& ProjectBound::RequireProject() const {
    if (m_project->closed) {
        throw DesktopError(ErrorCode::ObjectDeleted, "the project " + Quoted(m_project->name) + " has been closed");
    }
    return *m_project;
}

void ProjectBound::MarkChanged() const {
    m_project->changed = true;
    m_project->changedBy = SharedSession();
}

model::Material& ProjectBound::RequireProjectMaterial(const std::string& name) const {
    model::Project& project = RequireProject();
    const model::Material* material = project.FindMaterial(name, TheDesktop().library);
    if (!material) {
        throw DesktopError(ErrorCode::InvalidDefinition,
                           "there is no material " + Quoted(name) + " in the project and in the library");
    }
    return project.materials.emplace(name, *material).first->second;
}

} // namespace vantor::commands
