// How meshes become flat polygons.
#include "simulator/solver/Polygon.h"

#include "tests/simulator/solver/Constants.h"
#include "tests/simulator/solver/Shapes.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

using Eigen::Vector3d;
using vantor::solver::ChargedPolygons;
using vantor::solver::Polygon;
using vantor::solver::TriangleMesh;

namespace {

const Vector3d oblique(0.3, 0.2, 1);

/// Two meshes as one.
TriangleMesh Joined(TriangleMesh mesh, const TriangleMesh& other) {
    const int first = static_cast<int>(mesh.vertices.size());
    mesh.vertices.insert(mesh.vertices.end(), other.vertices.begin(), other.vertices.end());
    for (const auto& [a, b, c] : other.triangles) {
        mesh.triangles.push_back({first + a, first + b, first + c});
    }
    return mesh;
}

void ExpectSquare(const Polygon& polygon) {
    ASSERT_EQ(polygon.edges.size(), 4U);
    EXPECT_NEAR(polygon.area, 1, 1e-13);
    EXPECT_NEAR(polygon.radius, std::sqrt(0.5), 1e-14);
    EXPECT_NEAR(polygon.centre.norm(), 0.5, 1e-14);
    EXPECT_LE((polygon.centre.normalized() - polygon.normal).norm(), 1e-14);
    for (const auto& edge : polygon.edges) {
        EXPECT_NEAR(edge.length, 1, 1e-14);
        EXPECT_NEAR(edge.direction.cross(polygon.normal).dot(edge.outward), 1, 1e-14);
        EXPECT_NEAR((edge.start - polygon.centre).dot(edge.outward), 0.5, 1e-14);
    }
}

std::size_t Bytes(const Polygon& polygon) {
    return sizeof(polygon) + polygon.edges.capacity() * sizeof(polygon.edges[0]) +
           polygon.planeEdges.capacity() * sizeof(polygon.planeEdges[0]);
}

} // namespace

TEST(Polygons, AreTheFacesOfABlockHoweverFinelyItIsMeshed) {
    const TriangleMesh block = MeshOf(shapes::Block{});
    for (const TriangleMesh& mesh : {block, shapes::Finer(block, 5), shapes::Unshared(shapes::Finer(block, 4))}) {
        const std::vector<Polygon> polygons = ChargedPolygons(mesh, oblique);
        ASSERT_EQ(polygons.size(), 6U);
        std::for_each(polygons.begin(), polygons.end(), ExpectSquare);
    }
}

TEST(Polygons, LeaveOutFacesAlongTheMagnetisation) {
    EXPECT_EQ(ChargedPolygons(MeshOf(shapes::Block{}), Vector3d::UnitX()).size(), 2U);
    EXPECT_EQ(ChargedPolygons({}, Vector3d::UnitX()).size(), 0U);
}

TEST(Polygons, TakeZeroesOfEitherSignForOneCorner) {
    TriangleMesh mesh = shapes::Unshared(shapes::Finer(MeshOf(shapes::Block{}), 1));
    for (std::size_t i = 0; i < mesh.vertices.size(); i += 2) {
        mesh.vertices[i] = mesh.vertices[i].unaryExpr([](double value) { return value == 0 ? -value : value; });
    }
    EXPECT_EQ(ChargedPolygons(mesh, oblique).size(), 6U);
}

TEST(Polygons, OfSmallFacetsThatDoNotMergeAreLean) {
    const TriangleMesh ball = shapes::Ball(5);
    const std::vector<Polygon> polygons = ChargedPolygons(ball, oblique);
    ASSERT_EQ(polygons.size(), ball.triangles.size());
    Vector3d areas = Vector3d::Zero();
    for (const Polygon& polygon : polygons) {
        areas += polygon.area * polygon.normal;
        EXPECT_EQ(polygon.edges.size(), 3U);
        EXPECT_LT(Bytes(polygon), 600U);
    }
    EXPECT_LE(areas.norm(), 1e-13);
    const std::vector<Polygon> again = ChargedPolygons(shapes::Unshared(ball), oblique);
    ASSERT_EQ(again.size(), polygons.size());
    for (std::size_t i = 0; i < again.size(); ++i) {
        EXPECT_EQ(again[i].centre, polygons[i].centre);
        EXPECT_EQ(again[i].xAxis, polygons[i].xAxis);
        EXPECT_EQ(again[i].radius, polygons[i].radius);
    }
}

TEST(Polygons, OfAFanKeepItsOutline) {
    shapes::Prism disc;
    disc.sides = 20000;
    const std::vector<Polygon> polygons = ChargedPolygons(MeshOf(disc), Vector3d::UnitZ());
    ASSERT_EQ(polygons.size(), 2U);
    for (const Polygon& cap : polygons) {
        EXPECT_EQ(cap.edges.size(), 20000U);
        EXPECT_NEAR(cap.area, 10000 * std::sin(2 * references::pi / 20000), 1e-12);
    }
}

TEST(Polygons, OfBlocksThatShareAFaceRunAlongBoth) {
    shapes::Block upper;
    upper.centre = {0, 0, 1};
    const TriangleMesh stack = Joined(MeshOf(shapes::Block{}), MeshOf(upper));
    const std::vector<Polygon> sides = ChargedPolygons(stack, Vector3d::UnitX());
    ASSERT_EQ(sides.size(), 2U);
    for (const Polygon& side : sides) {
        EXPECT_EQ(side.edges.size(), 4U);
        EXPECT_NEAR(side.area, 2, 1e-14);
    }
    const std::vector<Polygon> ends = ChargedPolygons(stack, Vector3d::UnitZ());
    ASSERT_EQ(ends.size(), 4U);
    for (const Polygon& end : ends) {
        EXPECT_EQ(end.edges.size(), 4U);
        EXPECT_NEAR(end.area, 1, 1e-14);
    }
}

TEST(Polygons, OfTheSameBlockTwiceHaveEveryEdgeTwice) {
    const TriangleMesh block = MeshOf(shapes::Block{});
    const std::vector<Polygon> polygons = ChargedPolygons(Joined(block, block), oblique);
    ASSERT_EQ(polygons.size(), 6U);
    for (const Polygon& polygon : polygons) {
        EXPECT_EQ(polygon.edges.size(), 8U);
        EXPECT_NEAR(polygon.area, 2, 1e-14);
    }
}
