#include "host/core/CoupledRun.h"

#include "host/core/StatesCsv.h"
#include "programs/Paths.h"
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
      m_mechanism(scenario), m_earlier(m_files) {}

CoupledRun::~CoupledRun() = default;

std::string CoupledRun::Narrow(const std::filesystem::path& path) const {
    return m_options.toNarrow(Utf8FromPath(path));
}

RunEnd CoupledRun::Run() {
    const int firstStep = PrepareOrLeaveAlone();
    for (const std::string& warning : m_scenario.warnings) {
        m_listener.OnWarning(warning);
    }
    if (firstStep > m_scenario.stepping.steps) {
        m_listener.OnPhase(fmt::format("The run is complete up to step {} already: nothing to do", m_lastStep));
        return RunEnd::Complete;
    }
    try {
        OpenModel();
        m_earlier.Discard();
        OpenStates();
        const RunEnd end = Advance(firstStep);
        Finish();
        WarnOfOpenBooks();
        return end;
    } catch (OperationFailed& failure) {
        CollectMessages(failure);
        CloseAfterFailure();
        if (m_hasDesktopEnded) {
            throw DesktopHasEnded(failure);
        }
        throw;
    } catch (...) {
        CloseAfterFailure();
        throw;
    }
}

int CoupledRun::PrepareOrLeaveAlone() {
    try {
        return Prepare();
    } catch (...) {
        LeaveFolder();
        throw;
    }
}

/// Folders that were made for nothing go.
void CoupledRun::LeaveFolder() {
    m_lock.reset();
    for (auto folder = m_madeFolders.rbegin(); folder != m_madeFolders.rend(); ++folder) {
        std::error_code ignored;
        std::filesystem::remove(*folder, ignored);
    }
}

int CoupledRun::Prepare() {
    std::error_code ignored;
    if (m_options.resume && !std::filesystem::exists(m_files.state, ignored) && !m_earlier.IsAside()) {
        throw InputError(fmt::format("{}: there is no run to resume here; start one without --resume.",
                                     Utf8FromPath(m_files.state)));
    }
    m_identity = IdentityOf(m_scenario);
    LockFolder();
    RecoverEarlierRun();
    if (m_options.resume && !IsBeforeFirstStep(m_files.state)) {
        m_resumed = RequireResumable();
        RequireWritableFiles(m_files, m_options.furtherOutputs);
        m_mechanism.Restore(m_scenario.stepping.TimeOf(m_resumed->step), m_resumed->mechanism);
        m_lastStep = m_resumed->step;
        if (m_lastStep < m_scenario.stepping.steps) {
            RemoveResult();
        }
        return m_resumed->step + 1;
    }
    m_mechanism.Start();
    MakeRoom();
    return 0;
}

void CoupledRun::LockFolder() {
    std::vector<std::filesystem::path> folders = {m_files.project.parent_path()};
    if (m_scenario.csvFile && m_scenario.csvFile->is_relative()) {
        folders.push_back(m_files.csv->parent_path());
    }
    for (const std::filesystem::path& folder : folders) {
        std::error_code error;
        if (std::filesystem::create_directories(folder, error)) {
            m_madeFolders.push_back(folder);
        }
        if (error) {
            throw InputError(fmt::format("{}: the folder cannot be made ({}).", Utf8FromPath(folder), error.message()));
        }
    }
    m_lock = std::make_unique<programs::FolderLock>(m_files.lock);
}

SavedState CoupledRun::RequireResumable() const {
    SavedState state = ReadState(m_files.state, m_scenario);
    const std::string name = Utf8FromPath(m_files.state);
    std::error_code ignored;
    if (!std::filesystem::exists(m_files.project, ignored)) {
        throw InputError(
            fmt::format("{}: there is no project to resume; start without --resume.", Utf8FromPath(m_files.project)));
    }
    if (m_options.force) {
        return state;
    }
    std::vector<std::string> lines;
    for (const std::string& difference : Differences(state.identity, m_identity)) {
        lines.push_back(fmt::format("{}: the scenario has changed since: {}.", name, difference));
    }
    for (const std::string& part : MissingParts(m_files, state.sizes)) {
        lines.push_back(part + ".");
    }
    if (!lines.empty()) {
        lines.push_back("Start again without --resume, or go on all the same with --resume --force.");
        throw InputError(fmt::format("{}", fmt::join(lines, "\n")));
    }
    return state;
}

/// A run may have been killed while it replaced an earlier one.
void CoupledRun::RecoverEarlierRun() {
    std::error_code ignored;
    m_followsBrokenSetUp = m_earlier.IsAside() || IsBeforeFirstStep(m_files.state);
    if (!m_earlier.IsAside()) {
        return;
    }
    if (IsBeforeFirstStep(m_files.state) || !std::filesystem::exists(m_files.project, ignored)) {
        m_earlier.PutBack();
    } else {
        m_earlier.Discard();
    }
}

/// Sees to it that nothing stands in the new project's place; what an earlier run has solved goes only when told so.
void CoupledRun::MakeRoom() const {
    std::error_code error;
    const std::string name = Utf8FromPath(m_files.project);
    const bool exists = std::filesystem::exists(m_files.project, error);
    const bool isMissed = exists && !IsBeforeFirstStep(m_files.state);
    if (isMissed && !m_scenario.overwrite) {
        throw InputError(fmt::format("{}: the project exists already; --overwrite replaces it, --resume goes on with "
                                     "it, --out writes elsewhere.",
                                     name));
    }
    std::vector<NamedFile> outputs = m_options.furtherOutputs;
    if (exists) {
        outputs.push_back({"the project", m_files.project});
    }
    RequireWritableFiles(m_files, outputs);
    if (isMissed) {
        m_earlier.SetAside();
    } else if (exists && !std::filesystem::remove(m_files.project, error)) {
        throw InputError(fmt::format("{}: cannot be replaced ({}); is it open elsewhere?", name, error.message()));
    }
    RemoveResult();
    Save(-1);
}

/// What is there of an earlier run would tell that this one is complete.
void CoupledRun::RemoveResult() const {
    std::error_code error;
    if (m_files.result && !std::filesystem::remove(*m_files.result, error) && error) {
        throw InputError(fmt::format("{}: cannot be replaced ({}); is it open elsewhere?",
                                     Utf8FromPath(*m_files.result), error.message()));
    }
}

void CoupledRun::Save(int step) const {
    SavedState state;
    state.step = step;
    state.identity = m_identity;
    if (step >= 0) {
        state.mechanism = m_mechanism.Records();
        state.sizes = SizesOf(m_files);
    }
    WriteState(m_files.state, m_scenario, state);
}

void CoupledRun::OpenModel() {
    if (m_resumed) {
        OpenProject();
    } else {
        CreateProject();
    }
    m_isModelOpen = true;
    BuildMagnetics();
    m_listener.OnPhase("Saving the model");
    if (!m_coupling.SaveProject()) {
        Fail("SaveProject", "the desktop did not save the new model", {"Check the folder and the space left."});
    }
}

std::vector<std::string> CoupledRun::LaunchAdvice(bool isInstalled) const {
    std::vector<std::string> advice = m_options.launchAdvice;
    if (isInstalled && !m_options.launchHint.empty()) {
        advice.push_back(m_options.launchHint);
    }
    return advice;
}

template <class Operation>
bool CoupledRun::Launching(Operation operation) {
    for (int tries = 1;; ++tries) {
        try {
            const bool isDone = operation();
            m_isLaunched = true;
            return isDone;
        } catch (const LaunchDesktopExeption& error) {
            // Waiting does not help where none is installed.
            const bool isInstalled = std::string(error.what()).find("failed to launch") != std::string::npos;
            if (!isInstalled || tries >= m_options.launchTries) {
                throw OperationFailed(fmt::format("LaunchDesktop failed: {}", error.what()), LaunchAdvice(isInstalled));
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
    const std::filesystem::path geometry = programs::AbsolutePath(m_scenario.geometryFile);
    const std::filesystem::path project = programs::AbsolutePath(m_files.project);
    // Texts are converted before anything is launched: what cannot be converted is bad input.
    const std::string narrowProject = Narrow(project);
    const std::string narrowGeometry = Narrow(geometry);
    const std::string units = m_options.toNarrow(m_scenario.units);
    if (m_followsBrokenSetUp) {
        m_options.closeLeftProject(project);
    }
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
    const std::filesystem::path project = programs::AbsolutePath(m_files.project);
    const std::string narrowProject = Narrow(project);
    const bool isOpen = Launching([&] { return m_coupling.OpenProject(narrowProject, designName); });
    if (!isOpen) {
        Fail("OpenProject", fmt::format("project {}, design {}", Utf8FromPath(project), designName),
             {"Check that the project was made by this program and is not open elsewhere."});
    }
}

void CoupledRun::BuildMagnetics() {
    m_listener.OnPhase("Building the field model");
    std::map<std::string, IKinoraVeltrixInterface::Material> wanted = m_scenario.materials;
    std::vector<IKinoraVeltrixInterface::Group> groups;
    for (const Body& body : m_scenario.bodies) {
        IKinoraVeltrixInterface::Group group;
        // Always the drawn pose: the desktop moves the imported objects from it into the body's frame.
        group.transform = DrawnTransform(body.name, body.X_WB0);
        for (const std::string& object : body.objects) {
            group.objects.push_back(m_options.toNarrow(object));
            if (const auto material = wanted.find(object); material != wanted.end()) {
                material->second = ToDesktopAxes(material->second, body.X_WB0.R_WB);
            }
        }
        groups.push_back(std::move(group));
    }
    std::map<std::string, IKinoraVeltrixInterface::Material> materials;
    for (auto& [object, material] : wanted) {
        material.name = m_options.toNarrow(material.name);
        materials.emplace(m_options.toNarrow(object), material);
    }
    if (!m_coupling.InitMagneticObjects(groups, materials)) {
        Fail("InitMagneticObjects", fmt::format("{} bodies", groups.size()),
             {fmt::format("Check that the geometry file has these objects: {}.", ObjectNames(m_scenario)),
              "Check that the desktop knows the materials named in the scenario.",
              "Check that no body is named like a variable or function of the desktop."});
    }
}

void CoupledRun::OpenStates() {
    if (m_resumed) {
        CutFiles(m_files, m_resumed->sizes);
    }
    if (m_files.csv) {
        m_csv = std::make_unique<StatesCsv>(*m_files.csv, m_scenario, m_resumed.has_value());
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
        const Body& drawn = m_scenario.bodies[body];
        transforms.push_back(ToTransform(drawn.name, record.poses[body], drawn.X_WB0.R_WB));
    }
    m_listener.OnSolve();
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
        record.results[body] = ToBodyAxes(record.results[body], m_scenario.bodies[body].X_WB0.R_WB);
        loads.push_back(ToLoad(record.results[body], record.poses[body].R_WB));
    }
    m_mechanism.ApplyLoads(loads);
    record.mechanism = m_mechanism.Records();
    if (m_csv) {
        m_csv->Append(record);
    }
    Save(step);
    m_lastStep = step;
    m_listener.OnStep(record);
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
    const bool mayQuit = m_scenario.desktop.atEnd == AtEnd::Quit;
    const bool isShared = mayQuit && !m_hasDesktopEnded && m_options.isDesktopShared();
    if (isShared) {
        m_listener.OnPhase("The desktop stays open: other projects are open in it");
    }
    // A desktop whose project refuses to close is not quit over its head; letting go always works.
    if (!mayQuit || isShared || !m_coupling.QuitApplication()) {
        m_coupling.ReleaseApplication();
    }
    m_isLaunched = false;
}

void CoupledRun::WarnOfOpenBooks() {
    for (std::size_t i = 0; i < m_scenario.joints.size(); ++i) {
        const EnergyBooks& books = m_mechanism.Joints()[i].books;
        if (!books.Close()) {
            m_listener.OnWarning(books.Warning(m_scenario.joints[i].name));
        }
    }
}

void CoupledRun::CloseAfterFailure() noexcept {
    try {
        m_csv.reset();
        if (m_isLaunched) {
            // Whatever can still be saved is; the failure itself is what will be reported.
            (void)m_coupling.SaveProject();
            (void)m_coupling.CloseProject();
            LetGoOfDesktop();
        }
        ClearAfterFailure();
        LeaveFolder();
    } catch (const std::exception& error) {
        m_listener.OnWarning(fmt::format("While closing after the failure: {}", error.what()));
    }
}

/// Leaves nothing of a set-up that was for nothing.
void CoupledRun::ClearAfterFailure() const {
    std::error_code ignored;
    if (m_earlier.IsAside()) {
        m_earlier.PutBack();
    } else if (!std::filesystem::exists(m_files.project, ignored)) {
        std::filesystem::remove(m_files.state, ignored);
    }
}

OperationFailed CoupledRun::DesktopHasEnded(const OperationFailed& failure) const {
    std::vector<std::string> advice = {
        m_lastStep >= 0 ? fmt::format("What was solved up to step {} is kept: --resume goes on with it.", m_lastStep)
                        : std::string("No step was solved yet: start again.")};
    if (!m_options.launchHint.empty()) {
        advice.push_back(m_options.launchHint);
    }
    return {fmt::format("{} The desktop has ended: it was closed, killed, or has crashed.", failure.what()), advice};
}

void CoupledRun::Fail(const std::string& operation, const std::string& detail, std::vector<std::string> advice) {
    throw OperationFailed(fmt::format("{} failed: {}.", operation, detail), std::move(advice));
}

void CoupledRun::CollectMessages(OperationFailed& failure) {
    if (!m_isLaunched) {
        return;
    }
    std::vector<std::string> known;
    for (const Severity severity : {Severity::Fatal, Severity::Error, Severity::Warning, Severity::Info}) {
        std::vector<std::string> texts;
        if (!m_coupling.GetMessages(texts, severity)) {
            m_hasDesktopEnded = m_isModelOpen;
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
