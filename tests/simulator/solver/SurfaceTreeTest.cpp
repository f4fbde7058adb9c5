// Trees of triangles against all pairs of triangles.
#include "simulator/solver/SurfaceTree.h"

#include "tests/simulator/solver/Shapes.h"
#include "tests/simulator/solver/SurfaceReferences.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <random>

using Eigen::Isometry3d;
using Eigen::Vector3d;
using references::Triangle;
using references::TrianglesOf;
using shapes::Block;
using shapes::Prism;
using vantor::solver::Contains;
using vantor::solver::Meet;
using vantor::solver::SurfaceTree;
using vantor::solver::TriangleMesh;

namespace {

const Isometry3d home = Isometry3d::Identity();

Isometry3d PoseOf(const Vector3d& translation, double angle = 0, const Vector3d& axis = Vector3d::UnitZ()) {
    Isometry3d pose = home;
    pose.linear() = shapes::Turn(angle, axis);
    pose.translation() = translation;
    return pose;
}

Prism Ring(double innerRadius, double outerRadius, int sides) {
    Prism ring;
    ring.innerRadius = innerRadius;
    ring.radius = outerRadius;
    ring.sides = sides;
    ring.height = 0.01;
    return ring;
}

/// The least of a few: what else runs on the machine only adds.
double Seconds(const std::function<void()>& work) {
    double least = 1e9;
    for (int i = 0; i < 4; ++i) {
        const auto start = std::chrono::steady_clock::now();
        work();
        least = std::min(least, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    return least;
}

} // namespace

TEST(SurfaceTree, MeetsAsAllPairsOfTrianglesDo) {
    Prism ring = Ring(0.7, 1, 6);
    ring.height = 0.4;
    Block plate;
    plate.size = {1.5, 0.8, 0.05};
    const std::vector<TriangleMesh> meshes{shapes::Ball(1), MeshOf(ring), MeshOf(plate)};
    std::mt19937 random(11);
    std::uniform_real_distribution<double> anywhere(-1, 1);
    const auto direction = [&] { return Vector3d(anywhere(random), anywhere(random), anywhere(random)); };
    int meetings = 0, comparisons = 0;
    for (int i = 0; i < 36; ++i) {
        const TriangleMesh &a = meshes[static_cast<std::size_t>(i) % 3],
                           &b = meshes[static_cast<std::size_t>(i / 3) % 3];
        const Isometry3d poseA = PoseOf(direction(), 3 * anywhere(random), direction());
        const Isometry3d poseB = poseA * PoseOf(1.6 * direction(), 3 * anywhere(random), direction());
        const double distance = references::Distance(TrianglesOf(a, poseA), TrianglesOf(b, poseB));
        for (const double tolerance : {1e-9, 0.9 * distance, 1.1 * distance, 0.1}) {
            if (tolerance > 0) {
                EXPECT_EQ(Meet(SurfaceTree(a), poseA, SurfaceTree(b), poseB, tolerance), distance <= tolerance)
                    << "distance " << distance << ", tolerance " << tolerance << ", pair " << i;
                meetings += distance <= tolerance ? 1 : 0;
                ++comparisons;
            }
        }
    }
    EXPECT_GT(meetings, 30);
    EXPECT_GT(comparisons - meetings, 30);
}

TEST(SurfaceTree, TellsGapsFromContactAtAnyPlace) {
    const SurfaceTree block(shapes::Finer(MeshOf(Block{}), 3));
    const Isometry3d far = PoseOf({1e5, -2e5, 3e5}, 0.7, {1, 2, 3});
    for (const Isometry3d& place : {home, far}) {
        const auto moved = [&](const Vector3d& by) {
            Isometry3d pose = place;
            pose.translation() += place.linear() * by;
            return pose;
        };
        EXPECT_TRUE(Meet(block, place, block, moved({0, 0, 0}), 1e-9));
        EXPECT_TRUE(Meet(block, place, block, moved({0.3, 0.2, 1}), 1e-9));
        EXPECT_TRUE(Meet(block, place, block, moved({1, 1, 1}), 1e-9));
        EXPECT_TRUE(Meet(block, place, block, moved({0.3, 0.2, 0.9999}), 1e-9));
        EXPECT_FALSE(Meet(block, place, block, moved({0.3, 0.2, 1.0001}), 1e-9));
        EXPECT_TRUE(Meet(block, place, block, moved({0.3, 0.2, 1.0001}), 1.1e-4));
        EXPECT_FALSE(Meet(block, place, block, moved({1.0001, 1.0001, 1.0001}), 1.1e-4));
        EXPECT_TRUE(Meet(block, place, block, moved({1.0001, 1.0001, 1.0001}), 1.8e-4));
    }
}

TEST(SurfaceTree, LeavesOutTrianglesWithoutArea) {
    TriangleMesh mesh = MeshOf(Block{});
    mesh.vertices.push_back({9, 9, 9});
    mesh.triangles.push_back({8, 8, 0});
    const SurfaceTree tree(mesh);
    EXPECT_EQ(tree.Box().max(), Vector3d::Constant(0.5));
    EXPECT_DOUBLE_EQ(tree.Radius(), std::sqrt(0.75));
    EXPECT_FALSE(Meet(tree, home, tree, PoseOf({4.5, 4.5, 4.5}), 1e-9));
    mesh.triangles = {{8, 8, 0}};
    const SurfaceTree nothing(mesh);
    EXPECT_TRUE(nothing.IsEmpty());
    EXPECT_FALSE(Meet(tree, home, nothing, home, 1));
    EXPECT_FALSE(Meet(nothing, home, tree, home, 1));
    EXPECT_FALSE(Contains(nothing, home, {0, 0, 0}));
}

TEST(SurfaceTree, ContainsWhatAllTrianglesSurround) {
    const std::vector<TriangleMesh> meshes{shapes::Ball(3), shapes::Finer(MeshOf(Ring(0.006, 0.01, 40)), 1),
                                           shapes::Finer(MeshOf(Block{}), 3)};
    std::mt19937 random(5);
    std::uniform_real_distribution<double> anywhere(-1, 1);
    for (const TriangleMesh& mesh : meshes) {
        const SurfaceTree tree(mesh);
        const Isometry3d pose = PoseOf({0.1, 0.2, -0.3}, 0.9, {1, -1, 2});
        const std::vector<Triangle> surface = TrianglesOf(mesh, pose);
        int inside = 0;
        for (int i = 0; i < 50; ++i) {
            const Vector3d corner(anywhere(random), anywhere(random), anywhere(random));
            const Vector3d point = pose * (0.55 * tree.Box().sizes().cwiseProduct(corner));
            const bool surrounded = references::SolidAngle(surface, point) > 6;
            EXPECT_EQ(Contains(tree, pose, point), surrounded) << point.transpose();
            inside += surrounded ? 1 : 0;
        }
        EXPECT_GT(inside, 10);
        EXPECT_LT(inside, 48);
    }
}

TEST(SurfaceTree, TellsInsideFromOutsideCloseToTheSurface) {
    const SurfaceTree ball(shapes::Ball(4));
    for (int i = 0; i < 20; ++i) {
        const Vector3d along = Vector3d(std::sin(1.1 * i), std::cos(1.7 * i), std::sin(0.6 * i + 1)).normalized();
        EXPECT_TRUE(Contains(ball, home, 0.99 * along));
        EXPECT_FALSE(Contains(ball, home, 1.0001 * along));
    }
}

TEST(SurfaceTree, KnowsAMagnetInABoreFromOneInAWall) {
    const SurfaceTree ring(shapes::Finer(MeshOf(Ring(0.02, 0.03, 60)), 1));
    Block small;
    small.size = Vector3d::Constant(0.004);
    const SurfaceTree magnet(MeshOf(small));
    EXPECT_FALSE(Meet(ring, home, magnet, PoseOf({0.01, 0, 0}), 1e-9));
    EXPECT_FALSE(Contains(ring, home, PoseOf({0.01, 0, 0}) * magnet.Point()));
    EXPECT_FALSE(Meet(ring, home, magnet, PoseOf({0.025, 0, 0}), 1e-9));
    EXPECT_TRUE(Contains(ring, home, PoseOf({0.025, 0, 0}) * magnet.Point()));
    EXPECT_FALSE(Contains(magnet, PoseOf({0.025, 0, 0}), ring.Point()));
}

TEST(SurfaceTree, LooksAtFewTrianglesAcrossAThinGap) {
    // Thousands of triangles of some millimetres on either side, a tenth of a millimetre apart.
    const SurfaceTree ring(shapes::Finer(MeshOf(Ring(0.04, 0.05, 24)), 2));
    const SurfaceTree inner(shapes::Finer(MeshOf(Ring(0.04, 0.05, 192)), 1));
    const TriangleMesh around = shapes::Finer(MeshOf(Ring(0.0501, 0.06, 192)), 1);
    const SurfaceTree outer(around);
    const double build = Seconds([&] { SurfaceTree tree(around); });
    for (const double angle : {0.0, 0.1}) {
        EXPECT_LT(Seconds([&] { EXPECT_FALSE(Meet(ring, home, ring, PoseOf({0, 0, 0.0101}, angle), 1e-10)); }), build);
        EXPECT_LT(Seconds([&] {
                      EXPECT_FALSE(Meet(outer, home, inner, PoseOf({0, 0, 0.0003}, angle), 1e-10));
                  }),
                  build);
    }
    const Isometry3d tilted = PoseOf({0, 0, 0.0101}, 0.0015, {1, 0.2, 0});
    EXPECT_LT(Seconds([&] { EXPECT_FALSE(Meet(ring, home, ring, tilted, 1e-10)); }), build);
    EXPECT_TRUE(Meet(ring, home, ring, PoseOf({0, 0, 0.0101}, 0.0025, {1, 0.2, 0}), 1e-10));
}
