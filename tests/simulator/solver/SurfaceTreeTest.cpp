// Trees of triangles against all pairs of triangles.
#include "simulator/solver/SurfaceTree.h"

#include "tests/simulator/solver/Shapes.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <random>

using Eigen::Isometry3d;
using Eigen::Vector3d;
using shapes::Block;
using shapes::Prism;
using vantor::solver::Contains;
using vantor::solver::Meet;
using vantor::solver::SurfaceTree;
using vantor::solver::TriangleMesh;

namespace {

using Triangle = std::array<Vector3d, 3>;
const Isometry3d home = Isometry3d::Identity();

Isometry3d PoseOf(const Vector3d& translation, double angle = 0, const Vector3d& axis = Vector3d::UnitZ()) {
    Isometry3d pose = home;
    pose.linear() = shapes::Turn(angle, axis);
    pose.translation() = translation;
    return pose;
}

std::vector<Triangle> TrianglesOf(const TriangleMesh& mesh, const Isometry3d& pose) {
    std::vector<Triangle> triangles;
    for (const auto& triangle : mesh.triangles) {
        const auto corner = [&](std::size_t i) -> Vector3d {
            return pose * mesh.vertices[static_cast<std::size_t>(triangle[i])];
        };
        triangles.push_back({corner(0), corner(1), corner(2)});
    }
    return triangles;
}

/// Distance of a point from a triangle: by its plane where it is above it, else by the nearest edge.
double Distance(const Triangle& triangle, const Vector3d& point) {
    const Vector3d normal = (triangle[1] - triangle[0]).cross(triangle[2] - triangle[0]).normalized();
    double least = std::numeric_limits<double>::infinity();
    bool above = true;
    for (std::size_t i = 0; i < 3; ++i) {
        const Vector3d along = triangle[(i + 1) % 3] - triangle[i], offset = point - triangle[i];
        const double t = std::clamp(along.dot(offset) / along.squaredNorm(), 0.0, 1.0);
        least = std::min(least, (offset - t * along).norm());
        above = above && along.cross(offset).dot(normal) >= 0;
    }
    return above ? std::abs(normal.dot(point - triangle[0])) : least;
}

/// Least distance of a triangle from the edges of another one, 0 where one of them passes through it.
double DistanceFromEdges(const Triangle& a, const Triangle& b) {
    double least = std::numeric_limits<double>::infinity();
    const Vector3d normal = (a[1] - a[0]).cross(a[2] - a[0]);
    for (std::size_t i = 0; i < 3; ++i) {
        const Vector3d &from = b[i], &to = b[(i + 1) % 3];
        const double start = normal.dot(from - a[0]), end = normal.dot(to - a[0]);
        if (start * end < 0 && Distance(a, from + start / (start - end) * (to - from)) < 1e-12) {
            return 0;
        }
        // The distance is a convex function along the edge.
        double low = 0, high = 1;
        for (int step = 0; step < 45; ++step) {
            const double first = low + (high - low) / 3, second = high - (high - low) / 3;
            const bool falls = Distance(a, from + first * (to - from)) > Distance(a, from + second * (to - from));
            (falls ? low : high) = falls ? first : second;
        }
        least = std::min(least, Distance(a, from + low * (to - from)));
    }
    return least;
}

/// No more than the distance of two triangles.
double DistanceOfBoxes(const Triangle& a, const Triangle& b) {
    Eigen::AlignedBox3d boxA, boxB;
    for (std::size_t i = 0; i < 3; ++i) {
        boxA.extend(a[i]);
        boxB.extend(b[i]);
    }
    return boxA.exteriorDistance(boxB);
}

double Distance(const std::vector<Triangle>& a, const std::vector<Triangle>& b) {
    double least = std::numeric_limits<double>::infinity();
    for (const Triangle& first : a) {
        for (const Triangle& second : b) {
            least = std::min(least, Distance(first, second[0]));
        }
    }
    for (const Triangle& first : a) {
        for (const Triangle& second : b) {
            if (DistanceOfBoxes(first, second) > least) {
                continue;
            }
            least = std::min({least, DistanceFromEdges(first, second), DistanceFromEdges(second, first)});
        }
    }
    return least;
}

/// 4 pi inside, 0 outside.
double SolidAngle(const std::vector<Triangle>& surface, const Vector3d& point) {
    double angle = 0;
    for (const auto& [first, second, third] : surface) {
        const Vector3d a = first - point, b = second - point, c = third - point;
        angle += 2 * std::atan2(a.dot(b.cross(c)), a.norm() * b.norm() * c.norm() + a.dot(b) * c.norm() +
                                                       b.dot(c) * a.norm() + c.dot(a) * b.norm());
    }
    return angle;
}

Prism Ring(double innerRadius, double outerRadius, int sides) {
    Prism ring;
    ring.innerRadius = innerRadius;
    ring.radius = outerRadius;
    ring.sides = sides;
    ring.height = 0.01;
    return ring;
}

double Seconds(const std::function<void()>& work) {
    double least = std::numeric_limits<double>::infinity();
    for (int i = 0; i < 3; ++i) {
        const auto start = std::chrono::steady_clock::now();
        work();
        least = std::min(least, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    return least;
}

} // namespace

TEST(SurfaceTree, MeetsAsAllPairsOfTrianglesDo) {
    Prism ring = Ring(0.7, 1, 9);
    ring.height = 0.4;
    Block plate;
    plate.size = {1.5, 0.8, 0.05};
    const std::vector<TriangleMesh> meshes{shapes::Ball(1), MeshOf(ring), shapes::Finer(MeshOf(plate), 1)};
    std::mt19937 random(11);
    std::uniform_real_distribution<double> anywhere(-1, 1);
    const auto direction = [&] { return Vector3d(anywhere(random), anywhere(random), anywhere(random)); };
    int meetings = 0, comparisons = 0;
    for (int i = 0; i < 60; ++i) {
        const TriangleMesh &a = meshes[static_cast<std::size_t>(i) % 3],
                           &b = meshes[static_cast<std::size_t>(i / 3) % 3];
        const Isometry3d poseA = PoseOf(direction(), 3 * anywhere(random), direction());
        const Isometry3d poseB = poseA * PoseOf(1.6 * direction(), 3 * anywhere(random), direction());
        const double distance = Distance(TrianglesOf(a, poseA), TrianglesOf(b, poseB));
        for (const double tolerance : {1e-9, 0.9 * distance, 1.1 * distance, 0.1}) {
            if (tolerance > 0) {
                EXPECT_EQ(Meet(SurfaceTree(a), poseA, SurfaceTree(b), poseB, tolerance), distance <= tolerance)
                    << "distance " << distance << ", tolerance " << tolerance << ", pair " << i;
                meetings += distance <= tolerance ? 1 : 0;
                ++comparisons;
            }
        }
    }
    EXPECT_GT(meetings, 40);
    EXPECT_GT(comparisons - meetings, 40);
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
    const std::vector<TriangleMesh> meshes{shapes::Ball(4), shapes::Finer(MeshOf(Ring(0.006, 0.01, 40)), 2),
                                           shapes::Finer(MeshOf(Block{}), 4)};
    std::mt19937 random(5);
    std::uniform_real_distribution<double> anywhere(-1, 1);
    for (const TriangleMesh& mesh : meshes) {
        const SurfaceTree tree(mesh);
        const Isometry3d pose = PoseOf({0.1, 0.2, -0.3}, 0.9, {1, -1, 2});
        const std::vector<Triangle> surface = TrianglesOf(mesh, pose);
        int inside = 0;
        for (int i = 0; i < 100; ++i) {
            const Vector3d corner(anywhere(random), anywhere(random), anywhere(random));
            const Vector3d point = pose * (0.55 * tree.Box().sizes().cwiseProduct(corner));
            const bool surrounded = SolidAngle(surface, point) > 6;
            EXPECT_EQ(Contains(tree, pose, point), surrounded) << point.transpose();
            inside += surrounded ? 1 : 0;
        }
        EXPECT_GT(inside, 20);
        EXPECT_LT(inside, 95);
    }
}

TEST(SurfaceTree, TellsInsideFromOutsideCloseToTheSurface) {
    const SurfaceTree ball(shapes::Ball(5));
    for (int i = 0; i < 50; ++i) {
        const Vector3d along = Vector3d(std::sin(1.1 * i), std::cos(1.7 * i), std::sin(0.6 * i + 1)).normalized();
        EXPECT_TRUE(Contains(ball, home, 0.997 * along));
        EXPECT_FALSE(Contains(ball, home, 1.0001 * along));
    }
}

TEST(SurfaceTree, KnowsAMagnetInABoreFromOneInAWall) {
    const SurfaceTree ring(shapes::Finer(MeshOf(Ring(0.02, 0.03, 60)), 2));
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
    // A hundred thousand triangles of a millimetre on either side, a tenth of a millimetre apart.
    const TriangleMesh mesh = shapes::Finer(MeshOf(Ring(0.04, 0.05, 24)), 4);
    const TriangleMesh around = shapes::Finer(MeshOf(Ring(0.0501, 0.06, 192)), 3);
    const TriangleMesh within = shapes::Finer(MeshOf(Ring(0.04, 0.05, 192)), 3);
    ASSERT_GT(around.triangles.size(), 98000U);
    const SurfaceTree ring(mesh), outer(around), inner(within);
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
