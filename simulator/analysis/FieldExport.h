#pragma once

#include "simulator/model/Desktop.h"

#include <string>

namespace vantor::analysis {

/// The H field (A/m) of a design's last solved state, as a VTK XML unstructured grid.
///
/// The grid is a box around the magnets with a margin of half their extent on every side, in cells of equal edge, about
/// thirty along its longest side. Coordinates are metres, global. Points on a magnet's surface carry the mean of both
/// sides.
/// @throws model::DesktopError (SolutionError) when the design has not been solved; model::ExpressionError,
///         solver::SolveError when the state cannot be evaluated.
std::string ExportFields(const model::Project& project, const model::MaterialTable& library,
                         const model::Design& design);

} // namespace vantor::analysis
