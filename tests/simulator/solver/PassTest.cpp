// When the solver stops, and what it says about it.
#include "tests/simulator/solver/Comparison.h"

#include <cmath>
#include <limits>

using Eigen::Vector3d;
using shapes::Block;
using vantor::solver::Load;
using vantor::solver::Options;
using vantor::solver::Pass;
using vantor::solver::Solution;
using vantor::solver::Solve;

namespace {

std::vector<vantor::solver::Body> NearPair() {
    Block source, target;
    source.magnetisation = {2e5, 0, 9e5};
    target.magnetisation = {0, 8e5, 3e5};
    target.rotation = shapes::Turn(0.3, {1, 2, 0});
    target.centre = {0.3, 0.2, 1.4};
    return {BodyOf("source", source), BodyOf("target", target)};
}

Options Wanting(double percentError, int maximumPasses = 15) {
    Options options;
    options.percentError = percentError;
    options.maximumPasses = maximumPasses;
    return options;
}

} // namespace

TEST(Passes, EndWhenThePercentErrorIsMet) {
    for (const double wanted : {10.0, 0.5, 0.01, 1e-4, 1e-6}) {
        const Solution solution = Solve(NearPair(), Wanting(wanted));
        EXPECT_TRUE(solution.converged) << wanted;
        EXPECT_LE(solution.passes.back().percentError, wanted);
        for (std::size_t i = 0; i + 1 < solution.passes.size(); ++i) {
            EXPECT_GT(solution.passes[i].percentError, wanted) << "it went on although it was good enough";
        }
    }
}

TEST(Passes, EndAtTheirMaximumAndSaySo) {
    const Solution solution = Solve(NearPair(), Wanting(1e-7, 1));
    EXPECT_FALSE(solution.converged);
    ASSERT_EQ(solution.passes.size(), 1u);
    EXPECT_EQ(solution.passes[0].number, 1);
    EXPECT_GT(solution.passes[0].percentError, 1e-7);
    const Solution two = Solve(NearPair(), Wanting(1e-12, 2));
    EXPECT_FALSE(two.converged);
    EXPECT_EQ(two.passes.size(), 2u);
}

TEST(Passes, AreCountedAndGetBetter) {
    const Solution solution = Solve(NearPair(), Wanting(1e-7));
    ASSERT_GE(solution.passes.size(), 2u);
    for (std::size_t i = 0; i < solution.passes.size(); ++i) {
        EXPECT_EQ(solution.passes[i].number, static_cast<int>(i) + 1);
        EXPECT_GT(solution.passes[i].evaluations, 0u);
        if (i > 0) {
            EXPECT_LT(solution.passes[i].percentError, solution.passes[i - 1].percentError);
        }
    }
}

/// What can't be had ends in a few passes, not in ever more halves.
TEST(Passes, EndWhenOnlyRoundingIsLeft) {
    const Solution solution = Solve(NearPair(), Wanting(1e-15, 1000));
    EXPECT_FALSE(solution.converged);
    EXPECT_LT(solution.passes.size(), 15u);
    std::size_t evaluations = 0;
    for (const Pass& pass : solution.passes) {
        evaluations += pass.evaluations;
    }
    EXPECT_LT(evaluations, 100000u);
}

TEST(Passes, EstimateErrorsThatAreNeverExceeded) {
    const Solution exact = Solve(NearPair(), Wanting(1e-9));
    for (const double wanted : {100.0, 10.0, 0.5, 0.01, 1e-4}) {
        const Solution solution = Solve(NearPair(), Wanting(wanted));
        for (std::size_t i = 0; i < 2; ++i) {
            const Load& load = solution.loads[i];
            EXPECT_LE((load.force - exact.loads[i].force).norm(), load.forceError + exact.loads[i].forceError);
            EXPECT_LE((load.torque - exact.loads[i].torque).norm(), load.torqueError + exact.loads[i].torqueError);
        }
    }
}

/// By symmetry only one component of each is left, or none at all.
TEST(Passes, DoNotRunAfterLoadsThatAreZero) {
    Block lower, upper;
    lower.magnetisation = {0, 0, 1e6};
    for (const Vector3d& centre : {Vector3d(0, 0, 1.01), Vector3d(0, 0, 2), Vector3d(0, 0, 30)}) {
        upper.centre = centre;
        upper.magnetisation = {0, 0, 1e6};
        const Solution pull = Solve({BodyOf("lower", lower), BodyOf("upper", upper)});
        EXPECT_TRUE(pull.converged);
        EXPECT_LE(pull.passes.size(), 3u);
    }
    // Four magnets of alternating poles on a square over one in the middle: no load on it at all.
    std::vector<Block> square;
    for (int i = 0; i < 4; ++i) {
        Block corner;
        corner.rotation = shapes::Turn(i * std::atan(1.0) * 2, Vector3d::UnitZ());
        corner.centre = corner.rotation * Vector3d(1.5, 0, 0);
        corner.magnetisation = {0, 0, i % 2 ? 1e6 : -1e6};
        square.push_back(corner);
    }
    upper.centre = {0, 0, 1.3};
    const Solution nothing = Solve({BodyOf("square", square), BodyOf("upper", upper)});
    EXPECT_TRUE(nothing.converged);
    EXPECT_LE(nothing.passes.size(), 3u);
    EXPECT_LE(nothing.loads[1].force.norm(), 1e-3 * 1e6);
}

TEST(Passes, GiveTheSameBitsWithAnyNumberOfThreads) {
    const std::vector<vantor::solver::Body> bodies{BodyOf("lower", shapes::CouplingHalf(8, 0, -0.0052)),
                                                   BodyOf("upper", shapes::CouplingHalf(8, 0.2, 0.0052))};
    Options options = Wanting(1e-4);
    options.threads = 1;
    const Solution alone = Solve(bodies, options);
    for (const int threads : {2, 3, 7}) {
        options.threads = threads;
        const Solution together = Solve(bodies, options);
        ASSERT_EQ(together.passes.size(), alone.passes.size());
        for (std::size_t i = 0; i < 2; ++i) {
            EXPECT_EQ(together.loads[i].force, alone.loads[i].force);
            EXPECT_EQ(together.loads[i].torque, alone.loads[i].torque);
            EXPECT_EQ(together.loads[i].forceError, alone.loads[i].forceError);
        }
    }
}

TEST(Passes, OfNothingAreOneAndFree) {
    for (const std::vector<vantor::solver::Body>& bodies :
         {std::vector<vantor::solver::Body>{}, std::vector<vantor::solver::Body>{{"empty", {}}, NearPair()[0]}}) {
        const Solution solution = Solve(bodies);
        EXPECT_TRUE(solution.converged);
        EXPECT_EQ(solution.passes.size(), 1u);
        EXPECT_EQ(solution.loads.size(), bodies.size());
        for (const Load& load : solution.loads) {
            EXPECT_TRUE(load.force.isZero(0) && load.torque.isZero(0));
        }
    }
}
