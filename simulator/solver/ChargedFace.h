#pragma once
#include "simulator/solver/Polygon.h"

namespace vantor::solver {

struct ChargedFace {
    Polygon polygon;
    /// A/m: magnetisation along the outward normal.
    double charge = 0;
};

} // namespace vantor::solver
