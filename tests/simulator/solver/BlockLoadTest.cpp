// Loads between two blocks against the closed form of the literature and against integrals of the closed block field.
#include "tests/simulator/solver/Comparison.h"

#include <cmath>

using Eigen::Vector3d;
using shapes::Block;
using shapes::Cube;

namespace {

const Vector3d alongZ(0, 0, 1e6);

void ExpectAsIntegrated(const Block& source, const Block& target) {
    const references::Load expected = references::SheetLoad(references::SheetsOf(source), references::SheetsOf(target));
    comparison::ExpectPair(source, target, expected, target.centre, target.size.maxCoeff());
}

} // namespace

TEST(References, AgreeAmongThemselves) {
    const Block source = Cube(Vector3d::Zero(), alongZ), target = Cube({0.003, 0.002, 0.012}, alongZ);
    const Vector3d closed = references::AkounYonnetForce(source, target);
    const Vector3d integrated = references::SheetLoad(references::SheetsOf(source), references::SheetsOf(target)).force;
    EXPECT_LE((closed - integrated).norm(), 1e-6 * closed.norm());
}

TEST(BlockLoad, AgreesWithAkounYonnetOnTheAxisDownToAHundredthOfTheEdge) {
    for (const double gap : {1e-4, 2e-4, 5e-4, 1e-3, 2e-3, 5e-3, 1e-2, 2e-2, 5e-2}) {
        SCOPED_TRACE(gap);
        const Block source = Cube(Vector3d::Zero(), alongZ), target = Cube({0, 0, 0.01 + gap}, alongZ);
        comparison::ExpectPair(source, target, {references::AkounYonnetForce(source, target), Vector3d::Zero()},
                               Vector3d::Zero(), 0.01);
    }
}

TEST(BlockLoad, AgreesWithAkounYonnetWhenOffset) {
    for (const double gap : {1e-4, 1e-3, 5e-3}) {
        for (const Vector3d& aside : {Vector3d(0.001, 0, 0), Vector3d(0.005, 0.002, 0), Vector3d(0.01, 0, 0),
                                      Vector3d(0.0101, 0.0101, 0), Vector3d(0.02, -0.015, 0)}) {
            SCOPED_TRACE(aside.transpose());
            Block source = Cube(Vector3d::Zero(), alongZ), target = Cube(aside + Vector3d(0, 0, 0.01 + gap), alongZ);
            source.size = {0.012, 0.008, 0.01};
            const vantor::solver::Solution solution =
                vantor::solver::Solve({BodyOf("source", source), BodyOf("target", target)});
            const Vector3d expected = references::AkounYonnetForce(source, target);
            EXPECT_TRUE(solution.converged);
            EXPECT_LE((solution.loads[1].force - expected).norm(), comparison::promisedAccuracy * expected.norm())
                << solution.loads[1].force.transpose() << " instead of " << expected.transpose();
        }
    }
}

TEST(BlockLoad, AgreesWithAkounYonnetSideBySide) {
    for (const double gap : {1e-4, 1e-3, 1e-2}) {
        const Block source = Cube(Vector3d::Zero(), alongZ), target = Cube({0.01 + gap, 0, 0}, alongZ);
        comparison::ExpectPair(source, target, {references::AkounYonnetForce(source, target), Vector3d::Zero()},
                               target.centre, 0.01);
    }
}

TEST(BlockLoad, HasTheTorqueOfParallelMagnetisations) {
    for (const double gap : {1e-4, 1e-3, 1e-2}) {
        ExpectAsIntegrated(Cube(Vector3d::Zero(), alongZ), Cube({0.004, 0.003, 0.01 + gap}, alongZ));
    }
}

TEST(BlockLoad, HoldsForPerpendicularMagnetisations) {
    for (const double gap : {1e-4, 1e-3, 1e-2}) {
        ExpectAsIntegrated(Cube(Vector3d::Zero(), alongZ), Cube({0, 0, 0.01 + gap}, {1e6, 0, 0}));
        ExpectAsIntegrated(Cube(Vector3d::Zero(), alongZ), Cube({0.004, 0.003, 0.01 + gap}, {0, 1e6, 0}));
        ExpectAsIntegrated(Cube(Vector3d::Zero(), alongZ), Cube({0.01 + gap, 0.002, 0.001}, {1e6, 0, 0}));
    }
}

TEST(BlockLoad, HoldsForSlantedMagnetisations) {
    ExpectAsIntegrated(Cube(Vector3d::Zero(), {3e5, -5e5, 7e5}), Cube({0.004, 0.003, 0.011}, {-6e5, 4e5, 5e5}));
}

TEST(BlockLoad, HoldsForTurnedBlocks) {
    for (const double angle : {0.001, 0.1, 0.7, 1.3}) {
        SCOPED_TRACE(angle);
        Block target = Cube({0.002, 0.001, 0.02}, alongZ);
        target.rotation = shapes::Turn(angle, {1, 0.4, 0.3});
        target.magnetisation = target.rotation * alongZ;
        ExpectAsIntegrated(Cube(Vector3d::Zero(), alongZ), target);
    }
}

/// Faces that are almost parallel are the hard case of formulas that treat parallel and inclined planes differently.
TEST(BlockLoad, HoldsForFacesThatAreAlmostParallel) {
    for (const double angle : {1e-12, 1e-9, 1e-7, 1e-5, 1e-3}) {
        SCOPED_TRACE(angle);
        Block target = Cube({0.002, 0.001, 0.0102}, alongZ);
        target.rotation = shapes::Turn(angle, {1, 0.4, 0.3});
        target.magnetisation = target.rotation * alongZ;
        ExpectAsIntegrated(Cube(Vector3d::Zero(), alongZ), target);
    }
}

TEST(BlockLoad, HoldsForAnEdgeThatComesNear) {
    Block target = Cube({0, 0, 0.005 + 0.005 * std::sqrt(2.0) + 1e-4}, alongZ);
    target.rotation = shapes::Turn(std::atan(1.0), {1, 0, 0});
    ExpectAsIntegrated(Cube(Vector3d::Zero(), alongZ), target);
}

TEST(BlockLoad, HoldsForThinPlatesAndLongBars) {
    Block plate = Cube(Vector3d::Zero(), alongZ), bar = Cube({0.006, 0.001, 0.0525}, alongZ);
    plate.size = {0.02, 0.03, 0.0005};
    bar.size = {0.004, 0.002, 0.1};
    ExpectAsIntegrated(plate, bar);
    bar.magnetisation = {1e6, 0, 0};
    ExpectAsIntegrated(plate, bar);
}

TEST(BlockLoad, DoesNotDependOnTheMesh) {
    const Block source = Cube(Vector3d::Zero(), alongZ), target = Cube({0.004, 0.003, 0.0105}, {5e5, 3e5, 8e5});
    const vantor::solver::Solution coarse = vantor::solver::Solve({BodyOf("source", source), BodyOf("target", target)});
    vantor::solver::Body fine = BodyOf("target", target);
    fine.magnets[0].mesh = shapes::Shared(shapes::Unshared(shapes::Finer(*fine.magnets[0].mesh, 3)));
    const vantor::solver::Solution finer = vantor::solver::Solve({BodyOf("source", source), fine});
    EXPECT_LE((coarse.loads[1].force - finer.loads[1].force).norm(), 1e-6 * coarse.loads[1].force.norm());
    EXPECT_EQ(coarse.passes[0].evaluations, finer.passes[0].evaluations) << "triangles of one face were not joined";
}

TEST(BlockLoad, DoesNotDependOnThePlaceInSpace) {
    Block source = Cube(Vector3d::Zero(), alongZ), target = Cube({0.004, 0.003, 0.0105}, {5e5, 3e5, 8e5});
    const vantor::solver::Solution here = vantor::solver::Solve({BodyOf("source", source), BodyOf("target", target)});
    const Vector3d far(100, -200, 300);
    source.centre += far;
    target.centre += far;
    const vantor::solver::Solution there = vantor::solver::Solve({BodyOf("source", source), BodyOf("target", target)});
    const Vector3d torque = there.loads[1].torque - far.cross(there.loads[1].force);
    EXPECT_LE((there.loads[1].force - here.loads[1].force).norm(), 1e-7 * here.loads[1].force.norm());
    EXPECT_LE((torque - here.loads[1].torque).norm(), 1e-7 * here.loads[1].torque.norm());
}
