// What every solve with iron has to keep, whatever the numbers are.
#include "simulator/solver/Magnetostatics.h"
#include "tests/simulator/solver/Shapes.h"

#include <gtest/gtest.h>
#include <limits>

using Eigen::Vector3d;
using vantor::solver::Body;
using vantor::solver::Load;
using vantor::solver::MagnetizationCurve;
using vantor::solver::Options;
using vantor::solver::Solution;
using vantor::solver::SolveError;
using vantor::solver::Solver;

namespace {

/// A magnet of permeability 1.05 on an iron block, which it touches.
Body YokedMagnet(const std::string& name) {
    shapes::Block block;
    block.size = {0.01, 0.01, 0.006};
    block.magnetisation = {0, 0, 8e5};
    Body body = shapes::BodyOf(name, block);
    body.magnets[0].permeability = 1.05;
    block.size = {0.014, 0.012, 0.004};
    block.centre.z() = -0.005;
    block.magnetisation.setZero();
    body.magnets.push_back(shapes::BodyOf("yoke", block).magnets[0]);
    body.magnets[1].name = "yoke";
    body.magnets[1].permeability = 800;
    return body;
}

void Move(Body& body, const Vector3d& way) {
    for (auto& magnet : body.magnets) {
        magnet.pose.pretranslate(way);
    }
}

std::vector<Body> TwoYokedMagnets(double height, double aside) {
    std::vector<Body> bodies{YokedMagnet("lower"), YokedMagnet("upper")};
    Move(bodies[1], {aside, 0, height});
    return bodies;
}

void ExpectSameBits(const Solution& a, const Solution& b) {
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(a.loads[i].force, b.loads[i].force);
        EXPECT_EQ(a.loads[i].torque, b.loads[i].torque);
    }
    EXPECT_EQ(a.passes.size(), b.passes.size());
}

/// What a solve says that cannot be made; empty when it can.
std::string RefusalOf(const std::vector<Body>& bodies) {
    try {
        vantor::solver::Solve(bodies);
        return "";
    } catch (const SolveError& error) {
        return error.what();
    }
}

} // namespace

TEST(Permeable, BalancesAndPullsMoreThanWithoutIron) {
    std::vector<Body> bodies = TwoYokedMagnets(0.02, 0.001);
    const Solution solution = vantor::solver::Solve(bodies);
    EXPECT_TRUE(solution.converged);
    EXPECT_LE((solution.loads[0].force + solution.loads[1].force).norm(), 1e-12 * solution.loads[0].force.norm());
    EXPECT_LE((solution.loads[0].torque + solution.loads[1].torque).norm(), 1e-12 * solution.loads[0].force.norm());
    for (Body& body : bodies) {
        body.magnets.pop_back();
    }
    EXPECT_GT(solution.loads[0].force.z(), 1.2 * vantor::solver::Solve(bodies).loads[0].force.z());
}

/// What is between them is no surface of the iron.
TEST(Permeable, TakesIronInTwoPiecesAsOne) {
    std::vector<Body> bodies = TwoYokedMagnets(0.016, 0.001);
    const Load whole = vantor::solver::Solve(bodies).loads[0];
    for (Body& body : bodies) {
        shapes::Block half;
        half.size = {0.014, 0.006, 0.004};
        for (const double side : {-1.0, 1.0}) {
            half.centre = {0, side * half.size.y() / 2, -0.005};
            half.magnetisation.setZero();
            vantor::solver::Magnet piece = shapes::BodyOf("half", half).magnets[0];
            piece.permeability = 800;
            piece.pose = body.magnets[1].pose * piece.pose;
            body.magnets.push_back(piece);
        }
        body.magnets.erase(body.magnets.begin() + 1);
    }
    const Load pieces = vantor::solver::Solve(bodies).loads[0];
    EXPECT_LE((pieces.force - whole.force).norm(), 0.01 * whole.force.norm());
    EXPECT_LE((pieces.torque - whole.torque).norm(), 0.01 * 0.005 * whole.force.norm());
}

TEST(Permeable, LeavesIronAloneWithoutAField) {
    std::vector<Body> bodies = TwoYokedMagnets(0.02, 0.001);
    for (Body& body : bodies) {
        body.magnets.erase(body.magnets.begin());
    }
    const Solution solution = vantor::solver::Solve(bodies);
    EXPECT_TRUE(solution.converged);
    for (const Load& load : solution.loads) {
        EXPECT_EQ(load.force.norm(), 0);
        EXPECT_EQ(load.torque.norm(), 0);
    }
}

TEST(Permeable, GivesTheSameBitsWithAnyNumberOfThreads) {
    const std::vector<Body> bodies = TwoYokedMagnets(0.013, 0.002);
    Options options;
    options.percentError = 2;
    options.threads = 1;
    const Solution one = vantor::solver::Solve(bodies, options);
    for (const int threads : {2, 7}) {
        options.threads = threads;
        ExpectSameBits(vantor::solver::Solve(bodies, options), one);
    }
}

TEST(Permeable, GivesTheSameAfterOtherPosesAsAtOnce) {
    Options options;
    options.percentError = 2;
    const std::vector<Body> bodies = TwoYokedMagnets(0.013, 0.002);
    std::vector<Body> elsewhere = bodies;
    Move(elsewhere[1], {0.001, 0, -0.001});
    Solver kept;
    kept.Solve(bodies, options);
    kept.Solve(elsewhere, options);
    ExpectSameBits(kept.Solve(bodies, options), vantor::solver::Solve(bodies, options));
}

TEST(Permeable, RefusesImpossiblePermeabilities) {
    std::vector<Body> bodies = TwoYokedMagnets(0.02, 0);
    for (const double impossible :
         {0.5, -1.0, std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
        bodies[0].magnets[1].permeability = impossible;
        const std::string refusal = RefusalOf(bodies);
        EXPECT_NE(refusal.find("The relative permeability of iron"), std::string::npos) << refusal;
        EXPECT_NE(refusal.find("at least 0.9"), std::string::npos) << refusal;
    }
}

TEST(Permeable, RefusesIronThatFillsAMagnet) {
    std::vector<Body> bodies = TwoYokedMagnets(0.02, 0);
    bodies[0].magnets[1].pose.pretranslate(Vector3d(0, 0, 0.002));
    EXPECT_NE(RefusalOf(bodies).find("overlap"), std::string::npos) << RefusalOf(bodies);
}

TEST(Permeable, RefusesIronThatIsAFilm) {
    std::vector<Body> bodies = TwoYokedMagnets(0.02, 0);
    shapes::Block film;
    film.size = {0.1, 0.1, 1e-8};
    film.centre.z() = -0.1;
    film.magnetisation.setZero();
    bodies.push_back(shapes::BodyOf("film", film));
    bodies[2].magnets[0].permeability = 800;
    const std::string refusal = RefusalOf(bodies);
    EXPECT_EQ(refusal.find("iron \"film_magnet\" of body \"film\" is too thin for its size"), 0U) << refusal;
}

TEST(Permeable, WarnsOfIronBeyondTheStraightPartOfItsCurve) {
    std::vector<Body> bodies = TwoYokedMagnets(0.02, 0);
    const auto curve = [](double bend) {
        return std::make_shared<const MagnetizationCurve>(MagnetizationCurve{{{0, 0}, {bend / 1e-3, bend}, {1e6, 3}}});
    };
    bodies[0].magnets[1].curve = curve(1.8);
    const Solution linear = vantor::solver::Solve(bodies);
    EXPECT_TRUE(linear.warnings.empty());
    bodies[0].magnets[1].curve = curve(0.05);
    const Solution solution = vantor::solver::Solve(bodies);
    EXPECT_LT(solution.loads[0].force.z(), 0.95 * linear.loads[0].force.z());
    ASSERT_EQ(solution.warnings.size(), 1U);
    EXPECT_EQ(solution.warnings[0].find("iron \"yoke\" of body \"lower\" carries "), 0U) << solution.warnings[0];
}
