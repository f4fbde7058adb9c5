#include "comutils/ComUtils.h"

#include "comutils/CoordinateSystemCommands.h"
#include "comutils/DesignCommands.h"
#include "comutils/DesignVariableCommands.h"
#include "comutils/DesktopCommands.h"
#include "comutils/Dispatch.h"
#include "comutils/FieldPlotCommands.h"
#include "comutils/LoadCommands.h"
#include "comutils/MaterialCommands.h"
#include "comutils/ModelerCommands.h"
#include "comutils/Names.h"
#include "comutils/ObjectCommands.h"
#include "comutils/OutputVariableCommands.h"
#include "comutils/ParametricCommands.h"
#include "comutils/ProjectCommands.h"
#include "comutils/ReportCommands.h"
#include "comutils/SetupCommands.h"

namespace {

std::set<std::string> AsSet(const std::vector<std::string>& texts) {
    return {texts.begin(), texts.end()};
}

} // namespace

bool CComUtils::SupportComFunction(IDispatch* object, const wchar_t* methodName) {
    return Dispatch::Knows(object, methodName);
}

bool CComUtils::CallComFunction(IDispatch* object, const wchar_t* methodName, unsigned short flags,
                                DISPPARAMS& arguments, VARIANT& result) {
    return Dispatch::Invoke(object, methodName, flags, arguments, result);
}

bool CComUtils::CallComFunction(IDispatch* object, const wchar_t* methodName, VARIANT& result) {
    DISPPARAMS none = {};
    return Dispatch::Invoke(object, methodName, DISPATCH_METHOD, none, result);
}

VARIANT CComUtils::CreateVariant(const std::string& text) {
    return CValue(text).Detach();
}

VARIANT CComUtils::CreateStringArray(const std::vector<std::string>& texts) {
    return CListBuilder::OfTexts(texts).Detach();
}

std::vector<std::string> CComUtils::ReadStringArray(const VARIANT& array) {
    return CValue::TextsOf(array);
}

VARIANT CComUtils::CreateVariantArray(const std::vector<VARIANT>& values) {
    return CListBuilder::OfCopies(values).Detach();
}

std::vector<std::string> CComUtils::CallGetChildNames(IDispatch* object) {
    return ObjectCommands::ChildNames(object);
}

IDispatch* CComUtils::CallGetChildObject(IDispatch* object, const std::string& name) {
    return ObjectCommands::GetChildObject(object, name).release();
}

std::vector<std::string> CComUtils::CallGetPropNames(IDispatch* object) {
    return ObjectCommands::GetPropNames(object);
}

VARIANT CComUtils::CallGetPropValue(IDispatch* object, const std::string& property) {
    return ObjectCommands::GetPropValue(object, property).Detach();
}

bool CComUtils::CallSetPropValue(IDispatch* object, const std::string& property, const VARIANT& value) {
    return ObjectCommands::SetPropValue(object, property, CValue::Copy(value));
}

IDispatch* CComUtils::CallGetModule(IDispatch* object, const std::string& module) {
    return DesignCommands::GetModule(object, module).release();
}

IDispatch* CComUtils::CallSetActive(IDispatch* object, const wchar_t* methodName, const std::string& name) {
    return Dispatch::QueryObject(object, methodName, {name}).release();
}

std::set<std::string> CComUtils::CallAndGetStringSet(IDispatch* object, const wchar_t* methodName) {
    return AsSet(Dispatch::QueryTexts(object, methodName));
}

bool CComUtils::CallInsertDesign(IDispatch* project, const std::string& designName) {
    return ProjectCommands::InsertDesign(project, designName);
}

bool CComUtils::CallSetDesignSetttings(IDispatch* design) {
    return DesignCommands::SetDesignSettings(design);
}

bool CComUtils::CallSaveAs(IDispatch* project, const std::string& path, const bool& overwrite) {
    return ProjectCommands::SaveAs(project, path, overwrite);
}

bool CComUtils::CallCreateRelativeCS(IDispatch* editor, const std::string& body) {
    return CoordinateSystemCommands::CreateBodyFrames(editor, body);
}

bool CComUtils::CallSetWorkingCS(IDispatch* editor, const std::string& csName) {
    return CoordinateSystemCommands::SetWorkingFrame(editor, csName);
}

bool CComUtils::RecurseSetCoordinateSystem(IDispatch* object, const std::string& body) {
    return CoordinateSystemCommands::AttachToBody(object, body);
}

bool CComUtils::CallMove(IDispatch* editor, const IKinoraVeltrixInterface::Transform& pose,
                         const std::string& objectName) {
    return CoordinateSystemCommands::Move(editor, pose, objectName);
}

bool CComUtils::CallRotate(IDispatch* editor, const IKinoraVeltrixInterface::Transform& pose,
                           const std::string& objectName) {
    return CoordinateSystemCommands::Rotate(editor, pose, objectName);
}

bool CComUtils::CallAssignMaterial(IDispatch* editor, const std::string& object, std::string material) {
    return MaterialCommands::AssignMaterial(editor, object, material);
}

bool CComUtils::CallCloneMaterial(IDispatch* definitionManager, const std::string& source, const std::string& newName) {
    return MaterialCommands::CloneMaterial(definitionManager, source, newName);
}

bool CComUtils::SetSolveInside(IDispatch* editor) {
    return MaterialCommands::SetSolveInside(editor);
}

std::vector<std::string> CComUtils::GetNonVacuumObjects(IDispatch* editor, std::vector<std::string> objects) {
    return MaterialCommands::NonVacuumObjects(editor, objects);
}

bool CComUtils::CallAssignForce(IDispatch* module, const std::string& body, const std::vector<std::string>& objects) {
    return LoadCommands::AssignForce(module, body, objects);
}

bool CComUtils::CallAssignTorque(IDispatch* module, const std::string& body, const std::vector<std::string>& objects) {
    return LoadCommands::AssignTorque(module, body, objects);
}

bool CComUtils::CallSetModelUnits(IDispatch* editor, const std::string& units) {
    return ModelerCommands::SetModelUnits(editor, units);
}

bool CComUtils::CallImport(IDispatch* editor, const std::string& sourceFile) {
    return ModelerCommands::Import(editor, sourceFile);
}

bool CComUtils::CallAssignRegion(IDispatch* editor) {
    return ModelerCommands::CreateRegion(editor);
}

std::string CComUtils::GetFirstSetup(IDispatch* design) {
    return SetupCommands::GetFirstSetup(design);
}

bool CComUtils::CallInsertSetup(IDispatch* module, const std::string& name) {
    return SetupCommands::InsertAnalysisSetup(module, name);
}

bool CComUtils::CheckAndInsertSetup(IDispatch* design) {
    return SetupCommands::EnsureSetup(design);
}

bool CComUtils::CallAnalyze(IDispatch* design, const std::string& setupName, int& status) {
    return SetupCommands::Analyze(design, setupName, status);
}

bool CComUtils::InsertExpressionCaches(IDispatch* design, const IKinoraVeltrixInterface::Transform& transform) {
    return SetupCommands::InsertExpressionCaches(design, transform.name);
}

bool CComUtils::CreateOutputVariables(IDispatch* design, const IKinoraVeltrixInterface::Transform& transform,
                                      const std::string& setupName) {
    return OutputVariableCommands::CreateOutputVariables(design, transform.name, setupName);
}

bool CComUtils::CallGetOutputVariableValue(IDispatch* module, const std::string& name, const std::string& setupName,
                                           double& value) {
    return OutputVariableCommands::GetOutputVariableValue(module, name, Names::Solution(setupName), value);
}

bool CComUtils::ExtractOutputData(IDispatch* design, const std::string& name, const std::string& setupName,
                                  IKinoraVeltrixInterface::Result& result) {
    return OutputVariableCommands::ReadLoads(design, name, setupName, result);
}

VARIANT CComUtils::GetChangePropertyArgument(std::string name, std::string value, bool isNew) {
    return DesignVariableCommands::ChangeArgument(name, value, isNew).Detach();
}

bool CComUtils::UpdateVariables(IDispatch* design, const std::map<std::string, std::string>& variables) {
    return DesignVariableCommands::ChangeVariables(design, variables);
}

VARIANT CComUtils::GetParavantArgument(std::vector<std::string> variables, std::vector<std::vector<std::string>> rows) {
    return ParametricCommands::HistoryArgument(variables, rows).Detach();
}

std::set<std::string> CComUtils::GetReportNames(IDispatch* design) {
    return AsSet(ReportCommands::GetReportNames(design).ToTexts());
}

bool CComUtils::CreateEmptyReport(IDispatch* reportModule, const std::string& reportName, const std::string& setupName,
                                  const std::vector<std::string>& variables) {
    return ReportCommands::CreateEmptyReport(reportModule, reportName, setupName, variables);
}

bool CComUtils::ClearAndImportReport(IDispatch* reportModule, const std::string& reportName,
                                     const std::string& filePath) {
    return ReportCommands::ClearAndImport(reportModule, reportName, filePath);
}

bool CComUtils::CreateDataTable(IDispatch* reportModule, const std::string& bodyName, const std::string& setupName,
                                const std::vector<std::string>& variables) {
    return ReportCommands::CreateDataTable(reportModule, bodyName, setupName, variables);
}

std::string CComUtils::CallGetRegistryString(IDispatch* desktop, const std::string& key) {
    return DesktopCommands::GetRegistryString(desktop, key);
}

bool CComUtils::CreateFieldPlot(IDispatch* fieldsModule, const std::string& plotName, const std::string& plotFolder,
                                const std::string& setupName, const std::string& quantityName,
                                const std::vector<std::string>& objectNames) {
    return FieldPlotCommands::CreateFieldPlot(fieldsModule, plotName, plotFolder, setupName, quantityName, objectNames);
}
