// Magnets as they come out of CAD programs: some 2,000 triangles in no order, curved faces, fillets and teeth.
#include "tests/simulator/solver/Comparison.h"
#include "tests/simulator/solver/Facets.h"
#include "tests/simulator/solver/MeshCases.h"

#include <algorithm>

using Eigen::Vector3d;
using meshes::Place;
using vantor::solver::Body;
using vantor::solver::Load;
using vantor::solver::Options;
using vantor::solver::Solution;
using vantor::solver::Solve;
using vantor::solver::Solver;

namespace {

constexpr double wantedAccuracy = 5e-3;
constexpr double size = 0.01;

void ExpectSame(const Solution& one, const Solution& other) {
    ASSERT_EQ(one.passes.size(), other.passes.size());
    ASSERT_EQ(one.loads.size(), other.loads.size());
    for (std::size_t i = 0; i < one.passes.size(); ++i) {
        EXPECT_EQ(one.passes[i].evaluations, other.passes[i].evaluations);
        EXPECT_EQ(one.passes[i].percentError, other.passes[i].percentError);
    }
    for (std::size_t i = 0; i < one.loads.size(); ++i) {
        EXPECT_EQ(one.loads[i].force, other.loads[i].force);
        EXPECT_EQ(one.loads[i].torque, other.loads[i].torque);
        EXPECT_EQ(one.loads[i].forceError, other.loads[i].forceError);
        EXPECT_EQ(one.loads[i].torqueError, other.loads[i].torqueError);
    }
}

/// Two loads that both are what their own estimates say.
void ExpectWithinEstimates(const Load& one, const Load& other) {
    EXPECT_LE((one.force - other.force).norm(), one.forceError + other.forceError);
    EXPECT_LE((one.torque - other.torque).norm(), one.torqueError + other.torqueError);
}

std::vector<Body> RotorInARing(double degrees = 20) {
    return {meshes::Body("stator", meshes::Small("ring"), {1.2, 0, 0}),
            meshes::Body("rotor", meshes::Small("rotor"), {1.2, 0, 0}, Place({0, 0, 2}, degrees))};
}

/// At default settings; solved once for all tests.
const Solution& SolvedRotorInARing() {
    static const Solution solution = Solve(RotorInARing());
    return solution;
}

/// Balls, which take less time than what comes out of a file.
meshes::SharedMesh BallOf(double radius) {
    return meshes::Scaled(shapes::Shared(shapes::Ball(3)), radius);
}

} // namespace

/// The reference values of the cases come from it.
TEST(FacetReference, IsTheClosedFormForBlocks) {
    shapes::Block source, target;
    source.size = {0.01, 0.02, 0.015};
    source.magnetisation = target.magnetisation = {0, 0, 1e6};
    target.size = {0.008, 0.012, 0.01};
    target.centre = {0.003, 0.002, 0.0145};
    const Vector3d expected = references::AkounYonnetForce(source, target);
    for (const references::Model model : {references::Model::Charges, references::Model::Currents}) {
        const references::Load load =
            references::FacetLoad(references::FacetsOf(BodyOf("source", source), model),
                                  references::FacetsOf(BodyOf("target", target), model), model);
        EXPECT_LE((load.force - expected).norm(), 1e-7 * expected.norm());
    }
}

TEST(MeshLoads, AreWithinTheWantedErrorAndTheirEstimates) {
    for (const meshes::Case& one : meshes::Cases()) {
        SCOPED_TRACE(one.name);
        const Solution solution = Solve(one.bodies);
        EXPECT_TRUE(solution.converged);
        const Vector3d centre = one.bodies[1].magnets[0].pose.translation();
        comparison::ExpectLoad(solution.loads[1], one.load, centre, size, wantedAccuracy);
    }
}

TEST(MeshLoads, CancelBetweenTheBodies) {
    const Load &stator = SolvedRotorInARing().loads[0], &rotor = SolvedRotorInARing().loads[1];
    EXPECT_LE((stator.force + rotor.force).norm(), 1e-12 * rotor.forceScale);
    EXPECT_LE((stator.torque + rotor.torque).norm(), 1e-12 * rotor.torqueScale);
}

TEST(MeshLoads, AreTheSameBitsWithAnyNumberOfThreads) {
    for (const int threads : {1, 2, 7}) {
        Options options;
        options.threads = threads;
        ExpectSame(Solve(RotorInARing(), options), SolvedRotorInARing());
    }
}

TEST(MeshLoads, TurnWithTheBodies) {
    const Eigen::Isometry3d move = Place({70, -40, 25}, 63, {2, -1, 3});
    std::vector<Body> bodies = RotorInARing();
    for (Body& body : bodies) {
        body.magnets[0].pose = move * body.magnets[0].pose;
    }
    Load expected = SolvedRotorInARing().loads[1];
    expected.force = move.linear() * expected.force;
    expected.torque = move.linear() * expected.torque + move.translation().cross(expected.force);
    ExpectWithinEstimates(Solve(bodies).loads[1], expected);
}

TEST(MeshLoads, DoNotDependOnTheOrderOfTheTriangles) {
    std::vector<Body> shuffled = RotorInARing();
    for (Body& body : shuffled) {
        body.magnets[0].mesh = meshes::Shuffled(body.magnets[0].mesh);
    }
    ExpectWithinEstimates(Solve(shuffled).loads[1], SolvedRotorInARing().loads[1]);
}

TEST(MeshLoads, OfAKeptSolverAreThoseOfANewOneToTheLastBit) {
    Solver kept;
    kept.Solve(RotorInARing(0));
    ExpectSame(kept.Solve(RotorInARing(25)), Solve(RotorInARing(25)));
    ExpectSame(kept.Solve(RotorInARing()), SolvedRotorInARing());
}

/// What a solver knows of a mesh goes with the mesh and its magnetisation, and not with the body or the address.
TEST(MeshLoads, OfAKeptSolverFollowChangedMagnetsAndMeshes) {
    Solver kept;
    const auto expectAsNew = [&kept](const std::vector<Body>& bodies) {
        ExpectSame(kept.Solve(bodies), Solve(bodies));
    };
    std::vector<Body> bodies{meshes::Body("large", BallOf(0.02), {0, 0, 1}),
                             meshes::Body("small", BallOf(0.01), {1, 0, 0}, Place({5, 0, 31}))};
    expectAsNew(bodies);
    bodies[1].magnets[0].magnetisation = {0, 2e5, 7e5};
    expectAsNew(bodies);
    std::swap(bodies[0], bodies[1]);
    expectAsNew(bodies);
    for (const double radius : {0.009, 0.008}) { // each at the address of the one before, likely
        bodies[0].magnets[0].mesh = nullptr;
        bodies[0].magnets[0].mesh = BallOf(radius);
        expectAsNew(bodies);
    }
    bodies[1].magnets[0].mesh = bodies[0].magnets[0].mesh;
    expectAsNew(bodies);
}
