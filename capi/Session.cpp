#include "capi/Session.h"

#include "capi/DesktopAnswer.h"
#include "capi/TextConversion.h"
#include "comutils/Dispatch.h"
#include "comutils/Text.h"
#include "coupling/Inside.h"
#include "coupling/LaunchErrors.h"
#include "programs/Environment.h"
#include "programs/Utf.h"

#include <objbase.h>

#include <filesystem>
#include <system_error>

namespace kinora::capi {
namespace {

const char checkMessages[] = "Look into the desktop's messages (kv_get_messages), and at the arguments.";

std::string ProgIdOf(const std::string* version) {
    const std::string wanted =
        version ? *version
                : ToAnsi(programs::EnvironmentValue("KINORA_VELTRIX_VTDK_VERSION").c_str(), "the desktop's version");
    return wanted.empty() ? desktopProgId : std::string(desktopProgId) + "." + wanted;
}

bool Exists(const std::string& path) {
    std::error_code error;
    return std::filesystem::exists(Text::ToFileSystemPath(path), error);
}

Error NoSuchFile(const char* what, const std::string& path) {
    return {KV_NO_SUCH_FILE, std::string("there is no ") + what + " \"" + ToUtf8(path) + "\".",
            "Check the path: upper and lower case, the file's extension."};
}

/// Runs what opens a project.
template <class Operation>
bool Opens(const std::string& project, const Operation& operation) {
    try {
        return operation();
    } catch (const std::filesystem::filesystem_error& error) {
        if (!Exists(project)) {
            throw NoSuchFile("project file", project);
        }
        // The paths of the projects that the desktop has open are followed as well.
        const std::string path = programs::Utf8FromWide(Text::OfPath(error.path1()));
        throw Error(KV_FAILED, "the path \"" + path + "\" cannot be followed: " + error.code().message() + ".",
                    "Check the permissions of its folders; where it is that of another project, which was moved while "
                    "the desktop has it open, close that one.");
    }
}

std::vector<std::string> ToUtf8(const std::vector<std::string>& texts) {
    std::vector<std::string> result;
    result.reserve(texts.size());
    for (const std::string& text : texts) {
        result.push_back(capi::ToUtf8(text));
    }
    return result;
}

} // namespace

Session::~Session() {
    Release();
}

void Session::Launch(const std::string* version) {
    if (CCouplingInside::HasApplication(m_coupling)) {
        return;
    }
    const std::string progId = ProgIdOf(version);
    Dispatch::ForgetRefusal();
    try {
        if (CCouplingInside::Launch(m_coupling, progId)) {
            return;
        }
    } catch (const LaunchDesktopExeption& exception) {
        if (exception.what() == std::string(desktopNotInstalled)) {
            throw Error(KV_NOT_INSTALLED, "no desktop is installed as \"" + ToUtf8(progId) + "\".",
                        "Install it, or name another version: the argument of kv_launch, or the environment variable "
                        "KINORA_VELTRIX_VTDK_VERSION. The simulator is the version \"Simulator\".");
        }
        CoUninitialize(); // the launch has initialised COM once more by then
        throw Error(KV_NOT_STARTED, "the desktop \"" + ToUtf8(progId) + "\" is installed and does not start.",
                    "Check its licence and configuration: start it by hand once.");
    }
    const Error error = Refusal("Start it by hand once, and look at what it says.");
    Release();
    throw Error(error);
}

void Session::LaunchWhenNeeded() {
    Launch(nullptr);
    Dispatch::ForgetRefusal();
}

/// What is known of bodies and materials is known of one project.
void Session::BeginProject() {
    CCouplingInside::LeaveProject(m_coupling);
    m_frames = BodyFrames();
}

void Session::CreateProject(const std::string& project, const std::string& geometry, const std::string& units) {
    LaunchWhenNeeded();
    BeginProject();
    if (m_coupling.CreateProject(project, geometry, units)) {
        return;
    }
    if (!CCouplingInside::HasDesign(m_coupling)) {
        throw Refusal("A project is never written over: choose a path where no file is, in a folder that is there; and "
                      "close the desktop's dialogs.");
    }
    RefuseGeometry(geometry);
}

void Session::RefuseGeometry(const std::string& geometry) {
    if (!Exists(geometry)) {
        throw NoSuchFile("geometry file", geometry);
    }
    throw Refusal("Check the unit and the geometry file: import it by hand once.");
}

void Session::OpenProject(const std::string& project, const std::string& design) {
    LaunchWhenNeeded();
    BeginProject();
    if (!Opens(project, [&] { return m_coupling.OpenProject(project, design); })) {
        throw Refusal("Open it by hand once; kv_get_designs gives the names of its designs.");
    }
}

std::vector<std::string> Session::GetDesigns(const std::string& project) {
    LaunchWhenNeeded();
    BeginProject();
    std::vector<std::string> designs;
    if (!Opens(project, [&] { return m_coupling.GetVeltrixDesigns(project, designs); })) {
        throw Refusal("Open it by hand once.");
    }
    return ToUtf8(designs);
}

void Session::InitGeometry(const std::string& geometry, const std::string& units) {
    Dispatch::ForgetRefusal();
    if (!m_coupling.InitGeometry(geometry, units)) {
        if (!CCouplingInside::HasDesign(m_coupling)) {
            throw Refusal(checkMessages);
        }
        RefuseGeometry(geometry);
    }
}

void Session::InitMagneticObjects(std::vector<Group> groups, std::map<std::string, Material> materials) {
    m_frames.Declare(groups, materials);
    Dispatch::ForgetRefusal();
    if (!m_coupling.InitMagneticObjects(groups, materials)) {
        throw Refusal(
            "Check the names of objects and materials, upper and lower case included; a design's model is built "
            "once.");
    }
}

Session::Step Session::Analyze(double time, std::vector<Transform> poses) {
    m_frames.ToDesktop(poses);
    Dispatch::ForgetRefusal();
    std::vector<IKinoraVeltrixInterface::Result> results;
    Step step;
    const bool isDone = m_coupling.Analyze(time, poses, results, step.status);
    for (std::size_t i = 0; i < results.size(); ++i) {
        step.loads.push_back({});
        m_frames.ToBody(poses[i].name, results[i], step.loads.back());
    }
    if (!isDone && step.status != 0) {
        step.failure = Refusal("Do bodies touch or overlap? Is the mesh closed?");
        step.failure->code = KV_SOLVER;
        step.failure->cause = "the solver failed with the status " + std::to_string(step.status) + ".";
    } else if (!isDone) {
        step.failure = Refusal("Has kv_init_magnetic_objects been called for these bodies and this design?");
    } else if (step.loads.size() < poses.size()) {
        step.failure = Refusal("Check that the folder of the project can be written; the loads that are there count.");
        step.failure->code = KV_INCOMPLETE;
        step.failure->cause = "the step is solved, but there are only " + std::to_string(step.loads.size()) +
                              " loads of " + std::to_string(poses.size()) + ": recording them ended early.";
    }
    return step;
}

std::vector<std::string> Session::GetMessages(int severity) {
    Dispatch::ForgetRefusal();
    std::vector<std::string> messages;
    if (!m_coupling.GetMessages(messages, static_cast<IKinoraVeltrixInterface::MessageSeverity>(severity))) {
        throw Refusal("Open a project with a design first.");
    }
    return ToUtf8(messages);
}

void Session::SaveProject() {
    Dispatch::ForgetRefusal();
    if (!m_coupling.SaveProject()) {
        throw Refusal("Check that the project's file and folder can be written.");
    }
}

void Session::CloseProject() {
    Dispatch::ForgetRefusal();
    if (!m_coupling.CloseProject()) {
        throw Refusal("Close it in the desktop; kv_release lets go of it in any case.");
    }
}

void Session::Quit() {
    Dispatch::ForgetRefusal();
    // Without an application it would uninitialise COM on this thread all the same.
    if (CCouplingInside::HasApplication(m_coupling) && !m_coupling.QuitApplication()) {
        throw Refusal(
            "Nothing was quit. Check that the project's file can be written; kv_release lets go in any case.");
    }
}

void Session::Release() {
    if (CCouplingInside::HasApplication(m_coupling)) {
        m_coupling.ReleaseApplication();
    }
}

/// Why an operation answered false, as far as can be told, with the desktop's messages.
Error Session::Refusal(std::string cure) {
    const Dispatch::Refusal& refusal = Dispatch::LastRefusal();
    if (IsBusy(refusal.code)) {
        return DesktopIsBusy();
    }
    if (IsGone(refusal.code)) {
        return DesktopIsGone();
    }
    if (refusal.method[0] == L'\0' && !CCouplingInside::HasDesign(m_coupling)) {
        return {KV_FAILED, WhatIsMissing(), "kv_create_project or kv_open_project, with a design, come first."};
    }
    Error error(KV_FAILED, CauseOf(refusal), std::move(cure));
    std::vector<std::string> messages;
    if (m_coupling.GetMessages(messages, IKinoraVeltrixInterface::MessageSeverity::Error)) {
        error.messages = ToUtf8(messages);
    }
    return error;
}

/// The cause of an operation that answered false and had nothing to ask the desktop for.
const char* Session::WhatIsMissing() const {
    if (!CCouplingInside::HasApplication(m_coupling)) {
        return "no desktop has been launched.";
    }
    return CCouplingInside::HasProject(m_coupling) ? "the project has no active design." : "no project is open.";
}

} // namespace kinora::capi
