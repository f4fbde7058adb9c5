#include "fmu/binary/Instance.h"

#include "fmu/binary/Errors.h"
#include "fmu/binary/Loads.h"
#include "programs/Paths.h"
#include "scenario/ScenarioReader.h"
#include "scenario/Text.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <stdexcept>

namespace kinora::fmu {

using namespace scenario;

namespace {

const char* NameOf(State state) {
    switch (state) {
    case State::Instantiated:
        return "instantiated";
    case State::Initialization:
        return "in initialization mode";
    case State::Stepping:
        return "between steps";
    case State::Terminated:
        return "terminated";
    case State::Failed:
        break;
    }
    return "failed";
}

Instantiation Checked(Instantiation instantiation) {
    if (instantiation.name.empty()) {
        throw CallError("An instance needs a name.");
    }
    return instantiation;
}

Packing CheckedPacking(const Instantiation& instantiation) {
    Packing packing = ReadPacking(instantiation.resources / packingFile);
    if (packing.token != instantiation.token) {
        throw CallError(fmt::format("The token \"{}\" is of another FMU than this binary, which has \"{}\": unpack the "
                                    "FMU anew.",
                                    instantiation.token, packing.token));
    }
    return packing;
}

/// Milliseconds from a text of seconds.
std::uint32_t BusyWaitOf(const std::string& text) {
    if (text == "forever") {
        return KV_WAIT_FOREVER;
    }
    double seconds = -1.0;
    try {
        seconds = Expression::Parse(text, Expression::Variables::None).Evaluate(0.0);
    } catch (const std::invalid_argument&) {
        // refused below
    }
    constexpr double most = 4e6;
    if (!(seconds >= 0.0 && seconds <= most)) {
        throw FmuError(fmt::format("The parameter busyWait is \"{}\", which is neither seconds, 0 to {:.0f}, nor "
                                   "\"forever\".",
                                   text, most));
    }
    return static_cast<std::uint32_t>(std::lround(1e3 * seconds));
}

void CheckLogLevel(const std::string& text) {
    if (text != "error" && text != "warning" && text != "info") {
        throw FmuError(fmt::format("The parameter logLevel is \"{}\": it is error, warning or info.", text));
    }
}

/// Times of a tool are sums of its steps.
bool IsSameTime(double a, double b, double duration) {
    return std::fabs(a - b) <= 1e-6 * duration + 1e-12 * std::fabs(b);
}

} // namespace

Instance::Instance(Instantiation instantiation)
    : m_instantiation(Checked(std::move(instantiation))), m_packing(CheckedPacking(m_instantiation)),
      m_scenario(ReadScenario(programs::AbsolutePath(m_instantiation.resources) / packedScenarioFile)),
      m_model(m_scenario, m_packing), m_values(m_model), m_isLogging(m_instantiation.isLogging) {
    Reset();
}

Instance::~Instance() {
    LetGo(true);
}

void Instance::Tell(Status status, const char* category, const std::string& text) const {
    const std::string& level = m_texts[logLevelReference];
    const bool isWanted = category == eventCategory ? level == "info" : level != "error";
    if (m_isLogging && isWanted && (m_categories.empty() || m_categories.count(category) != 0)) {
        m_instantiation.log(status, category, text);
    }
}

void Instance::TellError(const std::string& text) const {
    m_instantiation.log(Status::Error, errorCategory, text);
}

void Instance::SetLogging(bool isOn, const std::vector<std::string>& categories) {
    m_isLogging = isOn;
    m_categories = {categories.begin(), categories.end()};
    if (m_categories.count("logAll") != 0) {
        m_categories.clear();
    }
}

void Instance::RequireState(State state, const char* what) const {
    if (m_state != state) {
        throw CallError(fmt::format("{} is not allowed now: the instance is {}, and has to be {}.", what,
                                    NameOf(m_state), NameOf(state)));
    }
}

void Instance::SetUpExperiment(double startTime, std::optional<double> stopTime) {
    RequireState(State::Instantiated, "Setting up the experiment");
    if (!std::isfinite(startTime) || (stopTime && !(*stopTime >= startTime))) {
        throw CallError("The start time is not a finite number, or the stop time comes before it.");
    }
    m_startTime = m_time = startTime;
    m_stopTime = stopTime;
    m_values.Set(timeReference, startTime);
    m_isSetUp = true;
}

void Instance::EnterInitialization() {
    RequireState(State::Instantiated, "Entering initialization mode");
    if (!m_isSetUp) {
        throw CallError("The experiment has to be set up first: its start time is not known.");
    }
    m_state = State::Initialization;
}

/// What fails within ends the coupling.
template <class Work>
void Instance::Attempt(const Work& work) {
    try {
        work();
    } catch (...) {
        m_state = State::Failed;
        LetGo(true);
        throw;
    }
}

void Instance::ExitInitialization() {
    RequireState(State::Initialization, "Leaving initialization mode");
    Attempt([this] { SolveStart(); });
    m_state = State::Stepping;
}

CouplingSettings Instance::Settings() const {
    CheckLogLevel(m_texts[logLevelReference]);
    CouplingSettings settings;
    settings.desktopVersion = m_texts[desktopVersionReference];
    settings.busyWaitMilliseconds = BusyWaitOf(m_texts[busyWaitReference]);
    settings.outputFolder = PathFromUtf8(m_texts[outputFolderReference]);
    if (settings.outputFolder.empty()) {
        settings.outputFolder = std::filesystem::current_path();
    }
    settings.instanceName = m_instantiation.name;
    settings.bringsSimulator = m_packing.bringsSimulator;
    return settings;
}

void Instance::SolveStart() {
    if (m_isStartSolved) {
        return;
    }
    if (!m_coupling) {
        m_coupling = std::make_unique<Coupling>(m_scenario, Settings());
        Tell(Status::Ok, eventCategory, fmt::format("The run is in {}.", Utf8FromPath(m_coupling->Folder())));
    }
    Solve(0.0);
    m_isStartSolved = true;
}

/// @param later  how long after the time of the inputs
void Instance::Solve(double later) {
    std::vector<Pose> poses;
    for (const Body& body : m_scenario.bodies) {
        poses.push_back(body.X_WB0);
    }
    std::vector<Movement> movements;
    for (const Port& port : m_model.AllPorts()) {
        movements.push_back(m_values.MovementOf(port, later));
        for (const std::size_t body : port.bodies) {
            poses[body] = MovedBy(port, movements.back(), poses[body]);
        }
    }
    std::int32_t status = 0;
    try {
        SetOutputs(movements, poses, m_coupling->Solve(m_time + later - m_startTime, poses, status));
    } catch (...) {
        m_values.Set(solverStatusReference, status);
        throw;
    }
    m_values.Set(solverStatusReference, status);
}

void Instance::SetOutputs(const std::vector<Movement>& movements, const std::vector<Pose>& poses,
                          const Solution& solution) {
    m_values.Set(solvesReference, m_values.At(solvesReference) + 1.0);
    m_values.Set(solveMillisecondsReference, solution.milliseconds);
    for (std::size_t i = 0; i < movements.size(); ++i) {
        SetLoads(m_model.AllPorts()[i], m_packing.axes, movements[i], poses, solution.loads, m_values);
    }
}

void Instance::DoStep(double from, double duration) {
    RequireState(State::Stepping, "A step");
    if (!(duration > 0.0 && std::isfinite(duration))) {
        throw CallError(fmt::format("A step of {} s is none.", duration));
    }
    if (!IsSameTime(from, m_time, duration)) {
        throw CallError(fmt::format("A step begins where the last one has ended, at {} s, not at {} s: what was solved "
                                    "stays in the run's history.",
                                    m_time, from));
    }
    if (m_stopTime && m_time + duration > *m_stopTime && !IsSameTime(m_time + duration, *m_stopTime, duration)) {
        throw CallError(
            fmt::format("The step ends at {} s, after the stop time {} s.", m_time + duration, *m_stopTime));
    }
    Attempt([&] { Solve(duration); });
    m_values.ForgetDerivatives();
    m_time = from + duration;
    m_values.Set(timeReference, m_time);
}

void Instance::Terminate() {
    RequireState(State::Stepping, "Terminating");
    m_state = State::Terminated;
    try {
        m_coupling->Finish();
    } catch (...) {
        LetGo(false);
        throw;
    }
    LetGo(false);
}

void Instance::LetGo(bool isSaved) {
    try {
        if (m_coupling && isSaved) {
            m_coupling->Finish();
        }
    } catch (const FmuError& error) {
        Tell(Status::Warning, warningCategory, fmt::format("While letting go of the desktop: {}", error.what()));
    }
    m_coupling.reset();
}

void Instance::Reset() {
    LetGo(true);
    m_values = Inputs(m_model);
    m_texts.assign(m_model.References(), std::string());
    for (const Variable& variable : m_model.Variables()) {
        m_texts[variable.reference] = variable.text;
    }
    m_state = State::Instantiated;
    m_isSetUp = false;
    m_startTime = m_time = 0.0;
    m_stopTime.reset();
    m_isStartSolved = false;
}

const Variable& Instance::Find(Reference reference, Type type) const {
    const Variable* variable = m_model.Find(reference);
    if (!variable) {
        throw CallError(fmt::format("There is no variable with the reference {}.", reference));
    }
    if (variable->type != type) {
        throw CallError(fmt::format("The variable \"{}\" ({}) is of another type.", variable->name, reference));
    }
    return *variable;
}

double Instance::Number(Reference reference) {
    const Variable& variable = *m_model.Find(reference);
    if (m_state == State::Initialization && variable.causality == Causality::Output) {
        Attempt([this] { SolveStart(); });
    }
    return m_values.At(reference);
}

const std::string& Instance::Text(Reference reference) const {
    return m_texts[reference];
}

const Variable& Instance::Settable(Reference reference) const {
    const Variable& variable = *m_model.Find(reference);
    const bool isBefore = m_state == State::Instantiated || m_state == State::Initialization;
    const bool isInput = variable.causality == Causality::Input;
    if (!isInput && variable.causality != Causality::Parameter) {
        throw CallError(fmt::format("\"{}\" is not to be set.", variable.name));
    }
    if (!isBefore && !(isInput && m_state == State::Stepping)) {
        throw CallError(fmt::format("\"{}\" cannot be set now: the instance is {}.", variable.name, NameOf(m_state)));
    }
    return variable;
}

void Instance::SetNumber(Reference reference, double value) {
    Settable(reference);
    if (m_values.At(reference) != value) {
        m_isStartSolved = false;
    }
    m_values.Set(reference, value);
}

void Instance::SetText(Reference reference, std::string value) {
    const Variable& variable = Settable(reference);
    if (m_coupling && m_texts[reference] != value) {
        throw CallError(fmt::format("\"{}\" cannot be set any more: outputs were asked for, and the desktop has been "
                                    "started for them.",
                                    variable.name));
    }
    m_texts[reference] = std::move(value);
}

void Instance::SetDerivative(Reference reference, int order, double value) {
    const Variable& variable = Settable(reference);
    if (variable.causality != Causality::Input) {
        throw CallError(fmt::format("\"{}\" is no input and has no derivatives.", variable.name));
    }
    if (order < 1) {
        throw CallError(fmt::format("A derivative of order {} is none: orders begin with 1.", order));
    }
    m_values.SetDerivative(reference, order, value);
}

} // namespace kinora::fmu
