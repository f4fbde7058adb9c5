#include "host/app/Desktop.h"

#include "host/core/RunFiles.h"
#include "programs/Environment.h"
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
    /// 0 for anything but a number.
    long Number() {
        return SUCCEEDED(VariantChangeType(&value, &value, 0, VT_I4)) && value.vt == VT_I4 ? value.lVal : 0;
    }
    /// Empty for anything but a text.
    std::wstring Text() const {
        return value.vt == VT_BSTR ? std::wstring(value.bstrVal, SysStringLen(value.bstrVal)) : std::wstring();
    }

    VARIANT value = {};
};

/// Calls a method of an object; no answer when it is no object or refuses.
/// @param argument  its only one; null for none
void Ask(IDispatch* object, const wchar_t* name, Answer& answer, VARIANT* argument = nullptr) {
    std::wstring text = name;
    wchar_t* names[] = {text.data()};
    DISPID id = DISPID_UNKNOWN;
    if (!object || FAILED(object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id))) {
        return;
    }
    DISPPARAMS arguments = {argument, nullptr, argument ? 1U : 0U, 0};
    if (FAILED(object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &arguments, &answer.value, nullptr,
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

/// The class of a version's desktop; that of nothing when there is none.
CLSID ClassOf(const std::string& version) {
    const std::string asked = BehindTrace(version);
    const std::string progId = "Pellux.VantorDesktop" + (asked.empty() ? std::string() : "." + asked);
    CLSID classId = {};
    return SUCCEEDED(CLSIDFromProgID(programs::WideFromUtf8(progId).c_str(), &classId)) ? classId : CLSID{};
}

/// Whether the desktop is one that this process has for itself.
bool LivesInThisProcess(const CLSID& classId) {
    IUnknown* classObject = nullptr;
    if (FAILED(CoGetClassObject(classId, CLSCTX_INPROC_SERVER, nullptr, IID_IUnknown,
                                reinterpret_cast<void**>(&classObject)))) {
        return false;
    }
    classObject->Release();
    return true;
}

/// The projects that are open; no object when the desktop cannot be asked.
void AskForProjects(const CLSID& classId, Answer& projects) {
    Answer application;
    if (FAILED(CoCreateInstance(classId, nullptr, CLSCTX_SERVER, IID_IDispatch,
                                reinterpret_cast<void**>(&application.value.pdispVal)))) {
        return;
    }
    application.value.vt = VT_DISPATCH;
    Answer desktop;
    Ask(application.Object(), L"GetAppDesktop", desktop);
    Ask(desktop.Object(), L"GetProjects", projects);
}

long CountOf(const Answer& projects) {
    Answer count;
    Ask(projects.Object(), L"Count", count);
    return count.Number();
}

} // namespace

bool HasOpenProjects(const std::string& version) {
    const CLSID classId = ClassOf(version);
    if (LivesInThisProcess(classId)) {
        return false;
    }
    Answer projects;
    AskForProjects(classId, projects);
    return CountOf(projects) > 0;
}

void CloseProjectOf(const std::filesystem::path& file, const std::string& version) {
    const CLSID classId = ClassOf(version);
    if (LivesInThisProcess(classId)) {
        return;
    }
    // The simulator takes up to a second to notice that a client has died, and until then keeps its projects for it.
    constexpr DWORD noticeMs = 1000;
    Sleep(noticeMs);
    Answer projects;
    AskForProjects(classId, projects);
    const long count = CountOf(projects);
    for (long i = 0; i < count; ++i) {
        VARIANT index = {};
        index.vt = VT_INT;
        index.intVal = static_cast<int>(i);
        Answer project;
        Answer folder;
        Answer name;
        Ask(projects.Object(), L"Item", project, &index);
        Ask(project.Object(), L"GetPath", folder);
        Ask(project.Object(), L"GetName", name);
        std::filesystem::path itsFile = std::filesystem::path(folder.Text()) / name.Text();
        itsFile += file.extension();
        if (!name.Text().empty() && IsSameFile(itsFile, file)) {
            Answer closed;
            Ask(project.Object(), L"Close", closed);
            return;
        }
    }
}

#ifdef _WIN32

std::vector<std::string> LaunchAdvice() {
    return {"Check that the desktop is installed and has a licence.",
            "Choose another version: \"desktop.version\" in the scenario, or the environment variable "
            "KINORA_VELTRIX_VTDK_VERSION.",
            "For the simulator: register it with \"vantor-sim /RegServer\" and choose the version \"Simulator\"."};
}

std::string LaunchHint() {
    if (!programs::IsWine()) {
        return {};
    }
    return "Under Wine a desktop that died can keep the next one from starting: \"wineserver -k\" ends everything of "
           "this Wine prefix; then start again.";
}

#else

std::vector<std::string> LaunchAdvice() {
    return {"The only desktop on this system is the simulator, a part of the library: choose the version \"Simulator\" "
            "(\"desktop.version\" in the scenario, --desktop, or the environment variable "
            "KINORA_VELTRIX_VTDK_VERSION)."};
}

std::string LaunchHint() {
    return {};
}

#endif

} // namespace kinora::host
