// Prisms with many sides, as cylinders and rings come out of a drawing program. Axially magnetised ones are compared
// with the current model of magnets, the others with integrals of closed sheet fields: the same facets each time.
#include "tests/simulator/solver/Comparison.h"

using Eigen::Vector3d;
using shapes::Prism;

namespace {

Prism Cylinder(const Vector3d& centre, const Vector3d& magnetisation) {
    Prism prism;
    prism.centre = centre;
    prism.radius = 0.01;
    prism.height = 0.008;
    prism.magnetisation = magnetisation;
    return prism;
}

Prism Ring(const Vector3d& centre, const Vector3d& magnetisation) {
    Prism prism = Cylinder(centre, magnetisation);
    prism.radius = 0.03;
    prism.innerRadius = 0.018;
    prism.sides = 20;
    return prism;
}

const Vector3d axial(0, 0, 8e5), diametral(8e5, 0, 0);

void ExpectAsCurrents(const Prism& source, const Prism& target) {
    comparison::ExpectPair(source, target, references::CurrentLoad(source, target), target.centre, target.radius);
}

void ExpectAsSheets(const Prism& source, const Prism& target) {
    const references::Load expected =
        references::SheetLoad(references::SheetsOf(source), references::SheetsOf(target), 1e-6);
    comparison::ExpectPair(source, target, expected, target.centre, target.radius);
}

} // namespace

TEST(RoundMagnets, CylindersOnOneAxis) {
    for (const double gap : {0.003, 0.01, 0.03}) {
        ExpectAsCurrents(Cylinder(Vector3d::Zero(), axial), Cylinder({0, 0, 0.008 + gap}, axial));
    }
}

TEST(RoundMagnets, CylindersSideBySideAndOffset) {
    ExpectAsCurrents(Cylinder(Vector3d::Zero(), axial), Cylinder({0.024, 0.001, 0.002}, axial));
    ExpectAsCurrents(Cylinder(Vector3d::Zero(), axial), Cylinder({0.007, 0.002, 0.012}, -axial));
}

TEST(RoundMagnets, CylinderOverARing) {
    ExpectAsCurrents(Ring(Vector3d::Zero(), axial), Cylinder({0, 0, 0.015}, axial));
    ExpectAsCurrents(Ring(Vector3d::Zero(), axial), Cylinder({0.01, 0.004, 0.013}, axial));
}

TEST(RoundMagnets, CylinderInARing) {
    ExpectAsCurrents(Ring(Vector3d::Zero(), axial), Cylinder({0, 0, 0.004}, axial));
    ExpectAsCurrents(Ring(Vector3d::Zero(), axial), Cylinder({0.003, 0.001, 0.001}, axial));
}

TEST(RoundMagnets, TwoRings) {
    ExpectAsCurrents(Ring(Vector3d::Zero(), axial), Ring({0.005, 0, 0.012}, axial));
}

TEST(RoundMagnets, CylindersMagnetisedAcross) {
    ExpectAsSheets(Cylinder(Vector3d::Zero(), diametral), Cylinder({0.0001, 0, 0.0081}, diametral));
    ExpectAsSheets(Cylinder(Vector3d::Zero(), diametral), Cylinder({0.021, 0.003, 0.001}, {0, 8e5, 0}));
}

TEST(RoundMagnets, CylinderInARingMagnetisedAcross) {
    ExpectAsSheets(Ring(Vector3d::Zero(), diametral), Cylinder({0, 0, 0.002}, {5e5, 5e5, 0}));
}

/// From outside, a ball is a dipole in its centre; a finely meshed one approaches it. Its 512 faces per ball also take
/// the road of distant faces.
TEST(RoundMagnets, BallsAreDipoles) {
    const Vector3d m1(2e5, -3e5, 8e5), m2(7e5, 1e5, -4e5), to(0.6, 0.4, 3.4);
    vantor::solver::Body first{"first", {{"ball", shapes::Shared(shapes::Ball(3)), m1}}};
    vantor::solver::Body second{"second", {{"ball", shapes::Shared(shapes::Ball(3)), m2}}};
    for (Vector3d& vertex : shapes::OwnMesh(second.magnets[0]).vertices) {
        vertex += to;
    }
    // The volume of the facetted ball, found from its cross sections, stands for that of the round one.
    double volume = 0;
    for (const auto& [a, b, c] : first.magnets[0].mesh->triangles) {
        const auto& v = first.magnets[0].mesh->vertices;
        volume +=
            v[static_cast<std::size_t>(a)].dot(v[static_cast<std::size_t>(b)].cross(v[static_cast<std::size_t>(c)])) /
            6;
    }
    const vantor::solver::Solution solution = vantor::solver::Solve({first, second});
    const references::Load expected = references::DipoleLoad(Vector3d::Zero(), volume * m1, to, volume * m2);
    EXPECT_TRUE(solution.converged);
    EXPECT_LE((solution.loads[1].force - expected.force).norm(), 2e-3 * expected.force.norm());
    EXPECT_LE((solution.loads[1].torque - expected.torque).norm(), 2e-3 * expected.torque.norm());
}
