#pragma once

#include "simulator/automation/commands/Objects.h"

#include <initializer_list>

namespace vantor::commands {

/// An object that belongs to a project.
class ProjectBound : public ScriptObject {
protected:
    ProjectBound(SessionPointer session, ProjectPointer project)
        : ScriptObject(std::move(session)), m_project(std::move(project)) {}

    /// The project.
    /// @throws model::DesktopError (ObjectDeleted) when it has been closed.
    model::Project& TheProject() const;

    const ProjectPointer& SharedProject() const { return m_project; }

    /// Notes that this client has changed the project.
    void MarkChanged() const;

    /// The definition behind a material name, taken from the library into the project when it is not there yet.
    /// @throws model::DesktopError (InvalidDefinition) for an unknown name.
    model::Material& ProjectMaterial(const std::string& name) const;

    std::string ProjectName() const override { return m_project->name; }

private:
    ProjectPointer m_project;
};

/// An object that belongs to a design.
class DesignBound : public ProjectBound {
protected:
    DesignBound(SessionPointer session, DesignPlace place)
        : ProjectBound(std::move(session), std::move(place.project)), m_design(std::move(place.design)) {}

    /// The design.
    /// @throws model::DesktopError (ObjectDeleted) when its project has been closed.
    model::Design& TheDesign() const;

    DesignPlace Place() const { return {SharedProject(), m_design}; }

    /// Notes a change of what is solved: the solution is no longer that of the model.
    void MarkModelChanged() const;

    std::string DesignName() const override { return m_design->name; }

private:
    std::shared_ptr<model::Design> m_design;
};

/// A failure of kind BadArgumentValue.
[[noreturn]] void FailBadValue(const std::string& reason);

/// Complains (BadArgumentValue) unless the text is one of those.
void NeedOneOf(const std::string& text, std::initializer_list<const char*> known, const std::string& place);

/// The pairs "Key:=", value of an array that has no "NAME:"; keys come without ":=".
/// @throws model::DesktopError for a key that is no text or does not end in ":=", and for a missing value.
std::vector<std::pair<std::string, const Value*>> ReadPairs(const Value::List& elements, const std::string& place);

} // namespace vantor::commands
