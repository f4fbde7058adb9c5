#pragma once
// Two clusters of charge that are apart, by their moments.
//
// The potential between two charges at x and y from the centres of their clusters, R apart, is the sum over n of
// |y - x|^n P_n / R^(n+1). What goes beyond the moments' order is left out (L. Greengard, V. Rokhlin, 1987; J. Barnes,
// P. Hut, Nature 324 (1986) 446-449, for trees of clusters). The n-th term splits into multipoles of orders m and n -
// m of the clusters and is at most the sum of binomial(n, m) times the products of their sizes over R^(n+1): that is
// what the error is estimated from, for the first two orders left out, with a geometric series for those that follow.
#include "simulator/solver/Loads.h"
#include "simulator/solver/Moments.h"

namespace vantor::solver {

/// What estimates of a cluster's errors need. All of it stays when the cluster is turned.
struct ClusterExtent {
    /// Sum of the charges' sizes.
    double charge = 0;
    /// The greatest distance from the centre.
    double radius = 0;
    /// The mean distance from the centre, of the power momentOrder + 3, weighted by the charges' sizes.
    double spread = 0;
    /// Sizes of the multipoles of each order, in units of charge times radius^order.
    std::array<float, momentOrder + 3> multipoles{};
};

/// Sizes of errors.
struct ErrorSizes {
    double force;
    /// About the centre of either cluster.
    double torque;
};

/// What the moments leave out. Infinite for clusters whose spheres meet.
/// @param distance  of the centres
ErrorSizes MomentErrors(const ClusterExtent& a, const ClusterExtent& b, double distance);

/// Load on a target from a source by their moments, without mu0/(4 pi).
/// @param offset  of the target's centre from the source's
/// @return the torque about the target's centre
Wrench WrenchOf(const Moments& source, const Moments& target, const Eigen::Vector3d& offset);

} // namespace vantor::solver
