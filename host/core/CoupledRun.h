#pragma once

#include "host/core/EarlierRun.h"
#include "host/core/StateFile.h"
#include "programs/FolderLock.h"
#include "scenario/Errors.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>

namespace kinora::host {

class StatesCsv;

using Severity = IKinoraVeltrixInterface::MessageSeverity;

/// An operation of the interface failed: what it was, what the desktop said, and what may help.
class OperationFailed : public scenario::RunError {
public:
    OperationFailed(const std::string& text, std::vector<std::string> advice)
        : scenario::RunError(text), m_advice(std::move(advice)) {}

    const std::vector<std::string>& Advice() const { return m_advice; }
    /// The desktop's messages, most severe first.
    std::vector<std::pair<Severity, std::string>> messages;

private:
    std::vector<std::string> m_advice;
};

/// Hears of a run's progress.
class RunListener {
public:
    virtual ~RunListener() = default;
    /// A phase begins ("Creating the project", ...).
    virtual void OnPhase(const std::string& text) = 0;
    /// Something that the user should know; the run goes on.
    virtual void OnWarning(const std::string& text) = 0;
    /// The desktop is asked to solve a step, which may take long.
    virtual void OnSolve() = 0;
    virtual void OnStep(const StepRecord& record) = 0;
};

/// How a run is done this time.
struct RunOptions {
    /// Go on with the project and the state of an earlier run.
    bool resume = false;
    /// Go on with it although the scenario has changed or files are missing.
    bool force = false;
    /// What else the run will write (its report page).
    std::vector<NamedFile> furtherOutputs;
    /// Stop after so many steps as if interrupted; negative for no limit.
    int stepLimit = -1;
    /// Asked after every step.
    std::function<bool()> isInterrupted = [] { return false; };
    /// UTF-8 to the narrow text of the interface, and back. The first throws InputError for what has no counterpart.
    std::function<std::string(const std::string&)> toNarrow = [](const std::string& text) { return text; };
    std::function<std::string(const std::string&)> fromNarrow = [](const std::string& text) { return text; };
    /// How often an installed desktop that does not start is tried, and the pause before each further try: the one of
    /// an earlier run may still be on its way out.
    int launchTries = 3;
    std::chrono::milliseconds launchPause{2000};
    /// Closes the project of a file in the desktop, if it is open there: a run that was killed while it set its project
    /// up has left it, and the desktop would refuse a new one in its place.
    std::function<void(const std::filesystem::path&)> closeLeftProject = [](const std::filesystem::path&) {};
    /// Asked at the end: whether projects of others are open in the desktop, which then is not quit.
    std::function<bool()> isDesktopShared = [] { return false; };
    /// What to try when no desktop starts.
    std::vector<std::string> launchAdvice;
    /// What may help on this system when no desktop starts after one has died; empty for nothing.
    std::string launchHint;
    /// Text of a script error code; null for an unknown one.
    std::function<const char*(std::int32_t)> scriptErrorText = [](std::int32_t) -> const char* { return nullptr; };
};

/// How a run ended without failing.
enum class RunEnd { Complete, Interrupted };

/// One coupled run through the interface, in its documented calling order: CreateProject (or OpenProject),
/// InitMagneticObjects, Analyze per step with the first at exactly 0.0, SaveProject, CloseProject, QuitApplication or
/// ReleaseApplication. After a failure what is open is saved and closed all the same. A project in whose place a new
/// one could not be set up is put back.
class CoupledRun {
public:
    /// All arguments must outlive the run.
    CoupledRun(const scenario::Scenario& scenario, const RunOptions& options, IKinoraVeltrixInterface& coupling,
               RunListener& listener);
    ~CoupledRun();
    CoupledRun(const CoupledRun&) = delete;
    CoupledRun& operator=(const CoupledRun&) = delete;

    /// @throws InputError       nothing was started and nothing changed: the project exists already, there is nothing
    ///                          to resume, a file cannot be written, or another run works in the folder
    /// @throws OperationFailed  an operation of the interface failed; it carries the desktop's messages
    /// @throws RunError         the multibody side failed, or a file cannot be written
    RunEnd Run();

private:
    /// @return the first step
    int Prepare();
    int PrepareOrLeaveAlone();
    void LeaveFolder();
    void LockFolder();
    SavedState RequireResumable() const;
    void RecoverEarlierRun();
    void MakeRoom() const;
    void RemoveResult() const;
    void Save(int step) const;
    void OpenModel();
    void CreateProject();
    void OpenProject();
    template <class Operation>
    bool Launching(Operation operation);
    void BuildMagnetics();
    void OpenStates();
    RunEnd Advance(int firstStep);
    void Solve(int step);
    void Finish();
    void WarnOfOpenBooks();
    void CloseAfterFailure() noexcept;
    void ClearAfterFailure() const;
    void LetGoOfDesktop();
    std::string Narrow(const std::filesystem::path& path) const;
    [[noreturn]] static void Fail(const std::string& operation, const std::string& detail,
                                  std::vector<std::string> advice);
    void CollectMessages(OperationFailed& failure);
    std::vector<std::string> LaunchAdvice(bool isInstalled) const;
    OperationFailed DesktopHasEnded(const OperationFailed& failure) const;

    const scenario::Scenario& m_scenario;
    const RunOptions& m_options;
    IKinoraVeltrixInterface& m_coupling;
    RunListener& m_listener;
    RunFiles m_files;
    Mechanism m_mechanism;
    RunIdentity m_identity;
    EarlierRun m_earlier;
    std::vector<std::filesystem::path> m_madeFolders;
    std::unique_ptr<programs::FolderLock> m_lock;
    std::unique_ptr<StatesCsv> m_csv;
    /// Present when a run is gone on with.
    std::optional<SavedState> m_resumed;
    int m_lastStep = -1;
    /// A run was killed, or has failed, before its first step was solved.
    bool m_followsBrokenSetUp = false;
    bool m_isLaunched = false;
    bool m_isModelOpen = false;
    /// Its project was open, and it does not answer any more.
    bool m_hasDesktopEnded = false;
};

} // namespace kinora::host
