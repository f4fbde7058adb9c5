#include "comutils/ProjectCommands.h"

#include "comutils/Names.h"

namespace ProjectCommands {

bool SaveAs(IDispatch* project, std::string_view path, bool overwrite) {
    return Dispatch::Call(project, L"SaveAs", {path, overwrite});
}

bool Save(IDispatch* project) {
    return Dispatch::Call(project, L"Save", {});
}

bool Close(IDispatch* project) {
    return Dispatch::Call(project, L"Close", {});
}

bool GetPath(IDispatch* project, std::string& folder) {
    return Dispatch::QueryText(project, L"GetPath", folder);
}

bool InsertDesign(IDispatch* project, std::string_view designName) {
    return Dispatch::Call(project, L"InsertDesign", {Names::designType, designName, Names::magnetostatic, ""});
}

CObject SetActiveDesign(IDispatch* project, std::string_view designName) {
    return Dispatch::QueryObject(project, L"SetActiveDesign", {designName});
}

CObject GetDesign(IDispatch* project, std::string_view designName) {
    return Dispatch::QueryObject(project, L"GetDesign", {designName});
}

CObject GetDefinitionManager(IDispatch* project) {
    return Dispatch::QueryObject(project, L"GetDefinitionManager", {});
}

} // namespace ProjectCommands
