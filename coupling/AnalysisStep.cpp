#include "comutils/DesignCommands.h"
#include "comutils/DesignVariableCommands.h"
#include "comutils/DesktopCommands.h"
#include "comutils/Names.h"
#include "comutils/ObjectCommands.h"
#include "comutils/OutputVariableCommands.h"
#include "comutils/Pose.h"
#include "comutils/ProjectCommands.h"
#include "comutils/ReportCommands.h"
#include "comutils/SetupCommands.h"
#include "comutils/Text.h"
#include "coupling/CsvFile.h"
#include "coupling/Operation.h"
#include "coupling/ReportsFolder.h"

#include <array>
#include <optional>
#include <set>

/// What one step reads at its start and needs until its end.
struct CKinoraVeltrixCoupling::Step {
    double time;
    bool isFirst;
    std::string projectName;
    std::string projectPath;
    std::string designName;
    std::vector<std::string> localVariables;
    std::string setup;
    /// Empty until the reports folder is there.
    std::string logPath;
    /// Files that the desktop's user has been told of.
    std::set<std::string> warnedPaths;

    /// The desktop's path ends in a separator already.
    std::string ReportsFolder() const { return projectPath + projectName + ".reports"; }
};

namespace {

using Transform = IKinoraVeltrixInterface::Transform;
using Result = IKinoraVeltrixInterface::Result;

/// Severities of messages as the desktop counts them.
constexpr int allMessages = 0;
constexpr int warning = 1;

void WriteLogHeader(CCsvFile& log, const std::vector<Transform>& transforms) {
    log << "Step," << Names::timeVariable;
    for (const Transform& transform : transforms) {
        for (const char* ending : {Names::x, Names::y, Names::z, Names::phi, Names::theta, Names::psi}) {
            log << "," << transform.name << ending;
        }
        for (const std::string& load : {Names::Force(transform.name), Names::Torque(transform.name)}) {
            for (const char* ending : Names::axes) {
                log << "," << load << ending;
            }
        }
    }
    log.EndLine();
}

void LogBody(CCsvFile& log, const Transform& transform, const Result& result) {
    const Pose::Angles angles = Pose::AnglesOf(transform.rotation);
    const double orientation[3] = {angles.phi, angles.theta, angles.psi};
    log << transform.translation << orientation << result.force << result.torque;
}

/// The reports of one body's loads: their data files, and the desktop's reports that these are imported into.
class CStepReports {
public:
    /// @param names  of the reports that are there, as the desktop lists them
    CStepReports(IDispatch* module, std::string folder, double time, const std::string& setup,
                 const std::vector<std::string>& localVariables, CValue names)
        : m_module(module), m_folder(std::move(folder)), m_time(time), m_setup(setup), m_localVariables(localVariables),
          m_names(std::move(names)) {}

    using QuantityName = std::string (*)(const std::string& body, int axis);

    /// @return false when the data file cannot be opened
    bool Refill(const std::string& report, const std::string& body, QuantityName quantity, const char* unit,
                const double (&load)[3]) {
        if (!Exists(report)) {
            ReportCommands::CreateEmptyReport(m_module, report, m_setup, m_localVariables);
        }
        const std::string path = PathOf(report);
        const bool isWritten = AppendData(path, body, quantity, unit, load);
        ReportCommands::ClearAndImport(m_module, report, path);
        return isWritten;
    }

    std::string PathOf(const std::string& report) const { return m_folder + "/" + report + ".csv"; }

private:
    bool Exists(const std::string& report) {
        if (!m_existing) {
            const std::vector<std::string> names = m_names.ToTexts();
            m_existing.emplace(names.begin(), names.end());
        }
        return m_existing->count(report) != 0;
    }

    bool AppendData(const std::string& path, const std::string& body, QuantityName quantity, const char* unit,
                    const double (&load)[3]) const {
        CCsvFile data(path);
        if (!data.IsOpen()) {
            return false;
        }
        if (data.IsNew()) {
            data << Names::timeVariable << " [s]";
            for (int axis = 0; axis < 3; ++axis) {
                data << "," << quantity(body, axis) << " [" << unit << "]";
            }
            data.EndLine();
        }
        data << m_time << load;
        data.EndLine();
        return true;
    }

    IDispatch* m_module;
    std::string m_folder;
    double m_time;
    const std::string& m_setup;
    const std::vector<std::string>& m_localVariables;
    CValue m_names;
    std::optional<std::set<std::string>> m_existing;
};

/// One step as the history keeps it.
std::vector<std::string> StepRow(const std::string& timeText, std::vector<std::array<Pose::Variable, 6>>& poses) {
    std::vector<std::string> row;
    row.reserve(1 + 6 * poses.size());
    row.push_back(timeText);
    for (auto& pose : poses) {
        for (auto& [name, value] : pose) {
            row.push_back(std::move(value));
        }
    }
    return row;
}

bool ReportsWanted(IDispatch* desktop) {
    static const std::string key = "Desktop\\Settings\\ProjectOptions\\Veltrix 3D\\UpdateReportsOnSolve";
    const std::string option = DesktopCommands::GetRegistryString(desktop, key);
    return option != "Never" && option != "On Completion";
}

} // namespace

bool CKinoraVeltrixCoupling::Analyze(double time, const std::vector<Transform>& transforms,
                                     std::vector<Result>& results, int& status) {
    const HoldingOperation operation(*this);
    if (!operation.HasBegun() || !m_pProject || !m_pDesign) {
        return false;
    }
    Step step = {time, time == 0.0, {}, {}, {}, {}, {}, {}, {}};
    if (!ReadStepNames(step)) {
        return false;
    }
    if (m_pDesktop) {
        DesktopCommands::ClearMessages(m_pDesktop, step.projectName, step.designName, allMessages);
    }
    CountStep(step);
    if (!DesignVariableCommands::GetVariables(m_pDesign, step.localVariables)) {
        return false;
    }
    if (!MoveBodies(step, transforms) || !WriteHistory(step.isFirst)) {
        return false;
    }
    step.setup = SetupCommands::GetFirstSetup(m_pDesign);
    if (step.setup.empty() || !SetupCommands::Analyze(m_pDesign, step.setup, status)) {
        return false;
    }
    try {
        return RecordResults(step, transforms, results);
    } catch (...) {
        // The solve is done and its results count; whatever went wrong here is a warning to the desktop's user.
        WarnOfPath(step, step.logPath);
        return true;
    }
}

bool CKinoraVeltrixCoupling::ReadStepNames(Step& step) const {
    return ObjectCommands::GetName(m_pProject, step.projectName) &&
           ProjectCommands::GetPath(m_pProject, step.projectPath) &&
           ObjectCommands::GetName(m_pDesign, step.designName);
}

void CKinoraVeltrixCoupling::CountStep(const Step& step) {
    if (step.isFirst) {
        m_stepCount = 0;
        m_stepEntries = {Names::timeVariable};
        m_stepRows.clear();
    } else {
        ++m_stepCount;
    }
}

/// Writes time and poses into the design's variables, in one command, and records them.
bool CKinoraVeltrixCoupling::MoveBodies(const Step& step, const std::vector<Transform>& transforms) {
    const std::string timeText = Text::Fixed(step.time) + "s";
    std::vector<DesignVariableCommands::Update> updates;
    updates.reserve(1 + 6 * transforms.size());
    if (Names::Contains(step.localVariables, Names::timeVariable)) {
        updates.emplace_back(Names::timeVariable, timeText);
    } else {
        DesignVariableCommands::SetVariable(m_pDesign, Names::timeVariable, timeText, true);
    }

    std::vector<std::array<Pose::Variable, 6>> poses;
    poses.reserve(transforms.size());
    for (const Transform& transform : transforms) {
        poses.push_back(Pose::Variables(transform));
        for (const auto& [name, value] : poses.back()) {
            updates.emplace_back(name, value);
            if (step.isFirst) {
                m_stepEntries.push_back(name);
            }
        }
    }
    // Of two bodies with one name the first one moves.
    DesignVariableCommands::Sort(updates);
    if (!updates.empty() && !DesignVariableCommands::ChangeVariables(m_pDesign, updates)) {
        return false;
    }
    m_stepRows.push_back(StepRow(timeText, poses));
    return true;
}

/// Reads the loads, and appends them to the coupling log and the report files. A failure leaves the log's line open; a
/// file that cannot be opened costs what would stand in it, and a warning.
bool CKinoraVeltrixCoupling::RecordResults(Step& step, const std::vector<Transform>& transforms,
                                           std::vector<Result>& results) const {
    const std::string folder = step.ReportsFolder();
    std::string path = folder + "/" + step.projectName + ".coupling.csv";
    CCsvFile log;
    // A log that opens tells that the folder is there.
    if (step.isFirst || !log.Open(path)) {
        PrepareReportsFolder(folder, step.isFirst);
        log.Open(path);
    }
    step.logPath = std::move(path);
    if (!log.IsOpen()) {
        WarnOfPath(step, step.logPath);
    }
    if (log.IsNew()) {
        WriteLogHeader(log, transforms);
    }
    log << std::to_string(m_stepCount) << "," << step.time;

    CValue reportNames = ReportCommands::GetReportNames(m_pDesign);
    const CObject module = DesignCommands::GetModule(m_pDesign, Names::reportModule);
    if (!module) {
        return false;
    }
    CStepReports reports(module.get(), folder, step.time, step.setup, step.localVariables, std::move(reportNames));
    for (const Transform& transform : transforms) {
        const std::string& body = transform.name;
        Result result;
        if (!OutputVariableCommands::ReadLoads(m_pDesign, body, step.setup, result)) {
            return false;
        }
        results.push_back(result);
        LogBody(log, transform, result);
        if (!ReportsWanted(m_pDesktop)) {
            continue;
        }
        if (!reports.Refill(Names::Force(body), body, Names::ForceQuantity, Names::newtonUnit, result.force)) {
            WarnOfPath(step, reports.PathOf(Names::Force(body)));
        }
        if (!reports.Refill(Names::Torque(body), body, Names::TorqueQuantity, Names::torqueUnit, result.torque)) {
            WarnOfPath(step, reports.PathOf(Names::Torque(body)));
        }
    }
    log.EndLine();
    return true;
}

/// Tells the desktop's user of a file of the step, once. Gives up quietly, also when memory runs out: a warning is no
/// reason to lose a step.
void CKinoraVeltrixCoupling::WarnOfPath(Step& step, const std::string& path) const noexcept {
    try {
        if (m_pDesktop && step.warnedPaths.insert(path).second) {
            DesktopCommands::AddMessage(m_pDesktop, step.projectName, step.designName, warning,
                                        "Kinora-Veltrix Coupling log path is not valid: " + path);
        }
    } catch (...) {
        return;
    }
}
