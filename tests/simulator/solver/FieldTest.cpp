#include "tests/simulator/solver/Constants.h"
#include "tests/simulator/solver/References.h"

#include <cmath>
#include <gtest/gtest.h>

using Eigen::Vector3d;
using vantor::solver::Body;
using vantor::solver::FieldEvaluator;
using vantor::solver::FieldH;

namespace {

shapes::Block Slanted() {
    shapes::Block block;
    block.centre = {0.1, -0.2, 0.3};
    block.size = {0.2, 0.1, 0.05};
    block.rotation = shapes::Turn(0.7, {1, 2, -1});
    block.magnetisation = {3e5, -5e5, 7e5};
    return block;
}

} // namespace

TEST(Field, AgreesWithTheClosedFormOutsideAndInside) {
    const shapes::Block block = Slanted();
    const std::vector<references::Sheet> sheets = references::SheetsOf(block);
    const FieldEvaluator field({BodyOf("body", block)});
    for (const Vector3d& place : {Vector3d(0.01, 0.02, 0.01), Vector3d(0.3, 0.1, 0.2), Vector3d(-0.05, 0.051, 0.026),
                                  Vector3d(0.1001, 0.0501, 0.0251), Vector3d(0, 0, 0.0250001), Vector3d(5, 4, -3)}) {
        const Vector3d point = block.centre + block.rotation * place;
        const Vector3d expected = references::FieldOf(sheets, point);
        EXPECT_LE((field.H(point) - expected).norm(), 1e-9 * expected.norm()) << place.transpose();
    }
}

TEST(Field, JumpsByTheChargeAcrossAFaceAndIsTheMeanOnIt) {
    shapes::Block block;
    block.magnetisation = {0, 0, 1000};
    const FieldEvaluator field({BodyOf("body", block)});
    const double above = field.H({0.1, 0.2, 0.5 + 1e-12}).z(), below = field.H({0.1, 0.2, 0.5 - 1e-12}).z();
    EXPECT_NEAR(above - below, 1000, 1e-6);
    EXPECT_NEAR(field.H({0.1, 0.2, 0.5}).z(), (above + below) / 2, 1e-6);
}

TEST(Field, KnowsWhichPointsAreMagnetised) {
    const shapes::Block block = Slanted();
    const FieldEvaluator field({BodyOf("body", block)});
    const auto share = [&](const Vector3d& place) {
        const Vector3d m = field.M(block.centre + block.rotation * place);
        const double part = m.dot(block.magnetisation) / block.magnetisation.squaredNorm();
        EXPECT_LE((m - part * block.magnetisation).norm(), 1e-9 * block.magnetisation.norm());
        return part;
    };
    EXPECT_NEAR(share({0, 0, 0}), 1, 1e-12);
    EXPECT_NEAR(share({0.0999, -0.0499, 0.0249}), 1, 1e-9);
    EXPECT_NEAR(share({0.1001, 0, 0}), 0, 1e-9);
    EXPECT_NEAR(share({0.1, 0.01, 0.003}), 0.5, 1e-9) << "on a face";
    EXPECT_NEAR(share({0.1, 0.025, 0.0125}), 0.5, 1e-9) << "on the line between two triangles of a face";
    EXPECT_NEAR(share({0.1, 0.05, 0.01}), 0.25, 1e-9) << "on an edge";
    EXPECT_NEAR(share({5, 4, -3}), 0, 0);
}

/// Of B the component across a face, of H the components along it are the same on both sides.
TEST(Field, OfFluxIsContinuousAcrossAFace) {
    shapes::Block block;
    block.magnetisation = {300, 200, 1000};
    const FieldEvaluator field({BodyOf("body", block)});
    const auto flux = [&](double z) -> Vector3d { return field.H({0.1, 0.2, z}) + field.M({0.1, 0.2, z}); };
    EXPECT_NEAR(flux(0.5 + 1e-9).z(), flux(0.5 - 1e-9).z(), 1e-4);
    EXPECT_NEAR(flux(0.5).z(), flux(0.5 - 1e-9).z(), 1e-4);
    EXPECT_NEAR(field.H({0.1, 0.2, 0.5 + 1e-9}).x(), field.H({0.1, 0.2, 0.5 - 1e-9}).x(), 1e-4);
}

TEST(Field, IsFiniteOnFacesEdgesCornersAndTheirExtensions) {
    shapes::Block block;
    block.magnetisation = {300, 200, 1000};
    const FieldEvaluator field({BodyOf("body", block)});
    for (const double x : {-2.0, -0.5, 0.0, 0.1, 0.5, 2.0}) {
        for (const double y : {-2.0, -0.5, 0.0, 0.1, 0.5, 2.0}) {
            for (const double z : {-2.0, -0.5, 0.0, 0.1, 0.5, 2.0}) {
                EXPECT_TRUE(field.H({x, y, z}).allFinite()) << x << ' ' << y << ' ' << z;
            }
        }
    }
}

/// The field far from an edge's line but in line with it comes from closed forms that divide 0 by 0 when written
/// plainly.
TEST(Field, IsAccurateInLineWithAnEdge) {
    shapes::Block block;
    block.magnetisation = {0, 0, 1000};
    const FieldEvaluator field({BodyOf("body", block)});
    const Vector3d on(0.9, 0.5, 0.5);
    const Vector3d mean = (references::FieldOf(references::SheetsOf(block), on + Vector3d(0, 1e-6, 1e-6)) +
                           references::FieldOf(references::SheetsOf(block), on - Vector3d(0, 1e-6, 1e-6))) /
                          2;
    EXPECT_LE((field.H(on) - mean).norm(), 1e-5 * mean.norm());
}

TEST(Field, OfATetrahedronIsThatOfItsCharges) {
    Body body{"body", {{"tetrahedron", shapes::Shared({}), Vector3d(100, 200, 300)}}};
    auto& mesh = shapes::OwnMesh(body.magnets[0]);
    mesh.vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    mesh.triangles = {{0, 2, 1}, {0, 1, 3}, {0, 3, 2}, {1, 2, 3}};
    const Vector3d point(0.7, 0.6, 0.9);
    // Point charges in the middles of ever smaller triangles.
    const vantor::solver::TriangleMesh fine = shapes::Finer(mesh, 7);
    Vector3d expected = Vector3d::Zero();
    for (const auto& triangle : fine.triangles) {
        const auto corner = [&](std::size_t i) { return fine.vertices[static_cast<std::size_t>(triangle[i])]; };
        const Vector3d middle = (corner(0) + corner(1) + corner(2)) / 3, away = point - middle;
        Vector3d area = Vector3d::Zero();
        for (std::size_t i = 0; i < 3; ++i) {
            const Vector3d a = corner(i), b = corner((i + 1) % 3);
            area +=
                Vector3d(a.y() * b.z() - a.z() * b.y(), a.z() * b.x() - a.x() * b.z(), a.x() * b.y() - a.y() * b.x()) /
                2;
        }
        expected += area.dot(body.magnets[0].magnetisation) / (4 * references::pi) * away / std::pow(away.norm(), 3);
    }
    EXPECT_LE((FieldH({body}, point) - expected).norm(), 1e-4 * expected.norm());
}

TEST(Field, OfSeveralBodiesAddsUpAndOfNoneIsZero) {
    shapes::Block one = Slanted(), other;
    other.centre = {2, 0, 0};
    const Vector3d point(1, 0.3, 0.2);
    const Vector3d both = FieldH({BodyOf("one", one), BodyOf("other", other)}, point);
    const Vector3d sum = FieldH({BodyOf("one", one)}, point) + FieldH({BodyOf("other", other)}, point);
    EXPECT_LE((both - sum).norm(), 1e-10 * sum.norm());
    EXPECT_TRUE(FieldH({}, point).isZero(0));
}
