#include "comutils/ComUtils.h"
#include "comutils/Dispatch.h"
#include "comutils/Names.h"

bool CComUtils::CallInsertDesign(IDispatch* project, const std::string& designName) {
    return Dispatch::Call(project, L"InsertDesign", {Names::designType, designName, Names::magnetostatic, ""});
}

bool CComUtils::CallSetDesignSetttings(IDispatch* design) {
    return Dispatch::Call(
        design, L"SetDesignSettings",
        {{"NAME:Design Settings Data", "Allow Material Override:=", true}, {"NAME:Model Validation Settings"}});
}

bool CComUtils::CallSaveAs(IDispatch* project, const std::string& path, const bool& overwrite) {
    return Dispatch::Call(project, L"SaveAs", {path, overwrite});
}
