#include "tests/simulator/solver/IronCases.h"

#include "tests/simulator/solver/Constants.h"

#include <Eigen/Geometry>
#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

using Eigen::Vector3d;
using shapes::Block;
using shapes::Prism;
using vantor::solver::Body;
using vantor::solver::FieldEvaluator;
using vantor::solver::Magnet;
using vantor::solver::TriangleMesh;

namespace iron {
namespace {

using references::pi;
constexpr double mu0 = 4e-7 * pi;
constexpr double magnetisation = 1e6;
constexpr double ironPermeability = 1000;
/// Of the spheres, m.
constexpr double sphereRadius = 0.01;

Magnet PieceOf(const std::string& name, TriangleMesh mesh, double permeability,
               const Vector3d& magnetisationAtZeroField = Vector3d::Zero()) {
    Magnet piece;
    piece.name = name;
    piece.mesh = shapes::Shared(std::move(mesh));
    piece.magnetisation = magnetisationAtZeroField;
    piece.permeability = permeability;
    return piece;
}

double VolumeOf(const TriangleMesh& mesh) {
    double volume = 0;
    for (const auto& triangle : mesh.triangles) {
        const auto corner = [&](std::size_t i) -> const Vector3d& {
            return mesh.vertices[static_cast<std::size_t>(triangle[i])];
        };
        volume += corner(0).dot(corner(1).cross(corner(2))) / 6;
    }
    return volume;
}

/// A ball of 8 * 4^times triangles with the volume of the round one.
TriangleMesh BallOf(int times, double radius, const Vector3d& centre = Vector3d::Zero()) {
    TriangleMesh mesh = shapes::Ball(times);
    const double scale = radius * std::cbrt(4 * pi / 3 / VolumeOf(mesh));
    for (Vector3d& vertex : mesh.vertices) {
        vertex = centre + scale * vertex;
    }
    return mesh;
}

TriangleMesh ShellOf(double radius, double innerOverOuterRadius) {
    TriangleMesh mesh = BallOf(2, radius);
    TriangleMesh inner = BallOf(2, radius * innerOverOuterRadius);
    const int first = static_cast<int>(mesh.vertices.size());
    mesh.vertices.insert(mesh.vertices.end(), inner.vertices.begin(), inner.vertices.end());
    for (const auto& [a, b, c] : inner.triangles) {
        mesh.triangles.push_back({first + a, first + c, first + b});
    }
    return mesh;
}

// ---- in the field of a far magnet

Block FarMagnet() {
    Block magnet;
    magnet.centre = {0.3, 0.2, -1};
    magnet.size = Vector3d::Constant(0.3);
    magnet.magnetisation = {0, 0, magnetisation};
    return magnet;
}

std::vector<Body> WithFarMagnet(const Magnet& piece) {
    return {BodyOf("far", FarMagnet()), {"iron", {piece}}};
}

Vector3d FarField(const Vector3d& point) {
    static const std::vector<references::Sheet> sheets = references::SheetsOf(FarMagnet());
    return references::FieldOf(sheets, point);
}

/// Dipole moment of a piece about the origin, over its volume and the far magnet's field.
Vector3d MomentOf(const Magnet& piece, const FieldEvaluator& field) {
    const double reach = piece.mesh->vertices.front().norm();
    const Vector3d moment =
        references::MomentWithin([&](const Vector3d& point) -> Vector3d { return field.H(point) - FarField(point); },
                                 Vector3d::Zero(), 6 * reach);
    return moment / VolumeOf(*piece.mesh) / FarField(Vector3d::Zero()).norm();
}

FieldCase MomentCase(const std::string& name, const Magnet& piece, double expected,
                     std::function<Vector3d(const FieldEvaluator&)> measure) {
    return {name,
            "permeability",
            piece.permeability,
            "moment / (volume field)",
            WithFarMagnet(piece),
            std::move(measure),
            expected * FarField(Vector3d::Zero()).normalized(),
            5e-3};
}

// ---- forces

references::Load AlongZ(double force) {
    return {{0, 0, force}, Vector3d::Zero()};
}

/// The corners' radius of a regular polygon with the area of the circle.
double CornerRadius(double radius, int sides) {
    const double angle = 2 * pi / sides;
    return radius * std::sqrt(angle / std::sin(angle));
}

/// For the round one: without iron the forces of magnets of 24 sides differ by 1e-4 from those of round ones.
Prism Cylinder(double radius, double height, double bottom) {
    Prism cylinder;
    cylinder.sides = 24;
    cylinder.radius = CornerRadius(radius, cylinder.sides);
    cylinder.height = height;
    cylinder.centre = {0, 0, bottom + height / 2};
    return cylinder;
}

Block BlockAt(const Vector3d& size, double bottom) {
    Block block;
    block.size = size;
    block.centre = {0, 0, bottom + size.z() / 2};
    return block;
}

TriangleMesh MirroredAtZero(TriangleMesh mesh) {
    for (Vector3d& vertex : mesh.vertices) {
        vertex.z() = -vertex.z();
    }
    for (auto& triangle : mesh.triangles) {
        std::swap(triangle[1], triangle[2]);
    }
    return mesh;
}

/// A magnet and the yoke on it, and below z = 0 their mirror images, which attract or repel them.
std::vector<Body> Facing(const TriangleMesh& magnet, const TriangleMesh& yoke, double magnetPermeability,
                         bool attracting) {
    const Vector3d up(0, 0, magnetisation);
    return {{"lower",
             {PieceOf("lower_magnet", MirroredAtZero(magnet), magnetPermeability, attracting ? up : Vector3d(-up)),
              PieceOf("lower_yoke", MirroredAtZero(yoke), ironPermeability)}},
            {"upper",
             {PieceOf("upper_magnet", magnet, magnetPermeability, up), PieceOf("upper_yoke", yoke, ironPermeability)}}};
}

/// Cylinders, their radii 10 and 12.5 mm; the yoke's height may be chosen.
std::vector<Body> FacingRound(double gap, double yokeHeight, double magnetPermeability, bool attracting) {
    return Facing(MeshOf(Cylinder(0.010, 0.005, gap / 2)), MeshOf(Cylinder(0.0125, yokeHeight, gap / 2 + 0.005)),
                  magnetPermeability, attracting);
}

std::vector<Body> MagnetOverADisc(double gap, double thickness) {
    Prism magnet = Cylinder(0.010, 0.010, gap);
    magnet.magnetisation = {0, 0, magnetisation};
    return {{"disc", {PieceOf("disc", MeshOf(Cylinder(0.015, thickness, -thickness)), ironPermeability)}},
            BodyOf("magnet", magnet)};
}

/// A low-carbon steel, that of yoke_reference.py.
std::shared_ptr<const vantor::solver::MagnetizationCurve> Steel() {
    using vantor::solver::MagnetizationCurve;
    static const auto curve = std::make_shared<const MagnetizationCurve>(MagnetizationCurve{
        {{0, 0},          {342, 1.0},      {377, 1.1},      {433, 1.2},      {509, 1.3},      {648, 1.4},
         {933, 1.5},      {1228, 1.55},    {1934, 1.6},     {2913, 1.65},    {4993, 1.7},     {7189, 1.75},
         {15000, 1.9257}, {20000, 2.0091}, {25000, 2.0783}, {30000, 2.1334}, {35000, 2.1744}, {40000, 2.2013},
         {50000, 2.2228}, {1e5, 2.2857},   {1e6, 3.4167}}});
    return curve;
}

/// Gives the curve to all that is not magnetised.
std::vector<Body> OfSteel(std::vector<Body> bodies) {
    for (Body& body : bodies) {
        for (Magnet& piece : body.magnets) {
            if (piece.magnetisation.isZero()) {
                piece.permeability = 1;
                piece.curve = Steel();
            }
        }
    }
    return bodies;
}

/// Gap in m, and forces along z in N: attracting and repelling, by magnets of mu 1 and of mu 1.05.
struct YokeForces {
    double gap;
    std::array<double, 2> attracting, repelling;
};

template <class Solid>
std::vector<LoadCase> YokeCases(const std::string& name, const std::vector<YokeForces>& table, const Solid& solid) {
    std::vector<LoadCase> cases;
    for (const YokeForces& row : table) {
        for (const bool attracting : {true, false}) {
            for (const bool recoil : {false, true}) {
                const double force = (attracting ? row.attracting : row.repelling)[recoil ? 1 : 0];
                const double permeability = recoil ? 1.05 : 1.0;
                cases.push_back(
                    {name + (attracting ? " attracting" : " repelling") + (recoil ? "; magnets of mu 1.05" : ""),
                     "gap / magnet height", row.gap / 0.005, solid(row.gap, permeability, attracting), AlongZ(force),
                     Vector3d::Zero(), 1e-2});
            }
        }
    }
    return cases;
}

/// Facets change moments and loads, of the balls here by up to 2 %, by a seventh of what those of the next coarser ball
/// do.
Vector3d WithoutFacets(const Vector3d& fine, const Vector3d& coarse) {
    return fine + (fine - coarse) / 6;
}

} // namespace

Solved SolveCase(const LoadCase& one) {
    Solved solved{vantor::solver::Solve(one.bodies), {}};
    const vantor::solver::Load& load = solved.solution.loads.back();
    solved.load = {load.force, load.torque};
    if (!one.coarser.empty()) {
        const vantor::solver::Load coarse = vantor::solver::Solve(one.coarser).loads.back();
        solved.load = {WithoutFacets(load.force, coarse.force), WithoutFacets(load.torque, coarse.torque)};
    }
    return solved;
}

std::vector<FieldCase> SpheresInAField() {
    std::vector<FieldCase> cases;
    for (const double permeability : {2.0, 10.0, 100.0, 1000.0}) {
        const Magnet coarse = PieceOf("sphere", BallOf(1, sphereRadius), permeability);
        const Magnet fine = PieceOf("sphere", BallOf(2, sphereRadius), permeability);
        const auto measure = [=](const FieldEvaluator& field) {
            return WithoutFacets(MomentOf(fine, field), MomentOf(coarse, FieldEvaluator(WithFarMagnet(coarse))));
        };
        cases.push_back(MomentCase("iron sphere in a far magnet's field", fine,
                                   references::SphereMagnetisation(permeability), measure));
    }
    return cases;
}

std::vector<FieldCase> CubeInAField() {
    Block cube;
    cube.size = Vector3d::Constant(0.01);
    const Magnet piece = PieceOf("cube", MeshOf(cube), 1e5);
    return {MomentCase("iron cube in a far magnet's field", piece, references::cubePolarisability,
                       [=](const FieldEvaluator& field) { return MomentOf(piece, field); })};
}

std::vector<FieldCase> ShellsInAField() {
    constexpr double ratio = 0.9;
    std::vector<FieldCase> cases;
    for (const double permeability : {10.0, 1000.0}) {
        const auto measure = [](const FieldEvaluator& field) -> Vector3d {
            return field.H(Vector3d::Zero()) / FarField(Vector3d::Zero()).norm();
        };
        const Vector3d along = FarField(Vector3d::Zero()).normalized();
        cases.push_back({"within an iron shell; radii 0.9 to 1", "permeability", permeability, "field / far field",
                         WithFarMagnet(PieceOf("shell", ShellOf(sphereRadius, ratio), permeability)), measure,
                         references::ShellField(permeability, ratio) * along, 2e-2});
    }
    return cases;
}

std::vector<FieldCase> MagnetSpheres() {
    const Vector3d remanence = Vector3d(0.3, -0.4, 1.1);
    std::vector<FieldCase> cases;
    for (const double permeability : {1.05, 1.1, 1.5}) {
        const Body body{"body", {PieceOf("sphere", BallOf(2, sphereRadius), permeability, remanence / mu0)}};
        const Vector3d expected = references::MagnetSphereMagnetisation(permeability) * remanence;
        cases.push_back({"magnet sphere",
                         "permeability",
                         permeability,
                         "polarisation (T)",
                         {body},
                         [](const FieldEvaluator& field) -> Vector3d { return mu0 * field.M(Vector3d::Zero()); },
                         expected,
                         3e-3});
        // Demagnetised by a third.
        cases.push_back({"magnet sphere",
                         "permeability",
                         permeability,
                         "flux density (T)",
                         {body},
                         [](const FieldEvaluator& field) -> Vector3d {
                             return mu0 * (field.H(Vector3d::Zero()) + field.M(Vector3d::Zero()));
                         },
                         expected * 2 / 3,
                         3e-3});
    }
    return cases;
}

std::vector<LoadCase> MagnetsOverAPlate() {
    constexpr double edge = 0.01;
    // Finite elements over (x, y, z) say that its size changes the upright cube's forces by less than 0.1 %. The tilted
    // one's torques it changes by 0.4 and 0.8 %, which fall with the 2.5th power of its width; they are not compared at
    // the largest gap, where it is 2.6 %.
    const Block plate = BlockAt(edge * Vector3d(16, 16, 3), -3 * edge);
    std::vector<LoadCase> cases;
    for (const bool tilted : {false, true}) {
        for (const double gap : tilted ? std::vector<double>{0.2, 0.5} : std::vector<double>{0.2, 0.5, 1.0}) {
            Block magnet = BlockAt(Vector3d::Constant(edge), 0);
            magnet.magnetisation = {0, 0, magnetisation};
            if (tilted) {
                magnet.rotation = shapes::Turn(pi / 6, {1, 0, 0});
                magnet.magnetisation = magnet.rotation * Vector3d(0.6 * magnetisation, 0, 0.8 * magnetisation);
            }
            magnet.centre.z() = edge * gap + (magnet.rotation.row(2).cwiseAbs() * magnet.size / 2).value();
            const std::vector<references::Sheet> sheets = references::SheetsOf(magnet);
            const references::Load load =
                references::SheetLoad(references::ImagesOf(sheets, 0, ironPermeability), sheets, 1e-5);
            cases.push_back({tilted ? "tilted cube over an iron plate" : "cube over an iron plate",
                             "gap / edge",
                             gap,
                             {{"plate", {PieceOf("plate", MeshOf(plate), ironPermeability)}}, BodyOf("magnet", magnet)},
                             load,
                             magnet.centre,
                             1e-2});
        }
    }
    return cases;
}

std::vector<LoadCase> MagnetAndIronSpheres() {
    using references::DipoleDirection;
    std::vector<LoadCase> cases;
    const double moment = magnetisation * 4 * pi / 3 * std::pow(sphereRadius, 3);
    for (const DipoleDirection direction : {DipoleDirection::Towards, DipoleDirection::Across}) {
        for (const double permeability : {5.0, 1000.0}) {
            for (const double distance : {2.5, 4.0}) {
                const bool towards = direction == DipoleDirection::Towards;
                const Vector3d place(0, 0, distance * sphereRadius);
                const double force =
                    references::SphereAttraction(direction, moment, sphereRadius, place.z(), permeability);
                const auto bodies = [&](int times) -> std::vector<Body> {
                    return {{"iron", {PieceOf("iron", BallOf(times, sphereRadius), permeability)}},
                            {"magnet",
                             {PieceOf("magnet", BallOf(3, sphereRadius, place), 1,
                                      magnetisation * (towards ? Vector3d::UnitZ() : Vector3d::UnitX()))}}};
                };
                cases.push_back({std::string("magnet sphere beside an iron sphere of mu ") +
                                     (permeability == 5 ? "5" : "1000") + (towards ? "; axial" : "; transverse"),
                                 "distance / radius", distance, bodies(2), AlongZ(-force), place, 1e-2, bodies(1)});
            }
        }
    }
    return cases;
}

std::vector<LoadCase> RoundYokes() {
    // yoke_reference.py round: stress and coenergy agree to 1e-6.
    const std::vector<YokeForces> table{{0.0005, {-102.7547, -99.8645}, {75.2685, 68.9330}},
                                        {0.0015, {-76.2321, -73.6408}, {57.1329, 52.5689}},
                                        {0.0050, {-34.3987, -32.8484}, {28.4339, 26.4357}}};
    return YokeCases("cylinders on round yokes", table, [](double gap, double permeability, bool attracting) {
        return FacingRound(gap, 0.005, permeability, attracting);
    });
}

std::vector<LoadCase> BlockYokes() {
    // yoke_reference.py block, by coenergy: the stress agrees to 3e-4, a coarser grid to 1e-4.
    const std::vector<YokeForces> table{{0.0005, {-35.7781, -35.0896}, {31.6309, 29.2985}},
                                        {0.0015, {-23.8343, -23.2059}, {21.2840, 19.8886}},
                                        {0.0050, {-8.1045, -7.8115}, {7.5354, 7.1496}}};
    return YokeCases("blocks on block yokes", table, [](double gap, double permeability, bool attracting) {
        const Block magnet = BlockAt({0.012, 0.008, 0.005}, gap / 2);
        const Block yoke = BlockAt({0.016, 0.012, 0.004}, gap / 2 + magnet.size.z());
        return Facing(MeshOf(magnet), MeshOf(yoke), permeability, attracting);
    });
}

std::vector<LoadCase> MagnetsOverADisc() {
    struct Row {
        double gap, force;
    };
    std::vector<LoadCase> cases;
    // yoke_reference.py disc: stress and coenergy agree to 1e-6.
    for (const Row& row : {Row{0.001, -59.5393}, Row{0.003, -24.5022}}) {
        cases.push_back({"cylinder over a thin iron disc", "gap / radius", row.gap / 0.010,
                         MagnetOverADisc(row.gap, 0.001), AlongZ(row.force), Vector3d::Zero(), 1e-2});
    }
    return cases;
}

std::vector<LoadCase> SaturatedYokes() {
    // yoke_reference.py saturated: stress and coenergy agree to 1e-5, two grids to 3e-5.
    struct Row {
        double height, force;
    };
    std::vector<LoadCase> cases;
    for (const Row& row : {Row{0.0008, -59.0853}, Row{0.0015, -69.0411}, Row{0.0030, -73.4339}}) {
        cases.push_back({"cylinders on thin steel yokes attracting", "yoke (mm)", 1e3 * row.height,
                         OfSteel(FacingRound(0.0015, row.height, 1, true)), AlongZ(row.force), Vector3d::Zero(), 2e-2});
    }
    return cases;
}

std::vector<LoadCase> SaturatedDiscs() {
    struct Row {
        double thickness, force;
    };
    std::vector<LoadCase> cases;
    for (const Row& row : {Row{0.0005, -25.8074}, Row{0.0010, -47.8570}, Row{0.0020, -60.8150}}) {
        cases.push_back({"cylinder over a thin steel disc", "disc (mm)", 1e3 * row.thickness,
                         OfSteel(MagnetOverADisc(0.001, row.thickness)), AlongZ(row.force), Vector3d::Zero(), 2e-2});
    }
    return cases;
}

} // namespace iron
