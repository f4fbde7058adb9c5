#pragma once
// Two solids of a body that may touch.
#include "simulator/solver/FacedSolid.h"

namespace vantor::solver {

struct SolidPair {
    FacedSolid &first, &second;
    /// Their numbers in the list of solids.
    std::size_t firstIndex, secondIndex;
};

} // namespace vantor::solver
