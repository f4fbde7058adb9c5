// More than two magnets: superposition, the axial coupling over its angle, action and reaction.
#include "tests/simulator/solver/Comparison.h"
#include "tests/simulator/solver/Constants.h"

#include <array>
#include <cmath>
#include <random>

using Eigen::Vector3d;
using shapes::Block;
using shapes::Cube;

using references::pi;

TEST(Systems, OfThreeBodiesAreTheSumOfTheirPairs) {
    std::vector<Block> cubes{Cube({0, 0, 0}, {0, 0, 1e6}), Cube({0.011, 0.002, 0}, {7e5, 0, 7e5}),
                             Cube({0.004, 0.003, 0.0102}, {0, -9e5, 2e5})};
    cubes[2].rotation = shapes::Turn(0.3, Vector3d::UnitZ());
    const vantor::solver::Solution solution =
        vantor::solver::Solve({BodyOf("a", cubes[0]), BodyOf("b", cubes[1]), BodyOf("c", cubes[2])});
    EXPECT_TRUE(solution.converged);
    for (std::size_t i = 0; i < 3; ++i) {
        references::Load expected;
        for (std::size_t j = 0; j < 3; ++j) {
            if (i != j) {
                expected += references::SheetLoad(references::SheetsOf(cubes[j]), references::SheetsOf(cubes[i]));
            }
        }
        comparison::ExpectLoad(solution.loads[i], expected, cubes[i].centre, 0.01);
    }
}

TEST(Systems, OfFiveStackedPlatesAreTheSumOfTheirPairs) {
    std::vector<vantor::solver::Body> bodies;
    std::vector<Block> plates;
    for (int i = 0; i < 5; ++i) {
        plates.push_back(Cube({0.001 * i, 0, 0.003 * i}, {0, 0, i % 2 ? -1e6 : 8e5 + 1e4 * i * i}));
        plates.back().size.z() = 0.002;
        bodies.push_back(BodyOf("plate", plates.back()));
    }
    const vantor::solver::Solution solution = vantor::solver::Solve(bodies);
    for (std::size_t i = 0; i < plates.size(); ++i) {
        Vector3d expected = Vector3d::Zero();
        for (std::size_t j = 0; j < plates.size(); ++j) {
            if (i != j) {
                expected += references::AkounYonnetForce(plates[j], plates[i]);
            }
        }
        EXPECT_LE((solution.loads[i].force - expected).norm(), comparison::promisedAccuracy * expected.norm());
    }
}

/// Turning the coupling by one block and swapping poles changes nothing, so one block stands for all eight.
TEST(Systems, AxialCouplingOverItsAngle) {
    constexpr int blocks = 8;
    constexpr double gap = 0.002;
    const std::vector<Block> lower = shapes::CouplingHalf(blocks, 0, -0.005 - gap / 2);
    for (int step = 0; step <= 8; ++step) {
        const double angle = step * pi / 32;
        SCOPED_TRACE(angle);
        const std::vector<Block> upper = shapes::CouplingHalf(blocks, angle, 0.005 + gap / 2);
        const references::Load one =
            references::SheetLoad(references::SheetsOf(lower), references::SheetsOf(upper[0]), 1e-6);
        references::Load expected;
        expected.force.z() = blocks * one.force.z();
        expected.torque.z() = blocks * one.torque.z();
        const vantor::solver::Solution solution =
            vantor::solver::Solve({BodyOf("lower", lower), BodyOf("upper", upper)});
        EXPECT_TRUE(solution.converged);
        const vantor::solver::Load& load = solution.loads[1];
        // At standstill the torque is 0, and half-way between two standstills the force.
        const double pull = 300, grip = 4;
        EXPECT_LE((load.force - expected.force).norm(),
                  comparison::promisedAccuracy * std::max(expected.force.norm(), 0.01 * pull));
        EXPECT_LE((load.torque - expected.torque).norm(),
                  comparison::promisedAccuracy * std::max(expected.torque.norm(), 0.01 * grip));
    }
}

TEST(Systems, ActionAndReactionCancel) {
    const vantor::solver::Solution solution = vantor::solver::Solve(
        {BodyOf("lower", shapes::CouplingHalf(8, 0, -0.006)), BodyOf("upper", shapes::CouplingHalf(8, 0.2, 0.006)),
         BodyOf("third", Cube({0.01, 0.02, 0.05}, {1e6, 2e5, 0}))});
    Vector3d force = Vector3d::Zero(), torque = Vector3d::Zero();
    for (const vantor::solver::Load& load : solution.loads) {
        force += load.force;
        torque += load.torque;
    }
    EXPECT_LE(force.norm(), 1e-12 * solution.loads[0].force.norm());
    EXPECT_LE(torque.norm(), 1e-12 * solution.loads[0].torque.norm());
}

/// The pair is integrated from one side only; which side, depends on the order of the bodies.
TEST(Systems, BothSidesOfAPairGiveTheSameLoadWithinTheEstimates) {
    Block source = Cube({0, 0, 0}, {3e5, 2e5, 9e5}), target = Cube({0.003, -0.002, 0.013}, {0, 7e5, 5e5});
    target.rotation = shapes::Turn(0.5, {1, 1, 0});
    target.size = {0.008, 0.02, 0.004};
    for (const double percentError : {50.0, 0.5, 1e-3, 1e-6}) {
        SCOPED_TRACE(percentError);
        vantor::solver::Options options;
        options.percentError = percentError;
        const vantor::solver::Load one =
            vantor::solver::Solve({BodyOf("source", source), BodyOf("target", target)}, options).loads[1];
        const vantor::solver::Load other =
            vantor::solver::Solve({BodyOf("target", target), BodyOf("source", source)}, options).loads[0];
        EXPECT_LE((one.force - other.force).norm(), one.forceError + other.forceError);
        EXPECT_LE((one.torque - other.torque).norm(), one.torqueError + other.torqueError);
    }
}

/// Blocks of very different shapes and sizes, near and far, parallel, almost parallel and turned: default settings
/// against the other side of the pair at the highest accuracy.
TEST(Systems, OfRandomPairsKeepThePromise) {
    std::mt19937 generator(20);
    const auto number = [&] { return 2 * static_cast<double>(generator()) / 4294967295.0 - 1; };
    const auto vector = [&] { return Vector3d(number(), number(), number()); };
    const auto spread = [&](double decades) { return std::pow(10, decades * number()); };
    int compared = 0;
    while (compared < 80) {
        std::array<Block, 2> pair;
        for (Block& block : pair) {
            block.size = spread(1) * Vector3d(spread(0.7), spread(0.7), spread(0.7));
            block.magnetisation = 1e6 * vector();
        }
        if (compared % 3 > 0) {
            pair[1].rotation = shapes::Turn(compared % 3 == 1 ? std::pow(10, -6 * std::abs(number())) : 3, vector());
        }
        pair[1].centre = vector().normalized() * (pair[0].size.norm() + pair[1].size.norm()) / 2 * spread(0.7);
        vantor::solver::Options exactly;
        exactly.percentError = 1e-6;
        try {
            const vantor::solver::Load exact =
                vantor::solver::Solve({BodyOf("b", pair[1]), BodyOf("a", pair[0])}, exactly).loads[0];
            const vantor::solver::Load load =
                vantor::solver::Solve({BodyOf("a", pair[0]), BodyOf("b", pair[1])}).loads[1];
            const double force = (load.force - exact.force).norm();
            EXPECT_LE(force, comparison::promisedAccuracy * exact.force.norm()) << "pair " << compared;
            EXPECT_LE(force, load.forceError + exact.forceError) << "pair " << compared;
            EXPECT_LE((load.torque - exact.torque).norm(), load.torqueError + exact.torqueError) << "pair " << compared;
            ++compared;
        } catch (const vantor::solver::SolveError&) {
            continue; // they happen to overlap
        }
    }
}

TEST(Systems, ForcesInsideABodyDoNotCount) {
    const std::vector<Block> touching{Cube({0, 0, 0}, {0, 0, 1e6}), Cube({0, 0, 0.01}, {0, 0, 1e6})};
    const vantor::solver::Solution solution = vantor::solver::Solve({BodyOf("stack", touching)});
    EXPECT_TRUE(solution.converged);
    EXPECT_TRUE(solution.loads[0].force.isZero(0));
    EXPECT_TRUE(solution.loads[0].torque.isZero(0));
}
