// Magnets of many triangles that are close to each other.
#include "tests/simulator/solver/Shapes.h"
#include "tests/support/Complaint.h"

#include <gtest/gtest.h>

using shapes::Prism;
using vantor::solver::Body;
using vantor::solver::Solve;
using vantor::solver::SolveError;

namespace {

Body RingOf(const std::string& name, double innerRadius, double radius, double height) {
    Prism ring;
    ring.innerRadius = innerRadius;
    ring.radius = radius;
    ring.height = height;
    ring.sides = 192;
    return {name, {{name + "_magnet", shapes::Shared(shapes::Finer(MeshOf(ring), 1)), ring.magnetisation}}};
}

std::string RefusalOf(const std::vector<Body>& bodies) {
    return fake::ComplaintOf<SolveError>([&] { Solve(bodies); });
}

} // namespace

TEST(SeparationOfLargeMeshes, RefusesARingInTheWallOfAnother) {
    EXPECT_EQ(RefusalOf({RingOf("rotor", 0.0401, 0.0499, 0.0098), RingOf("stator", 0.04, 0.05, 0.01)}),
              "magnet \"rotor_magnet\" of body \"rotor\" lies inside magnet \"stator_magnet\" of body \"stator\"; move "
              "one of them out.");
}

TEST(SeparationOfLargeMeshes, RefusesRingsThatCutEachOther) {
    std::vector<Body> bodies{RingOf("rotor", 0.03, 0.0399, 0.01), RingOf("stator", 0.04, 0.05, 0.01)};
    bodies[0].magnets[0].pose.linear() = shapes::Turn(0.1, {1, 0, 0});
    EXPECT_EQ(RefusalOf(bodies),
              "The surfaces of magnet \"rotor_magnet\" of body \"rotor\" and magnet \"stator_magnet\" of "
              "body \"stator\" touch or cut each other; leave a gap between bodies.");
}
