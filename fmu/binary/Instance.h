#pragma once

#include "fmu/binary/Coupling.h"
#include "fmu/binary/Inputs.h"
#include "fmu/binary/Log.h"

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace kinora::fmu {

/// Where an instance is in its life, as the standard has it.
enum class State { Instantiated, Initialization, Stepping, Terminated, Failed };

/// What an importing tool instantiates with.
struct Instantiation {
    std::string name;
    std::string token;
    std::filesystem::path resources;
    bool isLogging = false;
    Log log;
};

/// One instance of an FMU, whatever version of the standard it is talked to in.
///
/// Time: inputs are those at the beginning of a step, outputs those at its end. The field is solved once per step, at
/// its end, where the bodies are by the speeds and derivatives given; and once at the end of the initialisation, at
/// the start time, which is the run's time 0. (Asked for outputs before that, it is solved then, and again at the end
/// only when the inputs have changed since: a run that is solved at 0 again starts anew.)
///
/// Functions throw CallError for what the standard does not allow now, which changes nothing, and FmuError for what
/// fails: the desktop is let go of then, and only `Reset` goes on.
class Instance {
public:
    /// @throws CallError, programs::InputError  name, token or resources are not those of this FMU
    explicit Instance(Instantiation instantiation);
    /// Lets go of the desktop; what was solved is saved.
    ~Instance();
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    const std::string& Name() const { return m_instantiation.name; }
    State Now() const { return m_state; }
    /// The end of the last step that went well.
    double Time() const { return m_time; }

    /// @param categories  the only ones to be told; empty for all
    void SetLogging(bool isOn, const std::vector<std::string>& categories);
    /// Tells what fails, whether logging is on or off.
    void TellError(const std::string& text) const;

    void SetUpExperiment(double startTime, std::optional<double> stopTime);
    bool IsSetUp() const { return m_isSetUp; }
    void EnterInitialization();
    void ExitInitialization();
    void DoStep(double from, double duration);
    void Terminate();
    /// As after the instantiation; lets go of the desktop.
    void Reset();

    /// @param type  of the function that is called
    /// @throws CallError  there is no such variable, or not of this type
    const Variable& Find(Reference reference, Type type) const;
    /// Of a real or whole number, or of an element.
    double Number(Reference reference);
    /// Valid until it is set.
    const std::string& Text(Reference reference) const;
    /// @throws CallError  the variable cannot be set now
    const Variable& Settable(Reference reference) const;
    void SetNumber(Reference reference, double value);
    void SetText(Reference reference, std::string value);
    void SetDerivative(Reference reference, int order, double value);

private:
    void Tell(Status status, const char* category, const std::string& text) const;
    void RequireState(State state, const char* what) const;
    template <class Work>
    void Attempt(const Work& work);
    CouplingSettings Settings() const;
    void SolveStart();
    void Solve(double later);
    void SetOutputs(const std::vector<Movement>& movements, const std::vector<scenario::Pose>& poses,
                    const Solution& solution);
    void LetGo(bool isSaved);

    Instantiation m_instantiation;
    Packing m_packing;
    scenario::Scenario m_scenario;
    Model m_model;
    Inputs m_values;
    std::vector<std::string> m_texts;
    bool m_isLogging = false;
    std::set<std::string> m_categories;

    State m_state = State::Instantiated;
    bool m_isSetUp = false;
    double m_startTime = 0.0;
    std::optional<double> m_stopTime;
    double m_time = 0.0;
    std::unique_ptr<Coupling> m_coupling;
    /// Solved at the start time with the present inputs.
    bool m_isStartSolved = false;
};

} // namespace kinora::fmu
