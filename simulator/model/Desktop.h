#pragma once

#include "simulator/model/Design.h"
#include "simulator/model/Materials.h"

#include <chrono>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace vantor::model {

/// How serious a message is; the numbers are those of the scripting interface.
enum class Severity { Info = 0, Warning = 1, Error = 2, Fatal = 3 };

struct Message {
    std::string project;
    std::string design;
    Severity severity = Severity::Info;
    std::string text;
};

/// The desktop's message list, oldest first.
class MessageList {
public:
    /// Adds a message; beyond ten thousand the oldest are dropped.
    void Add(Message message);

    /// Messages of a project and design with at least the given severity. An empty name stands for all, and a message
    /// that belongs to no project or design in particular belongs to each.
    std::vector<Message> Find(const std::string& project, const std::string& design, int severity) const;

    /// Removes what Find would give.
    void Clear(const std::string& project, const std::string& design, int severity);

private:
    std::vector<Message> m_messages;
};

/// A project and the file it is kept in.
struct Project {
    std::string name;
    /// Empty until it is saved for the first time.
    std::filesystem::path file;
    std::vector<std::shared_ptr<Design>> designs;
    std::string activeDesign;
    /// The project's own definitions.
    MaterialTable materials;
    /// Changed since it was saved or opened.
    bool changed = false;
    bool closed = false;
    /// The client that made the unsaved changes.
    std::weak_ptr<void> changedBy;

    /// Closes it without saving; what its designs keep for the next solve is let go of, whoever still holds them.
    void Close();

    std::shared_ptr<Design> FindDesign(const std::string& designName) const;

    /// The definition that an object's material name stands for: the project's own first, then the library's.
    const Material* FindMaterial(const std::string& materialName, const MaterialTable& library) const;
};

/// Everything that a running desktop holds.
struct Desktop {
    MaterialTable library;
    std::vector<std::shared_ptr<Project>> projects;
    MessageList messages;
    /// Registry key to value.
    std::map<std::string, std::string> options;
    /// An import that has taken longer is told of with its time.
    std::chrono::duration<double> longImport{1.0};

    /// The open project that is kept in this file, or null.
    std::shared_ptr<Project> FindByFile(const std::filesystem::path& file) const;

    /// A new, empty project with a name that no open project has: Project1, Project2, ...
    std::shared_ptr<Project> NewProject();

    /// Closes all projects without saving.
    void CloseProjects();
};

/// The desktop option that says when reports are refilled.
inline constexpr const char* updateReportsKey = "Desktop\\Settings\\ProjectOptions\\Veltrix 3D\\UpdateReportsOnSolve";

} // namespace vantor::model
