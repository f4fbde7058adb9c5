#pragma once
// Magnets of different bodies must keep apart: charge on a touching face would see its own infinite edge field, and
// magnets that overlap are no physical arrangement.
#include "simulator/solver/PreparedMagnet.h"

namespace vantor::solver {

/// @throws SolveError  two magnets of different bodies touch, overlap, or lie inside one another
void CheckSeparation(const std::vector<PreparedMagnet>& magnets);

} // namespace vantor::solver
