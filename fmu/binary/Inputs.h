#pragma once

#include "fmu/core/Model.h"

#include <map>
#include <vector>

namespace kinora::fmu {

/// The numbers of an instance, and how its inputs develop within the next step.
class Inputs {
public:
    explicit Inputs(const Model& model);

    double At(Reference reference) const { return m_values[reference]; }
    void Set(Reference reference, double value) { m_values[reference] = value; }

    /// @param order  1 for the first derivative in time, and so on
    void SetDerivative(Reference reference, int order, double value) { m_derivatives[reference][order] = value; }
    /// They hold for one step.
    void ForgetDerivatives() { m_derivatives.clear(); }

    /// How a port's bodies are moved, some time after its inputs were set. Derivatives that were given come before
    /// the port's speeds.
    /// @throws FmuError  an input is not a finite number, or an orientation not a unit quaternion
    Movement MovementOf(const Port& port, double later) const;

private:
    bool HasDerivatives(Reference first, std::size_t count) const;
    double Extrapolated(Reference reference, double later) const;
    scenario::Vector VectorAt(Reference first) const;
    scenario::Vector Displacement(const Port& port, double later) const;
    scenario::Quaternion Turn(const Port& port, double later) const;
    scenario::Quaternion Orientation(const Port& port, double later) const;

    std::vector<double> m_values;
    std::map<Reference, std::map<int, double>> m_derivatives;
};

} // namespace kinora::fmu
