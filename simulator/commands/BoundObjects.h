#pragma once

#include "simulator/commands/Objects.h"
#include "simulator/model/Text.h"

#include <algorithm>
#include <initializer_list>
#include <string>
#include <vector>

namespace vantor::commands {

/// An object that belongs to a project.
class ProjectBound : public ScriptObject {
public:
    ProjectBound(SessionPointer session, ProjectPointer project)
        : ScriptObject(std::move(session)), m_project(std::move(project)) {}

protected:
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
public:
    DesignBound(SessionPointer session, DesignPlace place)
        : ProjectBound(std::move(session), std::move(place.project)), m_design(std::move(place.design)) {}

protected:
    /// The design.
    /// @throws model::DesktopError (ObjectDeleted) when its project has been closed.
    model::Design& TheDesign() const;

    DesignPlace Place() const { return {SharedProject(), m_design}; }

    /// Notes a change of what is solved: the solution is no longer that of the model.
    void MarkModelChanged() const;

    std::string DesignName() const override { return m_design->name; }

    /// A method without arguments that gives the names of a list of the design: `Names<&model::Design::reports>`.
    template <auto list>
    Value Names(Arguments& arguments) {
        arguments.End();
        return Value::Texts(model::NamesOf(TheDesign().*list));
    }

private:
    std::shared_ptr<model::Design> m_design;
};

/// A failure of kind BadArgumentValue.
[[noreturn]] void FailBadValue(const std::string& reason);

/// The element of that name.
/// @param kind  what the elements are, for the complaint: "report"
/// @throws model::DesktopError (BadArgumentValue) when there is none.
template <typename Element>
Element& NeedNamed(std::vector<Element>& elements, const std::string& name, const char* kind) {
    Element* const element = model::FindByName(elements, name);
    if (element == nullptr) {
        FailBadValue(std::string("there is no ") + kind + " " + model::Quoted(name));
    }
    return *element;
}

/// Erases the elements of these names.
template <typename Element>
void EraseNamed(std::vector<Element>& elements, const std::vector<std::string>& names) {
    const auto isNamed = [&names](const Element& element) {
        return std::find(names.begin(), names.end(), element.name) != names.end();
    };
    elements.erase(std::remove_if(elements.begin(), elements.end(), isNamed), elements.end());
}

/// Complains (BadArgumentValue) unless the text is one of those.
void NeedOneOf(const std::string& text, std::initializer_list<const char*> known, const std::string& place);

/// The pairs "Key:=", value of an array that has no "NAME:"; keys come without ":=".
/// @throws model::DesktopError for a key that is no text or does not end in ":=", and for a missing value.
std::vector<std::pair<std::string, const Value*>> ReadPairs(const Value::List& elements, const std::string& place);

} // namespace vantor::commands
