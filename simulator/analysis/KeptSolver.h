#pragma once

#include "simulator/analysis/SolverCopies.h"

namespace vantor::analysis {

/// What a design keeps from one solve to the next: the solver's meshes and curves, and what the solver knows of them.
class KeptSolver {
public:
    SolverCopies copies;
    solver::Solver solver;
};

} // namespace vantor::analysis
