#include "comutils/DesktopCommands.h"

namespace DesktopCommands {

bool GetAppDesktop(IDispatch* application, CObject& desktop) {
    CValue result;
    if (!Dispatch::Call(application, L"GetAppDesktop", {}, result)) {
        return false;
    }
    desktop.reset(result.Detach().pdispVal);
    return true;
}

CObject NewProject(IDispatch* desktop) {
    return Dispatch::QueryObject(desktop, L"NewProject", {});
}

CObject OpenProject(IDispatch* desktop, std::string_view path) {
    return Dispatch::QueryObject(desktop, L"OpenProject", {path});
}

CObject GetProjects(IDispatch* desktop) {
    return Dispatch::QueryObject(desktop, L"GetProjects", {});
}

bool GetCount(IDispatch* projects, LONG& count) {
    CValue result;
    if (!Dispatch::Call(projects, L"Count", {}, result)) {
        return false;
    }
    const VARIANT& value = result.Get();
    // Of a text, an object or an array it would be half a pointer.
    const bool isPointer = value.vt == VT_BSTR || value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN ||
                           (value.vt & (VT_ARRAY | VT_BYREF)) != 0;
    count = isPointer ? 0 : value.lVal;
    return !isPointer;
}

CObject GetItem(IDispatch* projects, LONG index) {
    return Dispatch::QueryObject(projects, L"Item", {CValue::Int(index)});
}

bool GetMessages(IDispatch* desktop, std::string_view project, std::string_view design, int severity,
                 std::vector<std::string>& messages) {
    CValue result;
    if (!Dispatch::Call(desktop, L"GetMessages", {project, design, CValue::Int(severity)}, result)) {
        return false;
    }
    messages = result.ToTexts();
    return true;
}

bool AddMessage(IDispatch* desktop, std::string_view project, std::string_view design, int severity,
                std::string_view text) {
    return Dispatch::Call(desktop, L"AddMessage", {project, design, CValue::Int(severity), text, ""});
}

bool ClearMessages(IDispatch* desktop, std::string_view project, std::string_view design, int severity) {
    return Dispatch::Call(desktop, L"ClearMessages", {project, design, CValue::Int(severity)});
}

std::string GetRegistryString(IDispatch* desktop, std::string_view key) {
    CValue setting;
    Dispatch::Call(desktop, L"GetRegistryString", {key}, setting);
    return setting.ToText();
}

bool QuitApplication(IDispatch* desktop) {
    return Dispatch::Call(desktop, L"QuitApplication", {});
}

} // namespace DesktopCommands
