#pragma once
// Solids of a body may touch, but not take the same room.
#include "simulator/solver/SolidPair.h"

namespace vantor::solver {

/// Whether solids whose contacts have been found have a part of their volumes in common that is deeper than what may be
/// rounding.
bool Overlap(const SolidPair& pair);

} // namespace vantor::solver
