#include "comutils/CoordinateSystemCommands.h"
#include "comutils/DesignCommands.h"
#include "comutils/DesignVariableCommands.h"
#include "comutils/FieldPlotCommands.h"
#include "comutils/LoadCommands.h"
#include "comutils/MaterialCommands.h"
#include "comutils/ModelerCommands.h"
#include "comutils/Names.h"
#include "comutils/ObjectCommands.h"
#include "comutils/OutputVariableCommands.h"
#include "comutils/Pose.h"
#include "comutils/ProjectCommands.h"
#include "comutils/ReportCommands.h"
#include "comutils/SetupCommands.h"
#include "coupling/ModelBuild.h"
#include "coupling/Operation.h"

#include <algorithm>

namespace {

using Group = IKinoraVeltrixInterface::Group;

constexpr char startTime[] = "0s";

/// The driven frames, the objects in them, and the loads. Everything happens in the global frame again afterwards.
bool AttachObjects(IDispatch* editor, const Group& group) {
    const std::string& body = group.transform.name;
    if (!CoordinateSystemCommands::CreateBodyFrames(editor, body)) {
        return false;
    }
    for (const std::string& name : group.objects) {
        if (!CoordinateSystemCommands::Move(editor, group.transform, name) ||
            !CoordinateSystemCommands::Rotate(editor, group.transform, name)) {
            return false;
        }
        const CObject object = ObjectCommands::GetChildObject(editor, name);
        if (!object || !CoordinateSystemCommands::AttachToBody(object.get(), body)) {
            return false;
        }
    }
    return CoordinateSystemCommands::SetWorkingFrame(editor, Names::globalFrame);
}

bool DefineLoads(IDispatch* editor, IDispatch* loadModule, IDispatch* design, const Group& group,
                 const std::string& setup) {
    const std::string& body = group.transform.name;
    std::vector<std::string> objects = MaterialCommands::NonVacuumObjects(editor, group.objects);
    if (objects.empty()) {
        objects = group.objects;
    }
    if (objects.empty()) {
        return true;
    }
    return LoadCommands::AssignForce(loadModule, body, objects) &&
           LoadCommands::AssignTorque(loadModule, body, objects) &&
           OutputVariableCommands::CreateOutputVariables(design, body, setup);
}

bool AddBody(IDispatch* editor, IDispatch* design, const Group& group, const std::string& setup) {
    const CObject loadModule = DesignCommands::GetModule(design, Names::loadModule);
    return loadModule && AttachObjects(editor, group) && DefineLoads(editor, loadModule.get(), design, group, setup);
}

std::string WithoutQuotes(const std::string& text) {
    if (text.empty() || text.front() != '"' || text.back() != '"') {
        return text;
    }
    return text.size() > 2 ? text.substr(1, text.size() - 2) : std::string();
}

std::vector<std::string> AllObjects(const std::vector<Group>& groups) {
    std::vector<std::string> objects;
    for (const Group& group : groups) {
        objects.insert(objects.end(), group.objects.begin(), group.objects.end());
    }
    return objects;
}

} // namespace

bool CKinoraVeltrixCoupling::InitMagneticObjects(const std::vector<Group>& groups,
                                                 const std::map<std::string, Material>& materials) {
    const HoldingOperation operation(*this);
    if (!operation.HasBegun() || !m_pDesign) {
        return false;
    }
    ModelBuild model;
    if (!PrepareModel(model)) {
        return false;
    }
    for (const auto& [object, material] : materials) {
        if (!AssignMaterial(model, object, material)) {
            return false;
        }
    }
    if (!AddMissingMaterials(model, groups) || !AddBodies(model, groups)) {
        return false;
    }
    if (!model.updates.empty() && !DesignVariableCommands::ChangeVariables(m_pDesign, model.updates)) {
        return false;
    }
    m_stepRows.push_back(std::move(model.initialRow));
    return WriteHistory(true) && CreateReportsAndPlot(model, groups) && model.allVariablesCreated;
}

/// Setup, editor, initial variables, region, and the objects that materials are reached through.
bool CKinoraVeltrixCoupling::PrepareModel(ModelBuild& model) {
    std::vector<std::string> variables;
    if (!DesignVariableCommands::GetVariables(m_pDesign, variables)) {
        return false;
    }
    model.existingVariables.insert(variables.begin(), variables.end());
    if (!SetupCommands::EnsureSetup(m_pDesign)) {
        return false;
    }
    model.setup = SetupCommands::GetFirstSetup(m_pDesign);
    if (model.setup.empty()) {
        return false;
    }
    model.editor = DesignCommands::SetActiveEditor(m_pDesign, Names::modelerEditor);
    if (!model.editor) {
        return false;
    }
    CreateInitialVariables(model);
    if (!ModelerCommands::CreateRegion(model.editor.get())) {
        return false;
    }
    model.materials = ObjectCommands::GetChildObject(m_pProject, Names::materialsChild);
    if (!model.materials) {
        return false;
    }
    model.definitions = ProjectCommands::GetDefinitionManager(m_pProject);
    return model.definitions != nullptr;
}

void CKinoraVeltrixCoupling::CreateInitialVariables(ModelBuild& model) const {
    const auto create = [&](const char* name, const char* value) {
        if (!model.existingVariables.count(name) &&
            !DesignVariableCommands::SetVariable(m_pDesign, name, value, true)) {
            model.allVariablesCreated = false;
        }
    };
    for (const char* padding : Names::regionPaddings) {
        create(padding, "500"); // percent
    }
    create(Names::timeVariable, startTime);
}

/// Gives the project a definition of its own of every material that a body's object has.
bool CKinoraVeltrixCoupling::AddMissingMaterials(const ModelBuild& model, const std::vector<Group>& groups) const {
    const CObject materials = ObjectCommands::GetChildObject(m_pProject, Names::materialsChild);
    if (!materials) {
        return false;
    }
    std::set<std::string> defined;
    for (std::string& name : ObjectCommands::ChildNames(materials.get())) {
        defined.insert(std::move(name));
    }
    for (const std::string& name : AllObjects(groups)) {
        const CValue assigned = MaterialCommands::MaterialOf(model.editor.get(), name);
        if (!assigned.IsText()) {
            continue;
        }
        const std::string material = WithoutQuotes(assigned.ToText());
        if (defined.count(material)) {
            continue;
        }
        if (!MaterialCommands::AddMaterial(m_pProject, material)) {
            return false;
        }
        defined.insert(material);
    }
    return true;
}

bool CKinoraVeltrixCoupling::AddBodies(ModelBuild& model, const std::vector<Group>& groups) {
    m_stepRows.clear();
    m_stepEntries = {Names::timeVariable};
    model.initialRow = {startTime};
    for (const Group& group : groups) {
        if (RecordInitialPose(model, group.transform) && !AddBody(model.editor.get(), m_pDesign, group, model.setup)) {
            return false;
        }
    }
    return true;
}

/// @return true when the design lacked a pose variable: the body is new to it
bool CKinoraVeltrixCoupling::RecordInitialPose(ModelBuild& model, const Transform& pose) {
    bool isNew = false;
    for (const auto& [name, value] : Pose::Variables(pose)) {
        m_stepEntries.push_back(name);
        model.initialRow.push_back(value);
        if (model.existingVariables.count(name)) {
            model.updates.emplace(name, value);
            continue;
        }
        isNew = true;
        if (!DesignVariableCommands::SetVariable(m_pDesign, name, value, true)) {
            model.allVariablesCreated = false;
        }
    }
    return isNew;
}

/// Empty reports per body, filled by the steps, and a plot of the field in all bodies. Without variables or objects
/// there is nothing to report or plot.
bool CKinoraVeltrixCoupling::CreateReportsAndPlot(const ModelBuild& model, const std::vector<Group>& groups) const {
    std::vector<std::string> variables;
    if (!DesignVariableCommands::GetVariables(m_pDesign, variables)) {
        return false;
    }
    const CObject reports = DesignCommands::GetModule(m_pDesign, Names::reportModule);
    if (!reports) {
        return false;
    }
    if (variables.empty()) {
        return true;
    }
    for (const Group& group : groups) {
        const std::string& body = group.transform.name;
        ReportCommands::CreateEmptyReport(reports.get(), Names::Force(body), model.setup, variables);
        ReportCommands::CreateEmptyReport(reports.get(), Names::Torque(body), model.setup, variables);
    }
    const std::vector<std::string> objects = AllObjects(groups);
    if (objects.empty()) {
        return true;
    }
    const CObject fields = DesignCommands::GetModule(m_pDesign, Names::fieldsModule);
    return fields &&
           FieldPlotCommands::CreateFieldPlot(fields.get(), "H_VectorPlot", "H", model.setup, "H_Vector", objects);
}
