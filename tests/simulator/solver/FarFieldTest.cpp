// Distant magnets: a load is then the tiny rest of four nearly cancelling forces between poles.
#include "tests/simulator/solver/Comparison.h"

using Eigen::Vector3d;
using shapes::Block;

namespace {

struct Distant {
    Block source, target;
    references::Load dipoles;
};

Distant At(double edges) {
    Distant pair;
    pair.source.size = pair.target.size = Vector3d::Constant(0.01);
    pair.source.magnetisation = Vector3d(3e5, -2e5, 9e5);
    pair.target.magnetisation = Vector3d(-4e5, 7e5, 5e5);
    pair.target.rotation = shapes::Turn(0.6, {1, 2, 3});
    pair.source.centre = Vector3d(0.02, 0.01, -0.03);
    pair.target.centre = pair.source.centre + 0.01 * edges * Vector3d(0.3, 0.5, 0.9).normalized();
    pair.dipoles = references::DipoleLoad(pair.source.centre, 1e-6 * pair.source.magnetisation, pair.target.centre,
                                          1e-6 * pair.target.magnetisation);
    return pair;
}

} // namespace

/// A cube has no quadrupole, and the next order falls with the fourth power of the distance.
TEST(FarField, TendsToThatOfDipoles) {
    for (const double edges : {10.0, 20.0, 30.0, 50.0, 100.0, 1000.0, 1e5}) {
        SCOPED_TRACE(edges);
        const Distant pair = At(edges);
        const vantor::solver::Solution solution =
            vantor::solver::Solve({BodyOf("source", pair.source), BodyOf("target", pair.target)});
        EXPECT_TRUE(solution.converged);
        const Vector3d expectedTorque = pair.dipoles.torque - pair.target.centre.cross(pair.dipoles.force);
        const vantor::solver::Load& load = solution.loads[1];
        const Vector3d torque = load.torque - pair.target.centre.cross(load.force);
        const double allowed = 1e-3;
        EXPECT_LE((load.force - pair.dipoles.force).norm(), allowed * pair.dipoles.force.norm());
        EXPECT_LE((torque - expectedTorque).norm(), allowed * expectedTorque.norm());
    }
}

TEST(FarField, MeetsTheNearFieldWhereTheyChange) {
    for (double edges = 12; edges < 24; edges += 1) {
        SCOPED_TRACE(edges);
        const Distant pair = At(edges);
        const references::Load expected =
            references::SheetLoad(references::SheetsOf(pair.source), references::SheetsOf(pair.target), 1e-9);
        comparison::ExpectPair(pair.source, pair.target, expected, pair.target.centre, 0.01);
    }
}

/// Blocks and bars have a strong next order, which the dipoles must bring along.
TEST(FarField, KnowsTheShapeOfTheMagnets) {
    Block bar, plate;
    bar.size = {0.002, 0.002, 0.04};
    bar.magnetisation = {0, 0, 1e6};
    plate.size = {0.03, 0.02, 0.001};
    plate.magnetisation = {0, 3e5, 9e5};
    for (const double distance : {0.3, 0.45, 0.6}) {
        plate.centre = distance * Vector3d(0.3, 0.1, 0.9).normalized();
        const references::Load expected =
            references::SheetLoad(references::SheetsOf(bar), references::SheetsOf(plate), 1e-10);
        comparison::ExpectPair(bar, plate, expected, plate.centre, 0.03);
    }
}

TEST(FarField, OfMagnetsThatCancelInPairsIsRefined) {
    // Two opposite magnets in each body: what is left far away is the difference of differences.
    Block up, down;
    up.size = down.size = Vector3d::Constant(0.01);
    up.magnetisation = {0, 0, 1e6};
    down.magnetisation = {0, 0, -1e6};
    std::vector<Block> source{up, down}, target{up, down};
    source[1].centre = {0.01, 0, 0};
    target[0].centre = {0, 0.02, 0.3};
    target[1].centre = {0.01, 0.02, 0.3};
    const references::Load expected =
        references::SheetLoad(references::SheetsOf(source), references::SheetsOf(target), 1e-11);
    vantor::solver::Options options;
    options.percentError = 0.001;
    const vantor::solver::Solution solution =
        vantor::solver::Solve({BodyOf("source", source), BodyOf("target", target)}, options);
    EXPECT_TRUE(solution.converged);
    comparison::ExpectLoad(solution.loads[1], expected, {0.005, 0.02, 0.3}, 0.01);
}
