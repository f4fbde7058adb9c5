// What the solver refuses, and what it may be given.
#include "tests/simulator/solver/Shapes.h"
#include "tests/support/Complaint.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

using Eigen::Vector3d;
using shapes::Block;
using testing::HasSubstr;
using vantor::solver::Body;
using vantor::solver::Options;
using vantor::solver::Solve;
using vantor::solver::SolveError;

namespace {

Block UnitCube(const Vector3d& centre) {
    Block block;
    block.centre = centre;
    return block;
}

std::vector<Body> Pair(const Block& second) {
    return {BodyOf("rotor", UnitCube({0, 0, 0})), BodyOf("stator", second)};
}

std::string ErrorOf(const std::vector<Body>& bodies, const Options& options = {}) {
    return fake::ComplaintOf<SolveError>([&] { Solve(bodies, options); });
}

void ExpectMeeting(const std::vector<Body>& bodies) {
    const std::string error = ErrorOf(bodies);
    EXPECT_THAT(error, HasSubstr("magnet \"rotor_magnet\" of body \"rotor\""));
    EXPECT_THAT(error, HasSubstr("magnet \"stator_magnet\" of body \"stator\""));
}

} // namespace

TEST(Separation, RefusesCoincidentMagnets) {
    ExpectMeeting(Pair(UnitCube({0, 0, 0})));
}

TEST(Separation, RefusesOverlap) {
    ExpectMeeting(Pair(UnitCube({0.5, 0.5, 0.5})));
    ExpectMeeting(Pair(UnitCube({0, 0, 0.999999})));
    ExpectMeeting(Pair(UnitCube({0.3, 0, 0})));
}

TEST(Separation, RefusesABarThroughAPlate) {
    Block bar = UnitCube({0, 0, 0});
    bar.size = {0.1, 0.1, 5};
    ExpectMeeting(Pair(bar));
    bar.rotation = shapes::Turn(0.4, {1, 1, 0});
    ExpectMeeting(Pair(bar));
}

TEST(Separation, RefusesContactOfFacesEdgesAndCorners) {
    ExpectMeeting(Pair(UnitCube({0, 0, 1})));
    ExpectMeeting(Pair(UnitCube({0.4, 0.3, 1})));
    ExpectMeeting(Pair(UnitCube({0, 1, 1})));
    ExpectMeeting(Pair(UnitCube({1, 1, 1})));
    Block onEdge = UnitCube({0, 0, 0.5 + std::sqrt(0.5)});
    onEdge.rotation = shapes::Turn(std::atan(1.0), {1, 0, 0});
    ExpectMeeting(Pair(onEdge));
}

TEST(Separation, SeesContactThroughTheRoundingOfAPose) {
    const Eigen::Matrix3d turn = shapes::Turn(0.7, {1, 2, 3});
    std::vector<Body> bodies = Pair(UnitCube({0, 0, 1}));
    for (Body& body : bodies) {
        for (Vector3d& vertex : shapes::OwnMesh(body.magnets[0]).vertices) {
            vertex = turn * vertex + Vector3d(0.1, 0.2, 0.3);
        }
    }
    ExpectMeeting(bodies);
}

TEST(Separation, RefusesAMagnetInsideAnother) {
    Block inner = UnitCube({0.1, 0.1, 0.1});
    inner.size = Vector3d::Constant(0.2);
    EXPECT_EQ(ErrorOf(Pair(inner)),
              "magnet \"stator_magnet\" of body \"stator\" lies inside magnet \"rotor_magnet\" of "
              "body \"rotor\"; move one of them out.");
    std::vector<Body> swapped = Pair(inner);
    std::swap(swapped[0], swapped[1]);
    EXPECT_THAT(ErrorOf(swapped), HasSubstr("stator\" lies inside"));
}

TEST(Separation, AllowsSmallGapsAndMagnetsInABore) {
    EXPECT_EQ(ErrorOf(Pair(UnitCube({0, 0, 1 + 1e-6}))), "none");
    shapes::Prism ring;
    ring.radius = 4;
    ring.innerRadius = 2;
    EXPECT_EQ(ErrorOf({BodyOf("rotor", UnitCube({0, 0, 0})), BodyOf("stator", ring)}), "none");
}

TEST(Separation, AllowsContactWithinABodyAndWithThingsThatAreNoMagnets) {
    Block plain = UnitCube({0.2, 0, 0});
    plain.magnetisation.setZero();
    EXPECT_EQ(ErrorOf(Pair(plain)), "none");
    EXPECT_EQ(ErrorOf({shapes::BodyOf("stack", {UnitCube({0, 0, 0}), UnitCube({0, 0, 1})})}), "none");
}

TEST(Input, RefusesValuesThatAreNotFinite) {
    std::vector<Body> bodies = Pair(UnitCube({0, 0, 2}));
    shapes::OwnMesh(bodies[1].magnets[0]).vertices[3].y() = std::numeric_limits<double>::quiet_NaN();
    EXPECT_THAT(ErrorOf(bodies), HasSubstr("Vertex 3 of magnet \"stator_magnet\" of body \"stator\" is not finite"));
    bodies = Pair(UnitCube({0, 0, 2}));
    bodies[0].magnets[0].magnetisation.x() = std::numeric_limits<double>::infinity();
    EXPECT_THAT(ErrorOf(bodies), HasSubstr("magnetisation of magnet \"rotor_magnet\""));
}

TEST(Input, RefusesWhatNumbersCannotHold) {
    std::vector<Body> bodies = Pair(UnitCube({0, 0, 2}));
    for (Body& body : bodies) {
        body.magnets[0].magnetisation *= 1e300;
    }
    EXPECT_THAT(ErrorOf(bodies), HasSubstr("beyond what numbers can hold"));
    bodies = Pair(UnitCube({0, 0, 2}));
    for (Vector3d& vertex : shapes::OwnMesh(bodies[1].magnets[0]).vertices) {
        vertex.z() += 1e200;
    }
    EXPECT_THAT(ErrorOf(bodies), HasSubstr("encloses no volume"));
}

TEST(Input, RefusesCornersOutOfRange) {
    std::vector<Body> bodies = Pair(UnitCube({0, 0, 2}));
    shapes::OwnMesh(bodies[1].magnets[0]).triangles[2][1] = 8;
    EXPECT_THAT(ErrorOf(bodies), HasSubstr("Triangle 2 of magnet \"stator_magnet\" of body \"stator\" names vertex 8"));
    shapes::OwnMesh(bodies[1].magnets[0]).triangles[2][1] = -1;
    EXPECT_THAT(ErrorOf(bodies), HasSubstr("names vertex -1"));
}

TEST(Input, RefusesOpenMeshesAndThoseTurnedInsideOut) {
    std::vector<Body> bodies = Pair(UnitCube({0, 0, 2}));
    shapes::OwnMesh(bodies[0].magnets[0]).triangles.pop_back();
    EXPECT_THAT(ErrorOf(bodies), HasSubstr("magnet \"rotor_magnet\" of body \"rotor\" is not closed"));
    bodies = Pair(UnitCube({0, 0, 2}));
    for (auto& triangle : shapes::OwnMesh(bodies[0].magnets[0]).triangles) {
        std::swap(triangle[0], triangle[1]);
    }
    EXPECT_THAT(ErrorOf(bodies), HasSubstr("inside out"));
    EXPECT_THROW(vantor::solver::FieldEvaluator{bodies}, SolveError);
}

TEST(Input, RefusesOptionsOutOfRange) {
    Options options;
    options.percentError = 0;
    EXPECT_THAT(ErrorOf({}, options), HasSubstr("percent error"));
    options.percentError = std::numeric_limits<double>::quiet_NaN();
    EXPECT_THAT(ErrorOf({}, options), HasSubstr("percent error"));
    options = {};
    options.maximumPasses = 0;
    EXPECT_THAT(ErrorOf({}, options), HasSubstr("maximum number of passes is 0"));
    options = {};
    options.threads = -1;
    EXPECT_THAT(ErrorOf({}, options), HasSubstr("threads"));
}

TEST(Input, MayHoldTrianglesWithoutAreaAndCornersThatNobodyUses) {
    std::vector<Body> plain = Pair(UnitCube({0.2, 0.1, 1.5})), odd = plain;
    auto& mesh = shapes::OwnMesh(odd[1].magnets[0]);
    mesh.triangles.push_back({0, 0, 1});
    mesh.triangles.push_back({2, 2, 2});
    mesh.vertices.push_back({9, 9, 9});
    const auto expected = Solve(plain).loads[1].force;
    EXPECT_LE((Solve(odd).loads[1].force - expected).norm(), 1e-9 * expected.norm());
}

TEST(Input, MayHoldMagnetsWithoutMesh) {
    std::vector<Body> bodies = Pair(UnitCube({0, 0, 2}));
    bodies.push_back({"nothing", {{"no_mesh", {}, Vector3d::UnitX()}}});
    const auto solution = Solve(bodies);
    EXPECT_TRUE(solution.loads[2].force.isZero(0));
    EXPECT_FALSE(solution.loads[1].force.isZero(0));
}
