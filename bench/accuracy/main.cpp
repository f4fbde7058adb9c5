// vantor-accuracy table | iron | growth | speed: the solver beside closed forms and other models of magnets, the same
// with iron and permeable magnets, and beside the clock, with more and more patches of iron and without iron.
// All print comma-separated values; scripts/accuracy puts them into docs/simulator-accuracy.md.
#include "tests/simulator/solver/IronCases.h"
#include "tests/simulator/solver/References.h"

#include <Eigen/Geometry>
#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <exception>
#include <functional>
#include <limits>

namespace {

using Eigen::Vector3d;
using shapes::Block;
using shapes::Prism;
using vantor::solver::Body;
using vantor::solver::Magnet;
using vantor::solver::Options;
using vantor::solver::Solution;
using vantor::solver::Solve;

constexpr double pi = 3.14159265358979323846;
constexpr double edge = 0.01;
const Vector3d alongZ(0, 0, 1e6);

// ---- accuracy

/// One line of the table: force or torque (about `centre`) on the second body.
struct Case {
    const char* name;
    const char* parameter;
    double value;
    bool torque;
    Vector3d centre;
};

void Print(const Case& row, const std::vector<Body>& bodies, const references::Load& reference) {
    const Solution solution = Solve(bodies);
    const vantor::solver::Load& load = solution.loads[1];
    const auto pick = [&](const Vector3d& force, const Vector3d& torque) -> Vector3d {
        return row.torque ? torque - row.centre.cross(force) : force;
    };
    const Vector3d solved = pick(load.force, load.torque), expected = pick(reference.force, reference.torque);
    std::printf("%s,%s,%g,%s,%.6g,%.6g,%.1e,%.1e,%zu\n", row.name, row.parameter, row.value,
                row.torque ? "torque (N m)" : "force (N)", solved.norm(), expected.norm(),
                100 * (solved - expected).norm() / expected.norm(), solution.passes.back().percentError,
                solution.passes.size());
}

Block Cube(const Vector3d& centre, const Vector3d& magnetisation) {
    Block block;
    block.centre = centre;
    block.size = Vector3d::Constant(edge);
    block.magnetisation = magnetisation;
    return block;
}

std::vector<Body> Bodies(const Block& source, const Block& target) {
    return {BodyOf("source", source), BodyOf("target", target)};
}

references::Load Integrated(const Block& source, const Block& target) {
    return references::SheetLoad(references::SheetsOf(source), references::SheetsOf(target));
}

void CubesOnOneAxis() {
    for (const double gap : {0.01, 0.02, 0.05, 0.1, 0.2, 0.5, 1.0, 2.0, 5.0, 10.0}) {
        const Block source = Cube(Vector3d::Zero(), alongZ), target = Cube({0, 0, edge * (1 + gap)}, alongZ);
        Print({"cubes on one axis", "gap / edge", gap, false, target.centre}, Bodies(source, target),
              {references::AkounYonnetForce(source, target), Vector3d::Zero()});
    }
}

void OffsetCubes() {
    for (const double offset : {0.25, 0.5, 0.75, 1.0, 1.5}) {
        const Block source = Cube(Vector3d::Zero(), alongZ);
        const Block target = Cube(edge * Vector3d(offset, offset / 3, 1.01), alongZ);
        Print({"cubes offset sideways; gap 0.01 edges", "offset / edge", offset, false, target.centre},
              Bodies(source, target), {references::AkounYonnetForce(source, target), Vector3d::Zero()});
    }
}

void PerpendicularCubes() {
    for (const double gap : {0.01, 0.1, 1.0}) {
        for (const bool torque : {false, true}) {
            const Block source = Cube(Vector3d::Zero(), alongZ);
            const Block target = Cube({0.3 * edge, 0.2 * edge, edge * (1 + gap)}, {1e6, 0, 0});
            Print({"cubes magnetised at right angles; offset 0.3 and 0.2 edges", "gap / edge", gap, torque,
                   target.centre},
                  Bodies(source, target), Integrated(source, target));
        }
    }
}

void TurnedCubes() {
    for (const double degrees : {0.001, 1.0, 10.0, 20.0, 30.0, 40.0, 45.0}) {
        for (const bool torque : {false, true}) {
            const Block source = Cube(Vector3d::Zero(), alongZ);
            Block target = Cube({0.2 * edge, 0.1 * edge, 1.5 * edge}, alongZ);
            target.rotation = shapes::Turn(degrees * pi / 180, {1, 0.3, 0});
            target.magnetisation = target.rotation * alongZ;
            Print({"cube turned about (1; 0.3; 0); middles 1.5 edges apart", "angle / degrees", degrees, torque,
                   target.centre},
                  Bodies(source, target), Integrated(source, target));
        }
    }
}

void RoundMagnets() {
    Prism cylinder, ring;
    cylinder.radius = cylinder.height = edge;
    cylinder.sides = ring.sides = 24;
    cylinder.magnetisation = ring.magnetisation = alongZ;
    ring.radius = 3 * edge;
    ring.innerRadius = 1.8 * edge;
    ring.height = edge;
    for (const double gap : {0.3, 1.0, 3.0}) {
        Prism target = cylinder;
        target.centre.z() = edge * (1 + gap);
        Print({"24-sided cylinders on one axis", "gap / radius", gap, false, target.centre},
              {BodyOf("source", cylinder), BodyOf("target", target)}, references::CurrentLoad(cylinder, target));
    }
    for (const double height : {0.2, 0.6, 1.5}) {
        for (const bool torque : {false, true}) {
            Prism target = cylinder;
            target.centre = edge * Vector3d(0.3, 0.1, height);
            Print({"24-sided cylinder in a ring; 0.3 and 0.1 radii off the axis", "height / radius", height, torque,
                   target.centre},
                  {BodyOf("source", ring), BodyOf("target", target)}, references::CurrentLoad(ring, target));
        }
    }
}

void DistantCubes() {
    for (const double distance : {20.0, 50.0, 100.0}) {
        for (const bool torque : {false, true}) {
            const Block source = Cube(Vector3d::Zero(), {3e5, -2e5, 9e5});
            const Block target = Cube(edge * distance * Vector3d(0.3, 0.5, 0.9).normalized(), {-4e5, 7e5, 5e5});
            const double volume = edge * edge * edge;
            Print({"distant cubes beside dipoles", "distance / edge", distance, torque, target.centre},
                  Bodies(source, target),
                  references::DipoleLoad(source.centre, volume * source.magnetisation, target.centre,
                                         volume * target.magnetisation));
        }
    }
}

constexpr int couplingBlocks = 8;
constexpr double couplingGap = 0.002;

std::vector<Block> Lower() {
    return shapes::CouplingHalf(couplingBlocks, 0, -0.005 - couplingGap / 2);
}
std::vector<Block> Upper(double angle) {
    return shapes::CouplingHalf(couplingBlocks, angle, 0.005 + couplingGap / 2);
}

/// Turning by one block and swapping poles changes nothing, so one block stands for all.
void Coupling() {
    const std::vector<references::Sheet> lower = references::SheetsOf(Lower());
    for (const double degrees : {1.0, 2.5, 5.0, 7.5, 10.0, 12.5, 15.0, 17.5, 20.0, 22.0}) {
        for (const bool torque : {false, true}) {
            const std::vector<Block> upper = Upper(degrees * pi / 180);
            const references::Load one = references::SheetLoad(lower, references::SheetsOf(upper[0]), 1e-6);
            references::Load all;
            all.force.z() = couplingBlocks * one.force.z();
            all.torque.z() = couplingBlocks * one.torque.z();
            Print({"axial coupling of 8 and 8 blocks", "angle / degrees", degrees, torque, Vector3d::Zero()},
                  {BodyOf("lower", Lower()), BodyOf("upper", upper)}, all);
        }
    }
}

int Table() {
    std::puts("case,parameter,value,quantity,solved,reference,deviation (%),estimate (%),passes");
    CubesOnOneAxis();
    OffsetCubes();
    PerpendicularCubes();
    TurnedCubes();
    RoundMagnets();
    DistantCubes();
    Coupling();
    return 0;
}

// ---- iron

/// The deviation in percent of the expected vector; the estimate is left out of what is not a load.
void PrintIron(const std::vector<iron::FieldCase>& cases) {
    for (const iron::FieldCase& one : cases) {
        const Vector3d measured = one.measure(vantor::solver::FieldEvaluator(one.bodies));
        std::printf("%s,%s,%g,%s,%.6g,%.6g,%.1e,,\n", one.name.c_str(), one.parameter.c_str(), one.value,
                    one.quantity.c_str(), measured.norm(), one.expected.norm(),
                    100 * (measured - one.expected).norm() / one.expected.norm());
    }
}

void PrintIron(const std::vector<iron::LoadCase>& cases) {
    for (const iron::LoadCase& one : cases) {
        const iron::Solved solved = iron::SolveCase(one);
        const Vector3d &force = solved.load.force, &expected = one.load.force;
        const std::vector<vantor::solver::Pass>& passes = solved.solution.passes;
        std::printf("%s,%s,%g,force (N),%.6g,%.6g,%.1e,%.1e,%zu\n", one.name.c_str(), one.parameter.c_str(), one.value,
                    force.norm(), expected.norm(), 100 * (force - expected).norm() / expected.norm(),
                    passes.back().percentError, passes.size());
    }
}

int Iron() {
    std::puts("case,parameter,value,quantity,solved,reference,deviation (%),estimate (%),passes");
    PrintIron(iron::SpheresInAField());
    PrintIron(iron::CubeInAField());
    PrintIron(iron::ShellsInAField());
    PrintIron(iron::MagnetSpheres());
    PrintIron(iron::MagnetsOverAPlate());
    PrintIron(iron::MagnetAndIronSpheres());
    PrintIron(iron::RoundYokes());
    PrintIron(iron::BlockYokes());
    PrintIron(iron::MagnetsOverADisc());
    PrintIron(iron::SaturatedYokes());
    PrintIron(iron::SaturatedDiscs());
    return 0;
}

// ---- speed

/// Shortest of several runs, seconds.
double SecondsOf(const std::function<void()>& work, int runs) {
    double shortest = std::numeric_limits<double>::infinity();
    for (int i = 0; i < runs; ++i) {
        const auto start = std::chrono::steady_clock::now();
        work();
        shortest = std::min(shortest, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    return shortest;
}

/// The force along z on the upper one of two cubes, from n by n point charges on each face, by nested loops. Of the
/// four pairs of faces the two pairs of like poles are equal, so three are summed.
double PlainForce(double gap, int n) {
    struct FacePair {
        double distance, factor;
    };
    const std::array<FacePair, 3> pairs{{{gap, -1}, {gap + 1, 2}, {gap + 2, -1}}};
    const double step = edge / n;
    double sum = 0;
    for (const FacePair& pair : pairs) {
        for (int i = 0; i < n; ++i) {
            for (int j = 0; j < n; ++j) {
                for (int k = 0; k < n; ++k) {
                    for (int l = 0; l < n; ++l) {
                        const double x = (i - k) * step, y = (j - l) * step, z = edge * pair.distance;
                        const double squared = x * x + y * y + z * z;
                        sum += pair.factor * z / (squared * std::sqrt(squared));
                    }
                }
            }
        }
    }
    const double charge = alongZ.z() * step * step;
    return 1e-7 * charge * charge * sum;
}

/// The coarsest division of the faces with which the plain loops are within a thousandth.
int PlainDivision(double gap) {
    const double exact =
        references::AkounYonnetForce(Cube(Vector3d::Zero(), alongZ), Cube({0, 0, edge * (1 + gap)}, alongZ)).z();
    int n = 2;
    while (std::abs(PlainForce(gap, n) - exact) > 1e-3 * std::abs(exact)) {
        n = n + std::max(1, n / 4);
    }
    return n;
}

void PrintSpeed(const char* name, double value) {
    std::printf("%s,%.4g\n", name, value);
}

int Speed() {
    Options one;
    one.threads = 1;
    std::puts("measure,value");
    const std::vector<Body> coupling{BodyOf("lower", Lower()), BodyOf("upper", Upper(0.2))};
    const double alone = SecondsOf([&] { Solve(coupling, one); }, 50);
    PrintSpeed("solve of the 8+8 coupling on one core (ms)", 1e3 * alone);
    PrintSpeed("solve of the 8+8 coupling on all cores (ms)", 1e3 * SecondsOf([&] { Solve(coupling); }, 50));
    PrintSpeed("face pairs per second in the coupling on one core", 4 * couplingBlocks * couplingBlocks / alone);
    for (const double gap : {0.5, 0.2, 0.1}) {
        const std::vector<Body> cubes = Bodies(Cube(Vector3d::Zero(), alongZ), Cube({0, 0, edge * (1 + gap)}, alongZ));
        const double solver = 4 / SecondsOf([&] { Solve(cubes, one); }, 200);
        const int n = PlainDivision(gap);
        volatile double sink = 0;
        const double plain = 3 / SecondsOf([&] { sink = PlainForce(gap, n); }, 3);
        const auto print = [&](const char* what, double value) {
            std::printf("cubes %g edges apart: %s,%.4g\n", gap, what, value);
        };
        print("face pairs per second of the solver on one core", solver);
        print("charges per edge that plain loops need for 0.1 %", n);
        print("face pairs per second of plain loops", plain);
        print("ratio", solver / plain);
    }
    return 0;
}

// ---- growth with iron

Magnet Steel(const Body& shape) {
    Magnet steel = shape.magnets[0];
    steel.magnetisation.setZero();
    steel.permeability = 2000;
    return steel;
}

/// Half a coupling on a steel ring.
Body Yoked(const std::string& name, double side) {
    Body body = BodyOf(name, shapes::CouplingHalf(couplingBlocks, 0, side * (0.005 + couplingGap / 2)));
    Prism ring;
    ring.sides = 64;
    ring.radius = 0.040;
    ring.innerRadius = 0.020;
    ring.height = 0.005;
    ring.centre.z() = side * (0.010 + (couplingGap + ring.height) / 2);
    body.magnets.push_back(Steel(BodyOf(name + "_yoke", ring)));
    return body;
}

/// Magnets on steel blocks, side by side.
std::vector<Body> Row(int count) {
    std::vector<Body> bodies;
    for (int i = 0; i < count; ++i) {
        const double x = 2 * edge * i;
        Block block = Cube({x, 0, 0}, alongZ);
        Body body = BodyOf("body_" + std::to_string(i), block);
        block.size.z() = edge / 2;
        block.centre.z() = -0.75 * edge;
        body.magnets.push_back(Steel(BodyOf("steel", block)));
        bodies.push_back(std::move(body));
    }
    return bodies;
}

void Turn(Body& body, double angle) {
    for (Magnet& magnet : body.magnets) {
        magnet.pose.prerotate(Eigen::AngleAxisd(angle, Vector3d::UnitZ()));
    }
}

/// A Solver keeps what does not change from step to step.
void PrintSteps(const std::string& name, std::vector<Body> bodies) {
    constexpr int steps = 5;
    vantor::solver::Solver solver;
    std::size_t fluxes = 0;
    const double first = SecondsOf([&] { fluxes = solver.Solve(bodies).passes.back().evaluations; }, 1);
    const double further = SecondsOf(
        [&] {
            Turn(bodies[1], 0.01);
            solver.Solve(bodies);
        },
        steps);
    std::printf("%s,%zu,%.3g,%.3g,%.2f,%.2f\n", name.c_str(), fluxes, first, further, further / first,
                1e6 * first / static_cast<double>(fluxes));
}

int Growth() {
    std::puts("bodies,fluxes of the first solve,first solve (s),further step (s),further / first,"
              "first per flux (us)");
    for (const int count : {2, 4, 8, 12}) {
        PrintSteps(std::to_string(count) + " cubes on steel blocks", Row(count));
    }
    std::vector<Body> coupling{Yoked("lower", -1), Yoked("upper", 1)};
    Turn(coupling[1], pi / couplingBlocks / 2);
    PrintSteps("coupling of 8 and 8 blocks on steel rings", coupling);
    return 0;
}

} // namespace

int main(int count, char** arguments) {
    try {
        if (count == 2 && std::strcmp(arguments[1], "table") == 0) {
            return Table();
        }
        if (count == 2 && std::strcmp(arguments[1], "iron") == 0) {
            return Iron();
        }
        if (count == 2 && std::strcmp(arguments[1], "growth") == 0) {
            return Growth();
        }
        if (count == 2 && std::strcmp(arguments[1], "speed") == 0) {
            return Speed();
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "error: %s\n", error.what());
        return 1;
    }
    std::fputs("usage: vantor-accuracy table|iron|growth|speed\n", stderr);
    return 2;
}
