#pragma once
// The faces of solids of one body, which may touch: where two lie on one another, the faces of both become one.
#include "simulator/solver/Polygon.h"

#include <optional>
#include <string>

namespace vantor::solver {

/// A closed surface of one material.
struct Solid {
    /// For messages: magnet and body by name.
    std::string label;
    /// In the mesh's own axes; null is a mesh of nothing.
    std::shared_ptr<const TriangleMesh> mesh;
    /// Of the mesh's axes in the body's (one common frame for all solids).
    Eigen::Isometry3d pose = Eigen::Isometry3d::Identity();
};

/// A flat face, or a part of one.
struct SolidFace {
    /// In the body's axes. Its normal points out of `inside`.
    Polygon polygon;
    /// Index of a solid.
    std::size_t inside = 0;
    /// The solid on the other side, with a higher index; none where there is air (or vacuum).
    std::optional<std::size_t> outside;
};

/// The faces of solids that may touch: every point of a surface belongs to exactly one face. They come by solids
/// (`inside`), then by faces of the solid. What is nearer than 1e-7 of the larger solid's radius touches. The faces of
/// a solid are closed to rounding where its neighbours fit to rounding, and but for the misfit elsewhere.
/// @throws SolveError  values that are not finite, corner numbers out of range, meshes that are open or inside out,
///                     solids that overlap
std::vector<SolidFace> FacesOf(const std::vector<Solid>& solids);

} // namespace vantor::solver
