#pragma once
// How the tests compare loads: the promise is a thousandth at default settings.
#include "tests/simulator/solver/References.h"

#include <Eigen/Geometry>
#include <algorithm>
#include <gtest/gtest.h>

namespace comparison {

constexpr double promisedAccuracy = 1e-3;
/// What the references may be off by, relative to the load.
constexpr double referenceAccuracy = 2e-6;

/// Compares force and torque about `centre`. A torque much smaller than force times `size` is compared to a twentieth
/// of that product, since it may be 0 by symmetry.
inline void ExpectLoad(const vantor::solver::Load& solved, const references::Load& expected,
                       const Eigen::Vector3d& centre, double size, double accuracy = promisedAccuracy) {
    const double force = expected.force.norm();
    const Eigen::Vector3d torque = expected.torque - centre.cross(expected.force);
    const Eigen::Vector3d solvedTorque = solved.torque - centre.cross(solved.force);
    const double torqueScale = std::max(torque.norm(), 0.05 * size * force);
    EXPECT_LE((solved.force - expected.force).norm(), accuracy * force)
        << "force " << solved.force.transpose() << " instead of " << expected.force.transpose();
    EXPECT_LE((solvedTorque - torque).norm(), accuracy * torqueScale)
        << "torque " << solvedTorque.transpose() << " instead of " << torque.transpose();
    EXPECT_LE((solved.force - expected.force).norm(), solved.forceError + referenceAccuracy * force)
        << "the force's error is larger than its estimate";
    EXPECT_LE((solved.torque - expected.torque).norm(),
              solved.torqueError + referenceAccuracy * (expected.torque.norm() + size * force))
        << "the torque's error is larger than its estimate";
}

/// Solves for two bodies at default settings and compares the load on the second one.
template <class A, class B>
void ExpectPair(const A& source, const B& target, const references::Load& expected, const Eigen::Vector3d& centre,
                double size) {
    const vantor::solver::Solution solution =
        vantor::solver::Solve({shapes::BodyOf("source", source), shapes::BodyOf("target", target)});
    EXPECT_TRUE(solution.converged);
    ExpectLoad(solution.loads[1], expected, centre, size);
}

} // namespace comparison
