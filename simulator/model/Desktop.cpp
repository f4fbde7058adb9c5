#include "simulator/model/Desktop.h"

#include <algorithm>

namespace vantor::model {
namespace {

constexpr std::size_t mostMessages = 10000;

bool Selects(const std::string& wanted, const std::string& name) {
    return wanted.empty() || name.empty() || wanted == name;
}

} // namespace

void MessageList::Add(Message message) {
    if (m_messages.size() >= mostMessages) {
        m_messages.erase(m_messages.begin(), m_messages.begin() + mostMessages / 10);
    }
    m_messages.push_back(std::move(message));
}

std::vector<Message> MessageList::Find(const std::string& project, const std::string& design, int severity) const {
    std::vector<Message> found;
    for (const auto& message : m_messages) {
        if (Selects(project, message.project) && Selects(design, message.design) &&
            static_cast<int>(message.severity) >= severity) {
            found.push_back(message);
        }
    }
    return found;
}

void MessageList::Clear(const std::string& project, const std::string& design, int severity) {
    const auto cleared = [&](const Message& message) {
        return Selects(project, message.project) && Selects(design, message.design) &&
               static_cast<int>(message.severity) >= severity;
    };
    m_messages.erase(std::remove_if(m_messages.begin(), m_messages.end(), cleared), m_messages.end());
}

void Project::Close() {
    closed = true;
    for (const auto& design : designs) {
        design->keptSolver.reset();
    }
}

std::shared_ptr<Design> Project::FindDesign(const std::string& designName) const {
    for (const auto& design : designs) {
        if (design->name == designName) {
            return design;
        }
    }
    return nullptr;
}

const Material* Project::FindMaterial(const std::string& materialName, const MaterialTable& library) const {
    for (const MaterialTable* table : {&materials, &library}) {
        if (const auto found = table->find(materialName); found != table->end()) {
            return &found->second;
        }
    }
    return nullptr;
}

std::shared_ptr<Project> Desktop::FindByFile(const std::filesystem::path& file) const {
    for (const auto& project : projects) {
        std::error_code ignored;
        if (project->file == file ||
            (!project->file.empty() && std::filesystem::equivalent(project->file, file, ignored))) {
            return project;
        }
    }
    return nullptr;
}

std::shared_ptr<Project> Desktop::NewProject() {
    auto project = std::make_shared<Project>();
    const auto taken = [this](const std::string& name) {
        return std::any_of(projects.begin(), projects.end(), [&](const auto& other) { return other->name == name; });
    };
    for (int number = 1; project->name.empty() || taken(project->name); ++number) {
        project->name = "Project" + std::to_string(number);
    }
    project->changed = true;
    projects.push_back(project);
    return project;
}

void Desktop::CloseProjects() {
    for (const auto& project : projects) {
        project->Close();
    }
    projects.clear();
}

} // namespace vantor::model
