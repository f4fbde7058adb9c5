#pragma once

#include "simulator/analysis/FieldModel.h"

namespace vantor::analysis {

/// Solves a setup and stores the solution in the design. What the solver has found out about the meshes is kept with
/// the design for its next solve.
/// @param report receives passes as they are done (info), what is not solved as it is, missing convergence (warning),
///        and the reason of a failure (error).
/// @return false when it cannot be solved; an earlier solution is then no longer current.
bool SolveDesign(const model::Project& project, const model::MaterialTable& library, model::Design& design,
                 const model::AnalysisSetup& setup, const ReportFunction& report);

} // namespace vantor::analysis
