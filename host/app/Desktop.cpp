#include "host/app/Desktop.h"

#include "programs/Utf.h"

#include <windows.h>

#include <objbase.h>
#include <oleauto.h>

#include <cstdlib>

namespace kinora::host {
namespace {

/// What an automation call answers.
class Answer {
public:
    Answer() { VariantInit(&value); }
    ~Answer() { VariantClear(&value); }
    Answer(const Answer&) = delete;
    Answer& operator=(const Answer&) = delete;

    /// Null for anything but an object.
    IDispatch* Object() const { return value.vt == VT_DISPATCH ? value.pdispVal : nullptr; }

    VARIANT value = {};
};

/// Asks an object for something that needs no arguments; nothing when it is no object or refuses.
void Ask(IDispatch* object, const wchar_t* name, Answer& answer) {
    std::wstring text = name;
    wchar_t* names[] = {text.data()};
    DISPID id = DISPID_UNKNOWN;
    if (!object || FAILED(object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id))) {
        return;
    }
    DISPPARAMS none = {};
    if (FAILED(object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &none, &answer.value, nullptr,
                              nullptr))) {
        VariantClear(&answer.value);
    }
}

/// A trace would write the question down as a client of its own; what stands behind it is asked.
std::string BehindTrace(const std::string& version) {
    if (version != "Trace") {
        return version;
    }
    const char* target = std::getenv("VANTOR_TRACE_TARGET");
    return target ? target : "";
}

} // namespace

bool HasOpenProjects(const std::string& version) {
    const std::string asked = BehindTrace(version);
    const std::string progId = "Pellux.VantorDesktop" + (asked.empty() ? std::string() : "." + asked);
    CLSID classId = {};
    Answer application;
    if (FAILED(CLSIDFromProgID(programs::WideFromUtf8(progId).c_str(), &classId)) ||
        FAILED(CoCreateInstance(classId, nullptr, CLSCTX_SERVER, IID_IDispatch,
                                reinterpret_cast<void**>(&application.value.pdispVal)))) {
        return false;
    }
    application.value.vt = VT_DISPATCH;
    Answer desktop;
    Answer projects;
    Answer count;
    Ask(application.Object(), L"GetAppDesktop", desktop);
    Ask(desktop.Object(), L"GetProjects", projects);
    Ask(projects.Object(), L"Count", count);
    return SUCCEEDED(VariantChangeType(&count.value, &count.value, 0, VT_I4)) && count.value.lVal > 0;
}

std::string LaunchHint() {
    const HMODULE system = GetModuleHandleW(L"ntdll.dll");
    if (!system || !GetProcAddress(system, "wine_get_version")) {
        return {};
    }
    return "Under Wine a desktop that died can keep the next one from starting: \"wineserver -k\" ends everything of "
           "this Wine prefix; then start again.";
}

} // namespace kinora::host
