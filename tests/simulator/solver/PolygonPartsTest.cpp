// Polygons of many edges, cut into parts of few.
#include "simulator/solver/PolygonParts.h"

#include "simulator/solver/PolygonIntegrals.h"
#include "tests/simulator/solver/Constants.h"
#include "tests/simulator/solver/Outlines.h"
#include "tests/simulator/solver/Shapes.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

using Eigen::Vector2d;
using Eigen::Vector3d;
using outlines::Circle;
using outlines::Corners;
using outlines::PolygonOf;
using outlines::Reversed;
using vantor::solver::ChargedPolygons;
using vantor::solver::CutToEdges;
using vantor::solver::Polygon;
using vantor::solver::SolidAngle;

namespace {

using references::pi;

/// Teeth of the given length, a tenth of a unit wide, on a back of a tenth.
Corners Comb(int teeth, double length) {
    Corners corners{{0, 0}, {0.2 * teeth - 0.1, 0}};
    for (int i = teeth - 1; i >= 0; --i) {
        corners.insert(corners.end(), {{0.2 * i + 0.1, 0.1 + length}, {0.2 * i, 0.1 + length}});
        if (i > 0) {
            corners.insert(corners.end(), {{0.2 * i, 0.1}, {0.2 * i - 0.1, 0.1}});
        }
    }
    return corners;
}

/// The integral of p p^T over the polygon, by the triangles between its edges and its centre.
Eigen::Matrix3d SquareSum(const Polygon& polygon) {
    Eigen::Matrix3d sum = polygon.area * polygon.centre * polygon.centre.transpose();
    for (const auto& edge : polygon.edges) {
        const Vector3d a = edge.start - polygon.centre, b = edge.At(edge.length) - polygon.centre;
        const double triangle = a.cross(b).dot(polygon.normal) / 2;
        sum += triangle / 12 * (a * a.transpose() + b * b.transpose() + (a + b) * (a + b).transpose());
    }
    return sum;
}

void ExpectWellFormed(const Polygon& part, const Polygon& whole) {
    EXPECT_GT(part.area, 0);
    EXPECT_EQ(part.normal, whole.normal);
    EXPECT_EQ(part.xAxis, whole.xAxis);
    EXPECT_EQ(part.yAxis, whole.yAxis);
    ASSERT_EQ(part.edges.size(), part.planeEdges.size());
    Vector3d around = Vector3d::Zero();
    double farthest = 0;
    for (const auto& edge : part.edges) {
        around += edge.length * edge.direction;
        farthest = std::max(farthest, (edge.start - part.centre).norm());
    }
    EXPECT_LE(around.norm(), 1e-13 * whole.radius * static_cast<double>(part.edges.size()));
    EXPECT_NEAR(part.radius, farthest, 1e-14 * whole.radius);
}

/// Compares the sums over all parts with the whole.
void ExpectSumsOf(const std::vector<Polygon>& parts, const Polygon& whole) {
    double area = 0;
    Vector3d first = Vector3d::Zero();
    Eigen::Matrix3d second = Eigen::Matrix3d::Zero();
    for (const Polygon& part : parts) {
        ExpectWellFormed(part, whole);
        area += part.area;
        first += part.area * part.centre;
        second += SquareSum(part);
    }
    const double size = whole.centre.norm() + whole.radius;
    EXPECT_NEAR(area, whole.area, 1e-13 * pi * whole.radius * whole.radius);
    EXPECT_LE((first - whole.area * whole.centre).norm(), 1e-13 * whole.area * size);
    EXPECT_LE((second - SquareSum(whole)).norm(), 1e-13 * whole.area * size * size);
    std::mt19937 random(7);
    std::uniform_real_distribution<double> anywhere(-1.2, 1.2);
    for (int i = 0; i < 20; ++i) {
        const Vector3d point =
            whole.centre + whole.radius * Vector3d(anywhere(random), anywhere(random), anywhere(random));
        double angle = 0;
        for (const Polygon& part : parts) {
            angle += SolidAngle(part, point);
        }
        EXPECT_NEAR(angle, SolidAngle(whole, point), 1e-10) << "at " << point.transpose();
    }
}

/// Cuts, and compares.
std::vector<Polygon> ExpectSums(const Polygon& whole, std::size_t mostEdges) {
    std::vector<Polygon> parts = CutToEdges(whole, mostEdges);
    for (const Polygon& part : parts) {
        EXPECT_LE(part.edges.size(), mostEdges);
    }
    ExpectSumsOf(parts, whole);
    return parts;
}

/// The polygon made simpler as often as it can be: the simplest one last, after what lies between.
std::vector<Polygon> SimplifiedToTheEnd(const Polygon& whole) {
    std::vector<Polygon> parts;
    Polygon simplest = whole;
    while (auto simpler = vantor::solver::Simplified(simplest)) {
        for (const Polygon& part : simpler->rest) {
            EXPECT_LE(part.edges.size(), 6U);
        }
        parts.insert(parts.end(), simpler->rest.begin(), simpler->rest.end());
        simplest = simpler->simple;
    }
    parts.push_back(simplest);
    return parts;
}

} // namespace

TEST(PolygonParts, LeaveAPolygonOfFewEdgesAsItIs) {
    const Polygon square = PolygonOf({Circle(4, 1, {0, 0})});
    const std::vector<Polygon> parts = CutToEdges(square, 4);
    ASSERT_EQ(parts.size(), 1U);
    EXPECT_EQ(parts[0].centre, square.centre);
    EXPECT_EQ(parts[0].area, square.area);
    EXPECT_EQ(parts[0].edges.size(), 4U);
}

TEST(PolygonParts, CutAnOctagonThroughItsMiddle) {
    const std::vector<Polygon> parts = ExpectSums(PolygonOf({Circle(8, 1, {0, 0})}), 6);
    ASSERT_EQ(parts.size(), 2U);
    EXPECT_EQ(parts[0].edges.size(), 6U);
    EXPECT_NEAR(parts[0].area, std::sqrt(2.0), 1e-14);
    EXPECT_NEAR(parts[1].area, std::sqrt(2.0), 1e-14);
}

TEST(PolygonParts, SumToAnAnnulus) {
    shapes::Prism ring;
    ring.sides = 1250;
    ring.innerRadius = 0.6;
    for (const Polygon& cap : ChargedPolygons(MeshOf(ring), Vector3d::UnitZ())) {
        ASSERT_EQ(cap.edges.size(), 2500U);
        // Ten edges are two of a cut and about four of either circle.
        EXPECT_LE(ExpectSums(cap, 10).size(), 700U);
        EXPECT_LE(ExpectSums(cap, 50).size(), 64U);
    }
}

TEST(PolygonParts, SumToACombWhicheverItsLongSide) {
    EXPECT_LE(ExpectSums(PolygonOf({Comb(100, 1)}), 12).size(), 100U);
    EXPECT_LE(ExpectSums(PolygonOf({Comb(100, 1000)}), 12).size(), 100U);
}

TEST(PolygonParts, SumToAPlateWithFiveHoles) {
    std::vector<Corners> outlines{Circle(60, 1, {0, 0})};
    for (const Vector2d& centre :
         {Vector2d(0, 0), Vector2d(0.5, 0), Vector2d(-0.5, 0), Vector2d(0, 0.5), Vector2d(0, -0.5)}) {
        outlines.push_back(Reversed(Circle(40, 0.2, centre)));
    }
    const Polygon plate = PolygonOf(outlines);
    ExpectSums(plate, 6);
    ExpectSums(plate, 16);
    ExpectSums(plate, 100);
}

TEST(PolygonParts, SumToRandomStars) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> radius(0.1, 1);
    for (const int count : {7, 20, 333, 2000}) {
        Corners corners = Circle(count, 1, {0, 0});
        for (Vector2d& corner : corners) {
            corner *= radius(random);
        }
        ExpectSums(PolygonOf({corners}), 10);
        ExpectSums(PolygonOf({corners}), 40);
    }
}

TEST(PolygonParts, EndWhereCornersCannotBeToldApart) {
    // Slits without width between two halves, as thousands of corners on two lines.
    Corners corners{{0, 0}, {1, 0}, {1, 1}};
    for (int i = 0; i < 2000; ++i) {
        corners.insert(corners.end(), {{0.5, 1}, {0.5, 0.5}, {0.5, 1}});
    }
    corners.push_back({0, 1});
    const Polygon slit = PolygonOf({corners});
    double area = 0;
    for (const Polygon& part : CutToEdges(slit, 6)) {
        ExpectWellFormed(part, slit);
        area += part.area;
    }
    EXPECT_NEAR(area, 1, 1e-12);
    // A sliver, thinner than any line could keep clear of.
    const std::vector<Polygon> sliver = CutToEdges(PolygonOf({{{0, 0}, {1e-13, 0}, {1e-13, 1e-13}, {0, 1}}}), 3);
    EXPECT_LE(sliver.size(), 2U);
}

/// Round outlines become a dozen edges or two, and nearly all of the area is in them.
TEST(SimplerPolygons, SumToAnAnnulus) {
    shapes::Prism ring;
    ring.sides = 1250;
    ring.innerRadius = 0.6;
    const Polygon cap = ChargedPolygons(MeshOf(ring), Vector3d::UnitZ()).at(0);
    const std::vector<Polygon> parts = SimplifiedToTheEnd(cap);
    ExpectSumsOf(parts, cap);
    EXPECT_LE(parts.back().edges.size(), 60U);
    EXPECT_GT(parts.back().area, 0.9 * cap.area);
    EXPECT_LT(parts.back().area, cap.area);
    // Nothing reaches beyond the ring, where another magnet may be.
    for (const Polygon& part : parts) {
        for (const auto& edge : part.edges) {
            const double radius = std::hypot(edge.start.x(), edge.start.y());
            EXPECT_TRUE(radius > 0.6 * std::cos(pi / 1250) - 1e-12 && radius < 1 + 1e-12) << radius;
            const Vector3d middle = edge.At(edge.length / 2);
            EXPECT_GT(std::hypot(middle.x(), middle.y()), 0.6 * std::cos(pi / 1250) - 1e-12);
        }
    }
}

TEST(SimplerPolygons, SumToAPlateWithHolesAndToOneThatBendsToBothSides) {
    const Polygon plate = PolygonOf({Circle(100, 1, {0, 0}), Reversed(Circle(60, 0.1, {0.4, 0.3})),
                                     Reversed(Circle(80, 0.2, {-0.4, 0})), Reversed(Circle(40, 0.01, {0, -0.5}))});
    ExpectSumsOf(SimplifiedToTheEnd(plate), plate);
    Corners wavy = Circle(600, 1, {0, 0});
    for (std::size_t i = 0; i < wavy.size(); ++i) {
        wavy[i] *= 1 + 0.1 * std::sin(14 * pi * static_cast<double>(i) / 600);
    }
    const Polygon flower = PolygonOf({wavy});
    const std::vector<Polygon> parts = SimplifiedToTheEnd(flower);
    ExpectSumsOf(parts, flower);
    EXPECT_LE(parts.back().edges.size(), 200U);
}

TEST(SimplerPolygons, AreNoneOfThoseThatAreSimple) {
    EXPECT_FALSE(vantor::solver::Simplified(PolygonOf({Circle(4, 1, {0, 0})})).has_value());
    EXPECT_FALSE(vantor::solver::Simplified(PolygonOf({Comb(20, 1)})).has_value());
}

TEST(Strips, AreCutInTheMiddleUntilTheyAreSlenderNoMore) {
    const Polygon strip = PolygonOf({{{0, 0}, {10, 0}, {10, 0.1}, {0, 0.1}}});
    EXPECT_TRUE(vantor::solver::IsSlender(strip));
    EXPECT_FALSE(vantor::solver::IsSlender(PolygonOf({Circle(3, 1, {0, 0})})));
    const std::vector<Polygon> halves = vantor::solver::CutInMiddle(strip);
    ASSERT_EQ(halves.size(), 2U);
    ExpectSumsOf(halves, strip);
    EXPECT_NEAR(halves[0].area, 0.5, 1e-12);
    EXPECT_NEAR(halves[0].radius, std::hypot(2.5, 0.05), 1e-12);
}
