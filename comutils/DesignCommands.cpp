#include "comutils/DesignCommands.h"

namespace DesignCommands {

bool SetDesignSettings(IDispatch* design) {
    return Dispatch::Call(
        design, L"SetDesignSettings",
        {{"NAME:Design Settings Data", "Allow Material Override:=", true}, {"NAME:Model Validation Settings"}});
}

bool GetDesignType(IDispatch* design, CValue& type) {
    return Dispatch::Call(design, L"GetDesignType", {}, type);
}

CObject SetActiveEditor(IDispatch* design, std::string_view editor) {
    return Dispatch::QueryObject(design, L"SetActiveEditor", {editor});
}

CObject GetModule(IDispatch* design, std::string_view module) {
    return Dispatch::QueryObject(design, L"GetModule", {module});
}

} // namespace DesignCommands
