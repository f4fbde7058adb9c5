#pragma once
// Loads between bodies of any mesh, triangle by triangle: the slow road, and another one than the solver's.
#include "tests/simulator/solver/References.h"

#include <array>
#include <vector>

namespace references {

/// A triangle of a magnet's surface, in global coordinates, with what the magnetisation leaves on it.
struct Facet {
    std::array<Eigen::Vector3d, 3> corners;
    /// Outward unit vector.
    Eigen::Vector3d normal;
    double area = 0;
    /// M.n and M x n, A/m: the surface charge, and the surface current that would give the same field outside.
    double charge = 0;
    Eigen::Vector3d current = Eigen::Vector3d::Zero();
};

enum class Model { Charges, Currents };

/// The body's facets on which the model has something.
std::vector<Facet> FacetsOf(const vantor::solver::Body& body, Model model);

/// Integral of (point - r) / |point - r|^3 over the facet: 4 pi times H of a unit charge.
Eigen::Vector3d UnitFieldOf(const Facet& facet, const Eigen::Vector3d& point);

/// Load on the target in the source's field. Both are charges (Coulomb) or both currents (Biot-Savart, Lorentz). The
/// source's field is a sum of closed forms over its facets; the target's facets are integrated over by a rule of seven
/// points, and the worst pieces are quartered.
/// @param accuracy  of the force relative to itself, and of the torque about the target's middle relative to force
///                  times size, as the change by quartering says
Load FacetLoad(const std::vector<Facet>& source, const std::vector<Facet>& target, Model model, double accuracy = 1e-5);

} // namespace references
