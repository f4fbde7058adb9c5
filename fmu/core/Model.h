#pragma once

#include "fmu/core/Packing.h"
#include "fmu/core/Port.h"
#include "scenario/Scenario.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kinora::fmu {

/// A unit as FMUs declare it: its name, what is measured in it, and its exponents of kilogram, metre, second, radian.
struct Unit {
    const char* name;
    /// Of the variables that have it.
    const char* quantity;
    int kg, m, s, rad;
    /// One of it, in the base units.
    double factor;
    /// What tools may show instead; null for nothing. A value of 1 is shown as `displayFactor`.
    const char* displayName;
    double displayFactor;
};

/// All units that variables have.
const std::vector<Unit>& Units();

enum class Type { Real, Integer, Text };
enum class Causality { Independent, Parameter, Input, Output };
/// As the standard has it.
const char* NameOf(Causality causality);

/// A variable of an FMU. In FMI 3.0 a vector is one variable; in FMI 2.0 each of its elements is, `name[1]` first.
struct Variable {
    /// Of the whole in FMI 3.0, of the first element in FMI 2.0, whose others follow.
    Reference reference = 0;
    std::string name;
    std::string description;
    Type type = Type::Real;
    Causality causality = Causality::Input;
    /// Null for numbers and texts.
    const Unit* unit = nullptr;
    bool isVector = false;
    /// Of a real or whole number: one, or one per element.
    std::vector<double> start;
    /// Of a text.
    std::string text;
    /// Index of its port; none of what is of the whole.
    std::optional<std::size_t> port;
    /// Its name within the port.
    std::string member;
};

/// What every FMU has, by reference.
constexpr Reference timeReference = 0;
constexpr Reference outputFolderReference = 1;
constexpr Reference desktopVersionReference = 2;
constexpr Reference logLevelReference = 3;
constexpr Reference busyWaitReference = 4;
constexpr Reference solverStatusReference = 5;
constexpr Reference solvesReference = 6;
constexpr Reference solveMillisecondsReference = 7;

/// A coupling as an FMU: its ports and all of its variables. Made from scenario and packing alone, the same in the
/// program that writes the description and in the binary that acts by it.
class Model {
public:
    /// @param scenario  must outlive this object
    Model(const scenario::Scenario& scenario, const Packing& packing);

    const scenario::Scenario& Description() const { return m_scenario; }
    const std::vector<Port>& AllPorts() const { return m_ports; }
    /// References ascend without a gap.
    const std::vector<Variable>& Variables() const { return m_variables; }
    /// As many references as there are: elements of vectors counted singly.
    std::size_t References() const { return m_variableOf.size(); }
    /// The variable that a reference, or one of its elements, belongs to; null for none.
    const Variable* Find(Reference reference) const;

private:
    void AddWhole();
    void AddPort(Port port);
    Reference Add(Variable variable);

    const scenario::Scenario& m_scenario;
    Packing m_packing;
    std::vector<Port> m_ports;
    std::vector<Variable> m_variables;
    /// By reference.
    std::vector<std::size_t> m_variableOf;
};

} // namespace kinora::fmu
