#include "comutils/ComUtils.h"
#include "comutils/Dispatch.h"
#include "comutils/Names.h"
#include "comutils/Pose.h"
#include "coupling/KinoraVeltrixCoupling.h"
#include "coupling/ModelBuild.h"

#include <algorithm>

namespace {

using Group = IKinoraVeltrixInterface::Group;

/// The driven frames, the objects in them, and the loads. Everything happens in the global frame again afterwards.
bool PlaceObjects(IDispatch* editor, const Group& group) {
    const std::string& body = group.transform.name;
    if (!CComUtils::CallCreateRelativeCS(editor, body))
        return false;
    for (const std::string& name : group.objects) {
        if (!CComUtils::CallMove(editor, group.transform, name) ||
            !CComUtils::CallRotate(editor, group.transform, name))
            return false;
        const CObject object = Dispatch::Own(CComUtils::CallGetChildObject(editor, name));
        if (!object || !CComUtils::RecurseSetCoordinateSystem(object.get(), body))
            return false;
    }
    return CComUtils::CallSetWorkingCS(editor, "Global");
}

bool DefineLoads(IDispatch* editor, IDispatch* loadModule, IDispatch* design, const Group& group,
                 const std::string& setup) {
    const std::string& body = group.transform.name;
    std::vector<std::string> objects = CComUtils::GetNonVacuumObjects(editor, group.objects);
    if (objects.empty())
        objects = group.objects;
    if (objects.empty())
        return true;
    return CComUtils::CallAssignForce(loadModule, body, objects) &&
           CComUtils::CallAssignTorque(loadModule, body, objects) &&
           CComUtils::CreateOutputVariables(design, group.transform, setup);
}

bool AddBody(IDispatch* editor, IDispatch* design, const Group& group, const std::string& setup) {
    const CObject loadModule = Dispatch::Own(CComUtils::CallGetModule(design, Names::loadModule));
    return loadModule && PlaceObjects(editor, group) && DefineLoads(editor, loadModule.get(), design, group, setup);
}

std::string WithoutQuotes(const std::string& text) {
    if (text.empty() || text.front() != '"' || text.back() != '"')
        return text;
    return text.size() > 2 ? text.substr(1, text.size() - 2) : std::string();
}

std::vector<std::string> AllObjects(const std::vector<Group>& groups) {
    std::vector<std::string> objects;
    for (const Group& group : groups)
        objects.insert(objects.end(), group.objects.begin(), group.objects.end());
    return objects;
}

} // namespace

bool CKinoraVeltrixCoupling::InitMagneticObjects(const std::vector<Group>& groups,
                                                 const std::map<std::string, Material>& materials) {
    if (!m_pDesign)
        return false;
    ModelBuild model;
    if (!PrepareModel(model))
        return false;
    for (const auto& [object, material] : materials)
        if (!AssignMaterial(model, object, material))
            return false;
    if (!AddMissingMaterials(model, groups) || !AddBodies(model, groups))
        return false;
    if (!model.updates.empty() && !CComUtils::UpdateVariables(m_pDesign, model.updates))
        return false;
    m_stepRows.push_back(std::move(model.initialRow));
    return AddParametricSetup(true) && CreateReportsAndPlot(model, groups) && model.allVariablesCreated;
}

/// Setup, editor, initial variables, region, and the objects that materials are reached through.
bool CKinoraVeltrixCoupling::PrepareModel(ModelBuild& model) {
    std::vector<std::string> variables;
    if (!Dispatch::QueryLocalVariables(m_pDesign, variables))
        return false;
    model.existingVariables.insert(variables.begin(), variables.end());
    if (!CComUtils::CheckAndInsertSetup(m_pDesign))
        return false;
    model.setup = CComUtils::GetFirstSetup(m_pDesign);
    if (model.setup.empty())
        return false;
    model.editor = Dispatch::Own(CComUtils::CallSetActive(m_pDesign, L"SetActiveEditor", Names::modelerEditor));
    if (!model.editor)
        return false;
    CreateInitialVariables(model);
    if (!CComUtils::CallAssignRegion(model.editor.get()))
        return false;
    model.materials = Dispatch::Own(CComUtils::CallGetChildObject(m_pProject, Names::materialsChild));
    if (!model.materials)
        return false;
    model.definitions = Dispatch::QueryObject(m_pProject, L"GetDefinitionManager", {});
    return model.definitions != nullptr;
}

void CKinoraVeltrixCoupling::CreateInitialVariables(ModelBuild& model) const {
    static constexpr const char* variables[][2] = {
        {"RegionPaddingX", "500"}, {"RegionPaddingY", "500"}, {"RegionPaddingZ", "500"}, {Names::timeVariable, "0s"}};
    for (const auto& [name, value] : variables)
        if (!model.existingVariables.count(name) && !SetVariableValue(name, value, true))
            model.allVariablesCreated = false;
}

/// Gives the project a definition of its own of every material that a body's object has.
bool CKinoraVeltrixCoupling::AddMissingMaterials(const ModelBuild& model, const std::vector<Group>& groups) const {
    const CObject materials = Dispatch::Own(CComUtils::CallGetChildObject(m_pProject, Names::materialsChild));
    if (!materials)
        return false;
    std::set<std::string> defined;
    for (std::string& name : CComUtils::CallGetChildNames(materials.get()))
        defined.insert(std::move(name));
    for (const std::string& name : AllObjects(groups)) {
        const CObject object = Dispatch::Own(CComUtils::CallGetChildObject(model.editor.get(), name));
        const CValue assigned = CValue::Attach(CComUtils::CallGetPropValue(object.get(), "Material"));
        if (!assigned.IsText())
            continue;
        const std::string material = WithoutQuotes(assigned.ToText());
        if (defined.count(material))
            continue;
        if (!Dispatch::Call(m_pProject, L"AddMaterial", {{Names::Block(material)}}))
            return false;
        defined.insert(material);
    }
    return true;
}

bool CKinoraVeltrixCoupling::AddBodies(ModelBuild& model, const std::vector<Group>& groups) {
    m_stepRows.clear();
    m_stepEntries = {Names::timeVariable};
    model.initialRow = {"0s"};
    for (const Group& group : groups)
        if (RecordInitialPose(model, group.transform) && !AddBody(model.editor.get(), m_pDesign, group, model.setup))
            return false;
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
        if (!SetVariableValue(name, value, true))
            model.allVariablesCreated = false;
    }
    return isNew;
}

/// Empty reports per body, filled by the steps, and a plot of the field in all bodies. Without variables or objects
/// there is nothing to report or plot.
bool CKinoraVeltrixCoupling::CreateReportsAndPlot(const ModelBuild& model, const std::vector<Group>& groups) const {
    std::vector<std::string> variables;
    if (!Dispatch::QueryLocalVariables(m_pDesign, variables))
        return false;
    const CObject reports = Dispatch::Own(CComUtils::CallGetModule(m_pDesign, Names::reportModule));
    if (!reports)
        return false;
    if (variables.empty())
        return true;
    for (const Group& group : groups) {
        const std::string& body = group.transform.name;
        CComUtils::CreateEmptyReport(reports.get(), Names::Force(body), model.setup, variables);
        CComUtils::CreateEmptyReport(reports.get(), Names::Torque(body), model.setup, variables);
    }
    const std::vector<std::string> objects = AllObjects(groups);
    if (objects.empty())
        return true;
    const CObject fields = Dispatch::Own(CComUtils::CallGetModule(m_pDesign, Names::fieldsModule));
    return fields && CComUtils::CreateFieldPlot(fields.get(), "H_VectorPlot", "H", model.setup, "H_Vector", objects);
}
