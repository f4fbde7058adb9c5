#pragma once

#include "simulator/model/Desktop.h"

#include <array>
#include <optional>
#include <string>

namespace vantor::analysis {

/// Where the field is wanted. A grid is symmetric about the middle of its box.
struct FieldGrid {
    /// Numbers of points along x, y and z, two or more each. Without them thirty cells along the longest side and cells
    /// of about the same edge along the others, an even number of them: points lie on the middle planes.
    std::optional<std::array<int, 3>> points;
    /// Metres, global. Without it a box around magnets and iron with a margin of half their largest extent on every
    /// side.
    std::optional<model::Box> box;
};

/// Points that a grid may have at most.
constexpr int mostFieldPoints = 1000000;

/// The fields H (A/m) and B = mu0 (H + M) (T) of a design's last solved state, as a VTK XML unstructured grid.
///
/// M is the magnetisation in a magnet or in iron, with what the field makes of it, and 0 elsewhere. Coordinates are
/// metres, global. Points on a surface of either carry the mean of both sides.
/// @throws model::DesktopError (SolutionError) when the design has not been solved; model::ExpressionError,
///         solver::SolveError when the state cannot be evaluated.
std::string ExportFields(const model::Project& project, const model::MaterialTable& library,
                         const model::Design& design, const FieldGrid& grid = {});

} // namespace vantor::analysis
