#pragma once

#include "simulator/analysis/SolverCopies.h"
#include "simulator/model/Desktop.h"

#include <functional>
#include <string>
#include <vector>

namespace vantor::analysis {

/// Receives what is to be said about a solve.
using ReportFunction = std::function<void(model::Severity severity, const std::string& text)>;

/// The magnets and the iron of a design as bodies: one for each set of objects that a force or torque is defined on,
/// and one for the objects that no load is defined on.
struct FieldModel {
    std::vector<solver::Body> bodies;
    /// For each load of the design the index of its body.
    std::vector<std::size_t> bodyOfLoad;
};

/// Evaluates frames and materials with these variables.
///
/// The magnetisation of a magnet where H is 0 is relative permeability times coercivity along the unit vector of the
/// material's components, in the axes of the object's orientation frame. Where that is the object's own frame, it is
/// the same to the last bit wherever the object is. Objects without coercivity take part where their permeability
/// differs from vacuum's by more than a thousandth, or where they have a B-H curve.
/// @param copies where the solver's meshes and curves come from; must know them as long as the solver is to know them
///        again.
/// @param report receives warnings about materials that nobody knows.
/// @throws model::DesktopError (SolverData) for loads whose objects overlap in part, materials without direction, and
///         permeabilities that cannot be solved; model::ExpressionError for frames that cannot be evaluated.
FieldModel BuildFieldModel(const model::Project& project, const model::MaterialTable& library,
                           const model::Design& design, const model::Variables& variables, SolverCopies& copies,
                           const ReportFunction& report);

} // namespace vantor::analysis
