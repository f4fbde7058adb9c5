#pragma once

#include "simulator/analysis/SolverMeshes.h"

namespace vantor::analysis {

/// What a design keeps from one solve to the next: the solver's meshes, and what the solver knows of them.
class KeptSolver {
public:
    SolverMeshes meshes;
    solver::Solver solver;
};

} // namespace vantor::analysis
