#include "host/core/CoupledRun.h"

#include "host/core/StateFile.h"
#include "host/core/StatesCsv.h"
#include "scenario/DesktopFrame.h"
#include "scenario/Text.h"

#include <algorithm>
#include <fmt/format.h>
#include <thread>

namespace kinora::host {

using namespace scenario;

namespace {

/// The design that the interface makes in a new project.
constexpr const char* designName = "Veltrix3DDesign1";

/// Radians; smaller deviations vanish in the six decimals of the angles that reach the desktop.
constexpr double tolerableDeviation = 1e-4;

std::vector<std::string> LaunchAdvice() {
    return {"Check that the desktop is installed and has a licence.",
            "Choose another version: \"desktop.version\" in the scenario, or the environment variable "
            "KINORA_VELTRIX_VTDK_VERSION.",
            "For the simulator: register it with \"vantor-sim /RegServer\" and choose the version \"Simulator\"."};
}

std::string ObjectNames(const Scenario& scenario) {
    std::string names;
    for (const Body& body : scenario.bodies) {
        for (const std::string& object : body.objects) {
            names += (names.empty() ? "" : ", ") + object;
        }
    }
    return names;
}

} // namespace

CoupledRun::CoupledRun(const Scenario& scenario, const RunOptions& options, IKinoraVeltrixInterface& coupling,
                       RunListener& listener)
    : m_scenario(scenario), m_options(options), m_coupling(coupling), m_listener(listener), m_files(FilesOf(scenario)),
      m_mechanism(scenario), m_warnedDeviation(scenario.bodies.size(), tolerableDeviation) {}

CoupledRun::~CoupledRun() = default;

std::string CoupledRun::Narrow(const std::filesystem::path& path) const {
    return m_options.toNarrow(Utf8FromPath(path));
}

RunEnd CoupledRun::Run() {
    PrepareFolder();
    for (const std::string& warning : m_scenario.warnings) {
        m_listener.OnWarning(warning);
    }
    int firstStep = 0;
    if (m_options.resume) {
        const SavedState state = ReadState(m_files.state, m_scenario);
        m_mechanism.Restore(m_scenario.stepping.TimeOf(state.step), state.joints);
        m_resumedStep = state.step;
        firstStep = state.step + 1;
    } else {
        m_mechanism.Start();
    }
    try {
        OpenModel();
        if (m_files.csv) {
            m_csv = std::make_unique<StatesCsv>(*m_files.csv, m_scenario, m_resumedStep);
        }
        const RunEnd end = Advance(firstStep);
        Finish();
        return end;
    } catch (OperationFailed& failure) {
        CollectMessages(failure);
        CloseAfterFailure();
        throw;
    } catch (...) {
        CloseAfterFailure();
        throw;
    }
}

void CoupledRun::PrepareFolder() const {
    std::error_code error;
    const bool exists = std::filesystem::exists(m_files.project, error);
    const std::string name = Utf8FromPath(m_files.project);
    if (m_options.resume) {
        if (!exists) {
            throw InputError(fmt::format("{}: there is no project to resume; start without --resume.", name));
        }
        return;
    }
    if (exists && !m_scenario.overwrite) {
        throw InputError(fmt::format("{}: the project exists already; --overwrite replaces it, --resume goes on with "
                                     "it, --out writes elsewhere.",
                                     name));
    }
    if (exists && !std::filesystem::remove(m_files.project, error)) {
        throw InputError(fmt::format("{}: cannot be replaced ({}); is it open elsewhere?", name, error.message()));
    }
    std::filesystem::create_directories(m_files.project.parent_path(), error);
    if (error) {
        throw InputError(fmt::format("{}: the folder cannot be made ({}).", Utf8FromPath(m_files.project.parent_path()),
                                     error.message()));
    }
    // A state of an earlier run must not be taken for this one's.
    std::filesystem::remove(m_files.state, error);
}

void CoupledRun::OpenModel() {
    if (m_options.resume) {
        OpenProject();
    } else {
        CreateProject();
    }
    BuildMagnetics();
    m_listener.OnPhase("Saving the model");
    if (!m_coupling.SaveProject()) {
        Fail("SaveProject", "the desktop did not save the new model", {"Check the folder and the space left."});
    }
}

/// False for a desktop that is not installed: waiting does not help there.
bool CoupledRun::MayLaunchAgain(const LaunchDesktopExeption& error, int tries) const {
    const std::string text = error.what();
    return tries < m_options.launchTries && text.find("failed to launch") != std::string::npos;
}

template <class Operation>
bool CoupledRun::Launching(Operation operation) {
    for (int tries = 1;; ++tries) {
        try {
            const bool isDone = operation();
            m_isLaunched = true;
            return isDone;
        } catch (const LaunchDesktopExeption& error) {
            if (!MayLaunchAgain(error, tries)) {
                throw OperationFailed(fmt::format("LaunchDesktop failed: {}", error.what()), LaunchAdvice());
            }
            m_listener.OnWarning(fmt::format("{} Trying again.", error.what()));
            std::this_thread::sleep_for(m_options.launchPause);
        } catch (...) {
            // Any other exception comes after the launch.
            m_isLaunched = true;
            throw;
        }
    }
}

void CoupledRun::CreateProject() {
    m_listener.OnPhase("Starting the desktop, creating the project, importing the geometry");
    const std::filesystem::path geometry = std::filesystem::absolute(m_scenario.geometryFile);
    const std::filesystem::path project = std::filesystem::absolute(m_files.project);
    // Texts are converted before anything is launched: what cannot be converted is bad input.
    const std::string narrowProject = Narrow(project);
    const std::string narrowGeometry = Narrow(geometry);
    const std::string units = m_options.toNarrow(m_scenario.units);
    const bool isCreated = Launching([&] { return m_coupling.CreateProject(narrowProject, narrowGeometry, units); });
    if (!isCreated) {
        Fail("CreateProject", fmt::format("project {}, geometry {}", Utf8FromPath(project), Utf8FromPath(geometry)),
             {"Check that the desktop can write the project's folder and that no such project is open in it.",
              "Check that the desktop can import the geometry file.",
              fmt::format("Check that \"{}\" is a length unit of the desktop.", m_scenario.units)});
    }
}

void CoupledRun::OpenProject() {
    m_listener.OnPhase("Starting the desktop, opening the project");
    const std::filesystem::path project = std::filesystem::absolute(m_files.project);
    const std::string narrowProject = Narrow(project);
    const bool isOpen = Launching([&] { return m_coupling.OpenProject(narrowProject, designName); });
    if (!isOpen) {
        Fail("OpenProject", fmt::format("project {}, design {}", Utf8FromPath(project), designName),
             {"Check that the project was made by this program and is not open elsewhere."});
    }
}

void CoupledRun::BuildMagnetics() {
    m_listener.OnPhase("Building the field model");
    std::vector<IKinoraVeltrixInterface::Group> groups;
    for (const Body& body : m_scenario.bodies) {
        IKinoraVeltrixInterface::Group group;
        // Always the drawn pose: the desktop moves the imported objects from it into the body's own frame.
        group.transform = ToTransform(body.name, body.X_WB0);
        for (const std::string& object : body.objects) {
            group.objects.push_back(m_options.toNarrow(object));
        }
        groups.push_back(std::move(group));
    }
    std::map<std::string, IKinoraVeltrixInterface::Material> materials;
    for (const auto& [object, material] : m_scenario.materials) {
        IKinoraVeltrixInterface::Material narrow = material;
        narrow.name = m_options.toNarrow(material.name);
        materials.emplace(m_options.toNarrow(object), narrow);
    }
    if (!m_coupling.InitMagneticObjects(groups, materials)) {
        Fail("InitMagneticObjects", fmt::format("{} bodies", groups.size()),
             {fmt::format("Check that the geometry file has these objects: {}.", ObjectNames(m_scenario)),
              "Check that the desktop knows the materials named in the scenario.",
              "Check that no body is named like a variable or function of the desktop."});
    }
}

RunEnd CoupledRun::Advance(int firstStep) {
    const int lastStep = m_scenario.stepping.steps;
    for (int step = firstStep; step <= lastStep; ++step) {
        if (step > 0) {
            m_mechanism.Move(m_scenario.stepping.TimeOf(step));
        }
        Solve(step);
        const bool isLimit = m_options.stepLimit >= 0 && step - firstStep + 1 >= m_options.stepLimit;
        if (step < lastStep && (isLimit || m_options.isInterrupted())) {
            return RunEnd::Interrupted;
        }
    }
    return RunEnd::Complete;
}

void CoupledRun::Solve(int step) {
    StepRecord record;
    record.step = step;
    record.time = m_scenario.stepping.TimeOf(step);
    record.poses = m_mechanism.Poses();
    std::vector<IKinoraVeltrixInterface::Transform> transforms;
    for (std::size_t body = 0; body < record.poses.size(); ++body) {
        WarnOfOrientation(record.poses[body], body, record.time);
        transforms.push_back(ToTransform(m_scenario.bodies[body].name, record.poses[body]));
    }
    int status = 0;
    if (!m_coupling.Analyze(record.time, transforms, record.results, status)) {
        const char* meaning = status != 0 ? m_options.scriptErrorText(status) : nullptr;
        Fail("Analyze",
             fmt::format("step {} at {} s{}", step, record.time,
                         meaning       ? fmt::format(", {}", meaning)
                         : status != 0 ? fmt::format(", solver status {:#x}", static_cast<unsigned>(status))
                                       : std::string()),
             {"Look at the poses of this step: do bodies touch or overlap?",
              "Open the project in the desktop and solve it there."});
    }
    if (record.results.size() < transforms.size()) {
        Fail("Analyze",
             fmt::format("step {} at {} s was solved, but only {} of {} bodies got a result", step, record.time,
                         record.results.size(), transforms.size()),
             {fmt::format("The step's files could not be written: check {} (is a file open elsewhere, is the folder "
                          "read-only, is the disk full?).",
                          Utf8FromPath(m_files.reportsFolder))});
    }
    std::vector<Load> loads;
    for (std::size_t body = 0; body < transforms.size(); ++body) {
        loads.push_back(ToLoad(record.results[body], record.poses[body].R_WB));
    }
    m_mechanism.ApplyLoads(loads);
    record.joints = m_mechanism.Joints();
    if (m_csv) {
        m_csv->Append(record);
    }
    WriteState(m_files.state, m_scenario, record);
    m_listener.OnStep(record);
}

void CoupledRun::WarnOfOrientation(const Pose& X_WB, std::size_t body, double time) {
    const double deviation = FrameDeviation(X_WB.R_WB);
    if (deviation <= m_warnedDeviation[body]) {
        return;
    }
    // Once more only when it has become much worse.
    m_warnedDeviation[body] = 2.0 * deviation;
    m_listener.OnWarning(
        fmt::format("Body \"{}\" at {} s: the desktop's frame is {:.3g} degrees away from the body's. Only "
                    "orientations that differ from the global axes by a turn about X reach the desktop "
                    "as they are; lay the model's turning axis along X.",
                    m_scenario.bodies[body].name, time, deviation * degreesPerRadian));
}

void CoupledRun::Finish() {
    m_csv.reset();
    m_listener.OnPhase("Saving and closing the project");
    if (!m_coupling.SaveProject()) {
        Fail("SaveProject", Utf8FromPath(m_files.project), {"Check the folder and the space left."});
    }
    if (!m_coupling.CloseProject()) {
        Fail("CloseProject", Utf8FromPath(m_files.project), {"Close the project in the desktop."});
    }
    LetGoOfDesktop();
}

void CoupledRun::LetGoOfDesktop() {
    // A desktop whose project refuses to close is not quit over its head; letting go always works.
    if (m_scenario.desktop.atEnd == AtEnd::Release || !m_coupling.QuitApplication()) {
        m_coupling.ReleaseApplication();
    }
    m_isLaunched = false;
}

void CoupledRun::CloseAfterFailure() noexcept {
    if (!m_isLaunched) {
        return;
    }
    try {
        // Whatever can still be saved is; the failure itself is what will be reported.
        (void)m_coupling.SaveProject();
        (void)m_coupling.CloseProject();
        LetGoOfDesktop();
    } catch (const std::exception& error) {
        m_listener.OnWarning(fmt::format("While closing after the failure: {}", error.what()));
    }
}

void CoupledRun::Fail(const std::string& operation, const std::string& detail, std::vector<std::string> advice) {
    throw OperationFailed(fmt::format("{} failed: {}.", operation, detail), std::move(advice));
}

void CoupledRun::CollectMessages(OperationFailed& failure) const {
    if (!m_isLaunched) {
        return;
    }
    std::vector<std::string> known;
    for (const Severity severity : {Severity::Fatal, Severity::Error, Severity::Warning, Severity::Info}) {
        std::vector<std::string> texts;
        if (!m_coupling.GetMessages(texts, severity)) {
            return;
        }
        // A desktop may answer with the more severe ones as well.
        std::vector<std::string> before = known;
        known = texts;
        for (const std::string& text : texts) {
            const auto repeated = std::find(before.begin(), before.end(), text);
            if (repeated != before.end()) {
                before.erase(repeated);
            } else {
                failure.messages.emplace_back(severity, m_options.fromNarrow(text));
            }
        }
    }
}

} // namespace kinora::host
