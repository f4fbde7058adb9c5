#pragma once

#include "host/core/RunFiles.h"
#include "host/core/RunRecords.h"
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
    virtual void OnStep(const StepRecord& record) = 0;
};

/// How a run is done this time.
struct RunOptions {
    /// Go on with the project and the state of an earlier run.
    bool resume = false;
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
    /// Text of a script error code; null for an unknown one.
    std::function<const char*(std::int32_t)> scriptErrorText = [](std::int32_t) -> const char* { return nullptr; };
};

/// How a run ended without failing.
enum class RunEnd { Complete, Interrupted };

/// One coupled run through the interface, in its documented calling order: CreateProject (or OpenProject),
/// InitMagneticObjects, Analyze per step with the first at exactly 0.0, SaveProject, CloseProject, QuitApplication or
/// ReleaseApplication. After a failure what is open is saved and closed all the same.
class CoupledRun {
public:
    /// All arguments must outlive the run.
    CoupledRun(const scenario::Scenario& scenario, const RunOptions& options, IKinoraVeltrixInterface& coupling,
               RunListener& listener);
    ~CoupledRun();
    CoupledRun(const CoupledRun&) = delete;
    CoupledRun& operator=(const CoupledRun&) = delete;

    /// @throws InputError       nothing was started: the project exists already, or there is nothing to resume
    /// @throws OperationFailed  an operation of the interface failed; it carries the desktop's messages
    /// @throws RunError         the multibody side failed, or a file cannot be written
    RunEnd Run();

private:
    void PrepareFolder() const;
    void OpenModel();
    void CreateProject();
    void OpenProject();
    template <class Operation>
    bool Launching(Operation operation);
    bool MayLaunchAgain(const LaunchDesktopExeption& error, int tries) const;
    void BuildMagnetics();
    RunEnd Advance(int firstStep);
    void Solve(int step);
    void WarnOfOrientation(const scenario::Pose& X_WB, std::size_t body, double time);
    void Finish();
    void CloseAfterFailure() noexcept;
    void LetGoOfDesktop();
    std::string Narrow(const std::filesystem::path& path) const;
    [[noreturn]] static void Fail(const std::string& operation, const std::string& detail,
                                  std::vector<std::string> advice);
    void CollectMessages(OperationFailed& failure) const;

    const scenario::Scenario& m_scenario;
    const RunOptions& m_options;
    IKinoraVeltrixInterface& m_coupling;
    RunListener& m_listener;
    RunFiles m_files;
    Mechanism m_mechanism;
    /// Largest deviation warned of so far, per body, radians.
    std::vector<double> m_warnedDeviation;
    std::unique_ptr<StatesCsv> m_csv;
    int m_resumedStep = -1;
    bool m_isLaunched = false;
};

} // namespace kinora::host
