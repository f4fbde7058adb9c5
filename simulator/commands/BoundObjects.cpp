#include "simulator/commands/BoundObjects.h"

#include "simulator/model/Text.h"

#include <algorithm>

namespace vantor::commands {

using model::DesktopError;
using model::ErrorCode;
using model::Quoted;

model::Project& ProjectBound::TheProject() const {
    if (m_project->closed) {
        throw DesktopError(ErrorCode::ObjectDeleted, "the project " + Quoted(m_project->name) + " has been closed");
    }
    return *m_project;
}

void ProjectBound::MarkChanged() const {
    m_project->changed = true;
    m_project->changedBy = SharedSession();
}

model::Material& ProjectBound::ProjectMaterial(const std::string& name) const {
    model::Project& project = TheProject();
    const model::Material* material = project.FindMaterial(name, TheDesktop().library);
    if (material == nullptr) {
        throw DesktopError(ErrorCode::InvalidDefinition,
                           "there is no material " + Quoted(name) + " in the project and in the library");
    }
    return project.materials.emplace(name, *material).first->second;
}

model::Design& DesignBound::TheDesign() const {
    TheProject();
    return *m_design;
}

void DesignBound::MarkModelChanged() const {
    MarkChanged();
    if (m_design->solution) {
        m_design->solution->current = false;
    }
}

void FailBadValue(const std::string& reason) {
    throw DesktopError(ErrorCode::BadArgumentValue, reason);
}

void NeedOneOf(const std::string& text, std::initializer_list<const char*> known, const std::string& place) {
    if (std::none_of(known.begin(), known.end(), [&](const char* word) { return text == word; })) {
        FailBadValue(place + ": unknown value " + Quoted(text) + "; known are " +
                     model::QuotedList(std::vector<std::string>(known.begin(), known.end())));
    }
}

std::vector<std::pair<std::string, const Value*>> ReadPairs(const Value::List& elements, const std::string& place) {
    constexpr std::string_view mark = ":=";
    std::vector<std::pair<std::string, const Value*>> pairs;
    for (std::size_t i = 0; i < elements.size(); i += 2) {
        const std::string elementPlace = place + ", element " + std::to_string(i + 1);
        const std::string& key = NeedText(elements[i], elementPlace);
        if (key.size() < mark.size() || key.compare(key.size() - mark.size(), mark.size(), mark) != 0) {
            throw DesktopError(ErrorCode::InvalidArgument,
                               elementPlace + ": a key that ends in \":=\" is needed, not " + Quoted(key));
        }
        if (i + 1 == elements.size()) {
            throw DesktopError(ErrorCode::IncompleteArray, place + ": the value of " + Quoted(key) + " is missing");
        }
        pairs.emplace_back(key.substr(0, key.size() - mark.size()), &elements[i + 1]);
    }
    return pairs;
}

} // namespace vantor::commands
