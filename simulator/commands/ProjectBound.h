#pragma once

#include "simulator/commands/DesignReference.h"
#include "simulator/commands/ScriptObject.h"

#include <string>

namespace vantor::commands {

/// An object that belongs to a project.
class ProjectBound : public ScriptObject {
public:
    ProjectBound(const MethodTable& methods, SessionPointer session, ProjectPointer project)
        : ScriptObject(methods, std::move(session)), m_project(std::move(project)) {}

protected:
    /// The project.
    /// @throws model::DesktopError (ObjectDeleted) when it has been closed.
    model::Project& RequireProject() const;

    const ProjectPointer& SharedProject() const { return m_project; }

    /// Notes that this client has changed the project.
    void MarkChanged() const;

    /// The definition behind a material name, taken from the library into the project when it is not there yet.
    /// @throws model::DesktopError (InvalidDefinition) for an unknown name.
    model::Material& RequireProjectMaterial(const std::string& name) const;

    std::string ProjectName() const override { return m_project->name; }

private:
    ProjectPointer m_project;
};

} // namespace vantor::commands
