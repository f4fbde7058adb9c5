// Iron, and magnets of a permeability other than 1, beside closed forms and another method's numbers.
#include "tests/simulator/solver/Constants.h"
#include "tests/simulator/solver/IronCases.h"

#include <Eigen/Geometry>
#include <algorithm>
#include <array>
#include <cmath>
#include <gtest/gtest.h>

using Eigen::Vector3d;
using vantor::solver::Body;
using vantor::solver::FieldEvaluator;
using vantor::solver::Load;
using vantor::solver::Solution;
using vantor::solver::Solve;

namespace {

using references::pi;
/// Deviations may be as much of what is wanted.
constexpr double tolerance = 2;
/// Action and reaction may differ by as much of the largest load, and the work around a loop by as much of the sum of
/// its sides' without signs.
constexpr double wantedBalance = 1e-3, wantedLoop = 1e-2;

void ExpectFields(const std::vector<iron::FieldCase>& cases) {
    ASSERT_FALSE(cases.empty());
    for (const iron::FieldCase& one : cases) {
        const Vector3d measured = one.measure(FieldEvaluator(one.bodies));
        EXPECT_LE((measured - one.expected).norm(), tolerance * one.wanted * one.expected.norm())
            << one.name << ", " << one.parameter << ' ' << one.value << ": " << one.quantity << ' '
            << measured.transpose() << " instead of " << one.expected.transpose();
    }
}

void ExpectBalance(const Solution& solution) {
    Vector3d force = Vector3d::Zero(), torque = Vector3d::Zero();
    double largestForce = 0, largestTorque = 0;
    for (const Load& load : solution.loads) {
        force += load.force;
        torque += load.torque;
        largestForce = std::max(largestForce, load.force.norm());
        largestTorque = std::max(largestTorque, load.torque.norm());
    }
    // A torque that vanishes by symmetry is compared to that of the force on an arm of a millimetre.
    EXPECT_LE(force.norm(), tolerance * wantedBalance * largestForce);
    EXPECT_LE(torque.norm(), tolerance * wantedBalance * std::max(largestTorque, 1e-3 * largestForce));
}

/// Torques that vanish by symmetry are compared to the force times a twentieth of the magnets' size.
void ExpectLoads(const std::vector<iron::LoadCase>& cases) {
    constexpr double lever = 0.0005;
    ASSERT_FALSE(cases.empty());
    for (const iron::LoadCase& one : cases) {
        SCOPED_TRACE(one.name + ", " + one.parameter + ' ' + std::to_string(one.value));
        const iron::Solved solved = iron::SolveCase(one);
        const references::Load& load = solved.load;
        const double allowed = tolerance * one.wanted;
        EXPECT_TRUE(solved.solution.converged);
        EXPECT_LE((load.force - one.load.force).norm(), allowed * one.load.force.norm())
            << "force " << load.force.transpose() << " instead of " << one.load.force.transpose();
        const Vector3d torque = load.torque - one.centre.cross(load.force);
        const Vector3d expected = one.load.torque - one.centre.cross(one.load.force);
        EXPECT_LE((torque - expected).norm(), allowed * std::max(expected.norm(), lever * one.load.force.norm()))
            << "torque " << torque.transpose() << " instead of " << expected.transpose();
        ExpectBalance(solved.solution);
    }
}

/// Those whose parameter is no less.
std::vector<iron::LoadCase> From(double least, std::vector<iron::LoadCase> cases) {
    cases.erase(std::remove_if(cases.begin(), cases.end(), [least](const auto& one) { return one.value < least; }),
                cases.end());
    return cases;
}

/// A magnet magnetised aslant, moved and turned over an iron block.
std::vector<Body> MagnetOverIron(const Vector3d& place, double angle) {
    shapes::Block block, magnet;
    block.size = {0.03, 0.02, 0.01};
    block.centre.z() = -0.005;
    magnet.size = {0.01, 0.008, 0.006};
    magnet.magnetisation = {6e5, 0, 8e5};
    Body iron = BodyOf("iron", block), moved = BodyOf("magnet", magnet);
    iron.magnets[0].magnetisation.setZero();
    iron.magnets[0].permeability = 200;
    moved.magnets[0].pose = Eigen::Translation3d(place) * Eigen::AngleAxisd(angle, Vector3d::UnitY());
    return {iron, moved};
}

struct Place {
    Vector3d at;
    double angle;
};

/// The work that the magnet does from one place to another on a straight way, by Gauss's rule of three points.
double Work(const Place& from, const Place& to) {
    struct Point {
        double at, weight;
    };
    const std::array<Point, 3> rule{
        {{0.5 - std::sqrt(0.15), 5.0 / 18}, {0.5, 8.0 / 18}, {0.5 + std::sqrt(0.15), 5.0 / 18}}};
    const Vector3d way = to.at - from.at;
    const double turn = to.angle - from.angle;
    double work = 0;
    for (const Point& point : rule) {
        const Vector3d at = from.at + point.at * way;
        const Load load = Solve(MagnetOverIron(at, from.angle + point.at * turn)).loads[1];
        work += point.weight * (load.force.dot(way) + (load.torque - at.cross(load.force)).y() * turn);
    }
    return work;
}

void ExpectNoWorkAround(const std::array<Place, 4>& corners) {
    double sum = 0, sides = 0;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const double work = Work(corners[i], corners[(i + 1) % corners.size()]);
        sum += work;
        sides += std::abs(work);
    }
    EXPECT_GT(sides, 1e-4) << "J; nothing pulls";
    EXPECT_LE(std::abs(sum), tolerance * wantedLoop * sides);
}

} // namespace

/// Two charges near one another are the dipole; the force is the energy's slope.
TEST(IronReferences, AttractionBySpheresIsTheSlopeOfTheEnergyOfTwoCharges) {
    constexpr double radius = 0.01, distance = 0.018, moment = 3, apart = 2e-5, step = 2e-5, permeability = 20;
    for (const auto direction : {references::DipoleDirection::Towards, references::DipoleDirection::Across}) {
        const Vector3d along =
            direction == references::DipoleDirection::Towards ? Vector3d::UnitZ() : Vector3d::UnitX();
        const auto energy = [&](double height) {
            const Vector3d middle(0, 0, height), half = apart / 2 * along;
            return references::SphereEnergy({{middle + half, moment / apart}, {middle - half, -moment / apart}}, radius,
                                            permeability);
        };
        const double slope = (energy(distance + step) - energy(distance - step)) / (2 * step);
        EXPECT_NEAR(references::SphereAttraction(direction, moment, radius, distance, permeability) / slope, 1, 1e-4);
    }
}

TEST(IronReferences, ImagesAttractAsTheClosedFormForBlocks) {
    constexpr double permeability = 3;
    shapes::Block magnet, image;
    magnet.centre = {0.1, 0.2, 0.8};
    image.centre = {0.1, 0.2, -0.8};
    image.magnetisation = magnet.magnetisation / 2;
    const std::vector<references::Sheet> sheets = references::SheetsOf(magnet);
    const Vector3d force = references::SheetLoad(references::ImagesOf(sheets, 0, permeability), sheets).force;
    const Vector3d expected = references::AkounYonnetForce(image, magnet);
    EXPECT_LE((force - expected).norm(), 1e-6 * expected.norm());
}

TEST(IronReferences, MomentsAreFoundFromTheFieldAroundThem) {
    shapes::Block block;
    block.centre = {0.2, -0.1, 0.3};
    block.size = {1, 2, 0.5};
    block.magnetisation = {300, -200, 700};
    const std::vector<references::Sheet> sheets = references::SheetsOf(block);
    const Vector3d moment = references::MomentWithin(
        [&](const Vector3d& point) { return references::FieldOf(sheets, point); }, block.centre, 12);
    EXPECT_LE((moment - block.magnetisation).norm(), 1e-4 * moment.norm());
}

TEST(IronFields, OfSpheresAreThoseOfDipoles) {
    ExpectFields(iron::SpheresInAField());
}

TEST(IronFields, OfACubeAreThoseOfItsPublishedMoment) {
    ExpectFields(iron::CubeInAField());
}

TEST(IronFields, WithinShellsAreShielded) {
    ExpectFields(iron::ShellsInAField());
}

TEST(IronFields, OfMagnetSpheresAreUniformWithin) {
    ExpectFields(iron::MagnetSpheres());
}

TEST(IronLoads, OfPlatesAreThoseOfMirrorImages) {
    ExpectLoads(iron::MagnetsOverAPlate());
}

TEST(IronLoads, OfSpheresAreThoseOfTheirMultipoles) {
    ExpectLoads(iron::MagnetAndIronSpheres());
}

TEST(IronLoads, OfRoundYokesAreThoseOfFiniteElements) {
    ExpectLoads(iron::RoundYokes());
}

TEST(IronLoads, OfBlockYokesAreThoseOfFiniteElements) {
    ExpectLoads(iron::BlockYokes());
}

TEST(IronLoads, OfThinDiscsAreThoseOfFiniteElements) {
    ExpectLoads(iron::MagnetsOverADisc());
}

/// Thinner ones take long.
TEST(IronLoads, OfSaturatedIronAreThoseOfFiniteElements) {
    ExpectLoads(From(1.5, iron::SaturatedYokes()));
    ExpectLoads(From(1.0, iron::SaturatedDiscs()));
}

/// Iron in a hole of iron that hardly differs is as if the hole were not there.
TEST(IronLoads, OfIronWithinIronAreThoseOfOnePiece) {
    shapes::Block outer, hole, magnet;
    outer.size = {0.02, 0.016, 0.012};
    hole.size = {0.012, 0.01, 0.006};
    magnet.size = {0.01, 0.01, 0.006};
    magnet.centre = {0.002, 0, 0.012};
    magnet.magnetisation = {0, 0, 8e5};
    const auto bodies = [&](bool isHollow) {
        std::vector<Body> all{BodyOf("iron", outer), BodyOf("magnet", magnet)};
        if (isHollow) {
            vantor::solver::TriangleMesh mesh = MeshOf(outer);
            const vantor::solver::TriangleMesh inner = MeshOf(hole);
            const int first = static_cast<int>(mesh.vertices.size());
            mesh.vertices.insert(mesh.vertices.end(), inner.vertices.begin(), inner.vertices.end());
            for (const auto& [a, b, c] : inner.triangles) {
                mesh.triangles.push_back({first + a, first + c, first + b});
            }
            all[0].magnets[0].mesh = shapes::Shared(std::move(mesh));
            all[0].magnets.push_back(BodyOf("core", hole).magnets[0]);
            all[0].magnets[1].permeability = 990;
            all[0].magnets[1].magnetisation.setZero();
        }
        all[0].magnets[0].permeability = 1000;
        all[0].magnets[0].magnetisation.setZero();
        return all;
    };
    const Load whole = Solve(bodies(false)).loads[1], cored = Solve(bodies(true)).loads[1];
    EXPECT_LE((cored.force - whole.force).norm(), 0.01 * whole.force.norm());
}

/// A comb of many blocks has more faces than a first division has patches otherwise.
TEST(IronLoads, OfManyMagnetsAreThoseOfAll) {
    const auto comb = [](double permeability) {
        Body body{"comb", {}};
        for (int i = 0; i < 120; ++i) {
            const int column = i % 12, row = i / 12;
            shapes::Block block;
            block.size = {0.002, 0.003, 0.002};
            block.centre = {0.003 * column, 0.004 * row, 0};
            block.magnetisation = {0, 0, 1e6};
            body.magnets.push_back(BodyOf("block", block).magnets[0]);
            body.magnets.back().permeability = permeability;
        }
        return body;
    };
    shapes::Block magnet;
    magnet.size = {0.01, 0.01, 0.006};
    magnet.centre = {0.016, 0.018, 0.006};
    magnet.magnetisation = {0, 0, 8e5};
    vantor::solver::Options options;
    options.maximumPasses = 1;
    const double rigid = Solve({comb(1), BodyOf("magnet", magnet)}, options).loads[1].force.z();
    const double permeable = Solve({comb(1.001), BodyOf("magnet", magnet)}, options).loads[1].force.z();
    EXPECT_LE(std::abs(permeable - rigid), 0.005 * std::abs(rigid));
}

TEST(IronLoads, DoNoWorkAroundALoopOfPlacesAndAngles) {
    ExpectNoWorkAround(
        {{{{0.003, 0, 0.010}, 0}, {{0.003, 0, 0.014}, 0}, {{0.003, 0, 0.014}, pi / 6}, {{0.003, 0, 0.010}, pi / 6}}});
    ExpectNoWorkAround(
        {{{{-0.004, 0, 0.006}, 0}, {{0.008, 0, 0.006}, 0}, {{0.008, 0, 0.009}, 0}, {{-0.004, 0, 0.009}, 0}}});
}
