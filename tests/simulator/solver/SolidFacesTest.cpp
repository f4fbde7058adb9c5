// The faces of solids, alone and where they touch.
#include "simulator/solver/SolidFaces.h"

#include "simulator/solver/PolygonIntegrals.h"
#include "tests/simulator/solver/Shapes.h"

#include <cmath>
#include <gtest/gtest.h>

using Eigen::Vector3d;
using shapes::Block;
using shapes::Prism;
using vantor::solver::FacesOf;
using vantor::solver::Solid;
using vantor::solver::SolidFace;
using vantor::solver::SolveError;
using vantor::solver::TriangleMesh;

namespace {

constexpr double pi = 3.14159265358979323846;

Solid SolidOf(TriangleMesh mesh, std::string label = "solid") {
    return {std::move(label), shapes::Shared(std::move(mesh)), Eigen::Isometry3d::Identity()};
}

template <class Shape>
Solid SolidOf(const Shape& shape, const std::string& label = "solid") {
    return SolidOf(MeshOf(shape), label);
}

/// From one corner to the opposite one.
Block BlockBetween(const Vector3d& low, const Vector3d& high) {
    Block block;
    block.centre = (low + high) / 2;
    block.size = high - low;
    return block;
}

double AreaOf(const std::vector<SolidFace>& faces) {
    double area = 0;
    for (const SolidFace& face : faces) {
        area += face.polygon.area;
    }
    return area;
}

/// The solid's faces are closed: their area vectors cancel, and a point inside sees 4 pi of them.
void ExpectClosed(const std::vector<SolidFace>& faces, std::size_t solid, const Vector3d& inside,
                  double tolerance = 1e-12) {
    Vector3d areas = Vector3d::Zero();
    double area = 0, angle = 0;
    for (const SolidFace& face : faces) {
        const double side = face.inside == solid ? 1 : face.outside == solid ? -1 : 0;
        areas += side * face.polygon.area * face.polygon.normal;
        area += std::abs(side) * face.polygon.area;
        angle -= side * SolidAngle(face.polygon, inside);
    }
    EXPECT_LE(areas.norm(), tolerance * area) << "solid " << solid;
    EXPECT_NEAR(angle, 4 * pi, 10 * tolerance) << "solid " << solid;
}

template <class Act>
std::string MessageOf(const Act& act) {
    try {
        act();
    } catch (const SolveError& error) {
        return error.what();
    }
    return "no error";
}

} // namespace

TEST(SolidFaces, OfABlockAreItsSixSidesWhereItsPosePutsThem) {
    Solid solid = SolidOf(shapes::Finer(MeshOf(BlockBetween({0, 0, 0}, {1, 2, 3})), 2));
    solid.pose.linear() = shapes::Turn(0.7, {1, 2, 3});
    solid.pose.translation() = Vector3d(5, 6, 7);
    const std::vector<SolidFace> faces = FacesOf({solid});
    ASSERT_EQ(faces.size(), 6U);
    for (const SolidFace& face : faces) {
        EXPECT_EQ(face.inside, 0U);
        EXPECT_FALSE(face.outside);
        EXPECT_EQ(face.polygon.edges.size(), 4U);
    }
    EXPECT_NEAR(AreaOf(faces), 22, 1e-12);
    ExpectClosed(faces, 0, solid.pose * Vector3d(0.3, 1.6, 2));
}

TEST(SolidFaces, OfSolidsFarApartAreThoseOfEachInTurn) {
    Prism ring;
    ring.innerRadius = 0.5;
    ring.centre = {0, 0, 5};
    const std::vector<SolidFace> faces = FacesOf({SolidOf(Block{}), {"nothing", nullptr, {}}, SolidOf(ring)});
    ASSERT_EQ(faces.size(), 6U + 34U);
    for (std::size_t i = 0; i < faces.size(); ++i) {
        EXPECT_EQ(faces[i].inside, i < 6 ? 0U : 2U);
        EXPECT_FALSE(faces[i].outside);
    }
    ExpectClosed(faces, 0, {0.1, 0.2, 0.3});
    ExpectClosed(faces, 2, {0.7, 0.1, 5.1});
}

TEST(SolidFaces, RefuseMeshesThatBoundNoMaterial) {
    const TriangleMesh block = MeshOf(Block{});
    TriangleMesh open = block, turned = block, endless = block, astray = block;
    open.triangles.pop_back();
    for (auto& triangle : turned.triangles) {
        std::swap(triangle[0], triangle[1]);
    }
    endless.vertices[5].x() = std::nan("");
    astray.triangles[3][1] = 8;
    Solid lost = SolidOf(block, "\"lost\"");
    lost.pose.translation().y() = std::numeric_limits<double>::infinity();
    const auto refusal = [](const Solid& solid) { return MessageOf([&] { FacesOf({SolidOf(Block{}), solid}); }); };
    EXPECT_NE(refusal(SolidOf(open, "\"open\"")).find("The mesh of \"open\" is not closed"), std::string::npos);
    EXPECT_NE(refusal(SolidOf(turned, "\"turned\"")).find("\"turned\" encloses no volume"), std::string::npos);
    EXPECT_NE(refusal(SolidOf(endless, "\"endless\"")).find("Vertex 5 of \"endless\" is not finite"),
              std::string::npos);
    EXPECT_NE(refusal(SolidOf(astray, "\"astray\"")).find("Triangle 3 of \"astray\""), std::string::npos);
    EXPECT_NE(refusal(lost).find("The pose of \"lost\" is not finite"), std::string::npos);
}
