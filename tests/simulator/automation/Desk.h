#pragma once

#include "simulator/commands/ScriptObject.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace desk {

using vantor::commands::Value;
using List = Value::List;

/// A desktop in this process with one client, and the commands of a coupled session as a client sends them.
class Desk {
public:
    Desk();
    ~Desk();
    Desk(const Desk&) = delete;
    Desk& operator=(const Desk&) = delete;

    /// The desktop object of a further client.
    Value::Object NewClient() const;

    /// A project with a design, units in millimetres, the geometry of an OBJ text and the setup Setup1.
    void Create(const std::string& objText);

    /// A body as the library sets it up: variables, frames, placement, force and torques, output variables.
    /// @param x place of the body's origin on the x axis, metres.
    void AddBody(const std::string& body, const std::string& object, const std::string& material, double x);

    void AddVariable(const std::string& name, const std::string& value) const;
    void ChangeVariable(const std::string& name, const std::string& value) const;
    void CreateRegion() const;
    double Output(const std::string& name) const;

    /// All messages of the design with at least this severity.
    std::vector<std::string> Messages(int severity) const;

    /// A file in the test's own folder.
    std::string File(const std::string& name) const;
    void WriteFile(const std::string& name, const std::string& content) const;

    std::shared_ptr<vantor::model::Desktop> world;
    Value::Object desktop, project, design, editor;
    bool quit = false;

private:
    std::string m_folder;
};

/// The object in a result; fails the test when there is none.
Value::Object ObjectOf(const Value& value);

/// The texts of a list.
std::vector<std::string> TextsOf(const Value& value);

/// The description of the error that a command fails with; "none" when it succeeds.
std::string Complaint(const std::function<void()>& command);

List NewVariableArgument(const std::string& name, const std::string& value);
List ChangedVariableArgument(const std::string& name, const std::string& value);
List RegionParameters();
List RegionAttributes();
List FrameParameters(const std::string& body);
List ForceArgument(const std::string& body, const std::string& object);
List TorqueArgument(const std::string& body, const std::string& axis, const std::string& object);
List AssignMaterialAttributes(const std::string& material);
List HistoryArgument(const std::vector<std::string>& names, const std::vector<std::vector<std::string>>& rows);
List FieldPlotArgument(const std::vector<std::string>& objects);

} // namespace desk
