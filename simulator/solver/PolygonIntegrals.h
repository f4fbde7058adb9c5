#pragma once
// Closed-form integrals over a flat polygon, seen from a point x. With y = r - x for the points r of the polygon and
// R = |y|, they are integrals of 1/R, y/R, y/R^3 and y y/R^3.
//
// Source: D. R. Wilton, S. M. Rao, A. W. Glisson, D. H. Schaubert, O. M. Al-Bundak, C. M. Butler, "Potential integrals
// for uniform and linear source distributions on polygonal and polyhedral domains", IEEE Transactions on Antennas and
// Propagation 32 (1984) 276-281, equations (5), (6) and (34); the second-order one follows from them by the divergence
// theorem in the polygon's plane.
#include "simulator/solver/Polygon.h"

namespace vantor::solver {

/// Solid angle under which x sees the polygon: the integral of n.(x - r)/R^3, positive on the side of the normal.
/// In the polygon's plane it is 0.
double SolidAngle(const Polygon& polygon, const Eigen::Vector3d& x);

/// Integral of (x - r)/R^3: 4 pi times the field H at x of a unit surface charge (A/m) on the polygon.
Eigen::Vector3d ChargeField(const Polygon& polygon, const Eigen::Vector3d& x);

/// The integrals that a point on an edge of another polygon asks for.
struct PolygonIntegrals {
    /// Integral of 1/R.
    double potential = 0;
    /// Integral of y/R.
    Eigen::Vector3d first;
    /// Integral of y.w/R^3.
    double flux = 0;
    /// Integral of y (y.w)/R^3.
    Eigen::Vector3d tension;
};

/// @param w  the vector that the last two integrals are contracted with
PolygonIntegrals IntegralsAt(const Polygon& polygon, const Eigen::Vector3d& x, const Eigen::Vector3d& w);

} // namespace vantor::solver
