// What polygons in one plane have in common.
#include "simulator/solver/PolygonOverlay.h"

#include "simulator/solver/PolygonIntegrals.h"
#include "tests/simulator/solver/Constants.h"
#include "tests/simulator/solver/Outlines.h"

#include <cmath>
#include <gtest/gtest.h>
#include <optional>
#include <random>

using Eigen::Vector2d;
using Eigen::Vector3d;
using outlines::Circle;
using outlines::Corners;
using outlines::PolygonOf;
using outlines::Reversed;
using vantor::solver::Overlay;
using vantor::solver::Polygon;
using vantor::solver::PolygonOverlay;

namespace {

using references::pi;
constexpr double snapDistance = 1e-7;

Corners Rectangle(double left, double bottom, double right, double top) {
    return {{left, bottom}, {right, bottom}, {right, top}, {left, top}};
}

Corners Turned(Corners corners, double angle, const Vector2d& shift = Vector2d::Zero()) {
    for (Vector2d& corner : corners) {
        corner = Eigen::Rotation2Dd(angle) * corner + shift;
    }
    return corners;
}

/// The same polygon seen from behind, with other axes.
Polygon FromBehind(const Polygon& polygon) {
    Polygon other;
    other.centre = polygon.centre;
    other.normal = -polygon.normal;
    other.xAxis = (polygon.xAxis + 2 * polygon.yAxis).normalized();
    other.yAxis = other.normal.cross(other.xAxis);
    other.area = polygon.area;
    std::vector<vantor::solver::PlaneSegment> segments;
    for (const auto& edge : polygon.edges) {
        const Vector3d start = edge.start - polygon.centre, end = edge.At(edge.length) - polygon.centre;
        segments.push_back(
            {{end.dot(other.xAxis), end.dot(other.yAxis)}, {start.dot(other.xAxis), start.dot(other.yAxis)}});
    }
    SetOutline(other, segments);
    return other;
}

double OutlinedArea(const std::vector<Polygon>& polygons) {
    double area = 0;
    for (const Polygon& polygon : polygons) {
        area += polygon.area;
    }
    return area;
}

double AngleOf(const std::vector<Polygon>& polygons, const Vector3d& point) {
    double angle = 0;
    for (const Polygon& polygon : polygons) {
        angle += SolidAngle(polygon, point);
    }
    return angle;
}

double Cross(const Vector2d& a, const Vector2d& b) {
    return a.x() * b.y() - a.y() * b.x();
}

/// What of a convex polygon lies to the left of a line.
Corners LeftOf(const Corners& corners, const Vector2d& from, const Vector2d& to) {
    Corners left;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const Vector2d &a = corners[i], &b = corners[(i + 1) % corners.size()];
        const double heightA = Cross(to - from, a - from), heightB = Cross(to - from, b - from);
        if (heightA >= 0) {
            left.push_back(a);
        }
        if ((heightA >= 0) != (heightB >= 0)) {
            left.push_back(a + heightA / (heightA - heightB) * (b - a));
        }
    }
    return left;
}

double SignedArea(const Corners& corners) {
    double area = 0;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        area += Cross(corners[i], corners[(i + 1) % corners.size()]) / 2;
    }
    return area;
}

/// Common area of two outlines, as the sum over the triangles between their edges and the origin.
double CommonArea(const Corners& first, const Corners& second) {
    double area = 0;
    for (std::size_t i = 0; i < first.size(); ++i) {
        Corners a{{0, 0}, first[i], first[(i + 1) % first.size()]};
        const double senseA = SignedArea(a) < 0 ? -1 : 1;
        a = senseA < 0 ? Reversed(a) : a;
        for (std::size_t j = 0; j < second.size(); ++j) {
            Corners b{{0, 0}, second[j], second[(j + 1) % second.size()]};
            const double senseB = SignedArea(b) < 0 ? -1 : 1;
            b = senseB < 0 ? Reversed(b) : b;
            Corners common = a;
            for (std::size_t k = 0; k < 3; ++k) {
                common = LeftOf(common, b[k], b[(k + 1) % 3]);
            }
            area += senseA * senseB * SignedArea(common);
        }
    }
    return area;
}

/// The parts cover both polygons, as far as areas and solid angles can tell.
/// @param error  metres by which outlines may have been moved
void ExpectParts(const PolygonOverlay& overlay, const Polygon& first, const Polygon& second, double error) {
    const double size = first.radius + second.radius;
    const double slack = error * 4 * size + 1e-13 * size * size;
    EXPECT_NEAR(OutlinedArea(overlay.common) + OutlinedArea(overlay.onlyFirst), first.area, slack);
    EXPECT_NEAR(OutlinedArea(overlay.common) + OutlinedArea(overlay.onlySecond), second.area, slack);
    const double sense = first.normal.dot(second.normal) < 0 ? -1 : 1;
    for (const double height : {0.3, -0.7}) {
        const Vector3d point = first.centre + size * Vector3d(0.1, -0.2, height);
        EXPECT_NEAR(AngleOf(overlay.common, point) + AngleOf(overlay.onlyFirst, point), SolidAngle(first, point),
                    20 * error / size + 1e-11);
        EXPECT_NEAR(sense * AngleOf(overlay.common, point) + AngleOf(overlay.onlySecond, point),
                    SolidAngle(second, point), 20 * error / size + 1e-11);
    }
}

/// No part is as narrow as what counts as one line.
void ExpectNoSlivers(const PolygonOverlay& overlay) {
    for (const auto* parts : {&overlay.common, &overlay.onlyFirst, &overlay.onlySecond}) {
        for (const Polygon& part : *parts) {
            double outline = 0;
            for (const auto& edge : part.edges) {
                outline += edge.length;
            }
            EXPECT_GT(2 * part.area, snapDistance / 2 * outline);
        }
    }
}

/// A polygon around the origin that is anything but round.
Corners Star(std::mt19937& random, int corners) {
    std::uniform_real_distribution<double> radius(0.3, 1);
    Corners star;
    for (int i = 0; i < corners; ++i) {
        const double angle = 2 * pi * i / corners;
        star.push_back(radius(random) * Vector2d(std::cos(angle), std::sin(angle)));
    }
    return star;
}

/// The parts are squares of side 2.
void ExpectSquares(const std::vector<Polygon>& parts, std::size_t count) {
    EXPECT_EQ(parts.size(), count);
    for (const Polygon& part : parts) {
        EXPECT_NEAR(part.area, 4, 1e-13);
        EXPECT_EQ(part.edges.size(), 4U);
        EXPECT_NEAR(part.radius, std::sqrt(2), 1e-13);
    }
}

/// Both polygons are one, but for rounding.
void ExpectOnlyCommon(const PolygonOverlay& overlay, const Polygon& polygon) {
    ASSERT_EQ(overlay.common.size(), 1U);
    EXPECT_TRUE(overlay.onlyFirst.empty());
    EXPECT_TRUE(overlay.onlySecond.empty());
    EXPECT_EQ(overlay.common[0].edges.size(), polygon.edges.size());
}

/// Somewhere near, turned anyhow.
Corners Displaced(const Corners& corners, double by, std::mt19937& random) {
    std::uniform_real_distribution<double> anywhere(-by, by);
    const double angle = anywhere(random), x = anywhere(random), y = anywhere(random);
    return Turned(corners, angle, {x, y});
}

} // namespace

TEST(PolygonOverlay, OfPolygonsApartIsNothing) {
    const Polygon first = PolygonOf({Rectangle(0, 0, 1, 1)});
    for (const Corners& corners : {Rectangle(2, 0, 3, 1), Rectangle(1, 0, 2, 1), Rectangle(1, 1, 2, 2)}) {
        const Polygon second = FromBehind(PolygonOf({corners}));
        EXPECT_FALSE(Overlay(first, second, snapDistance));
    }
}

TEST(PolygonOverlay, OfAPolygonWithItselfIsThePolygon) {
    const Polygon ring = PolygonOf({Circle(60, 1, {0, 0}), Reversed(Circle(50, 0.5, {0, 0}))});
    for (const Polygon& second : {ring, FromBehind(ring)}) {
        const PolygonOverlay overlay = Overlay(ring, second, snapDistance).value();
        ExpectOnlyCommon(overlay, ring);
        EXPECT_NEAR(OutlinedArea(overlay.common), ring.area, 1e-14);
    }
}

TEST(PolygonOverlay, OfACrossHasOneMiddleAndFourArms) {
    const Polygon first = PolygonOf({Rectangle(-3, -1, 3, 1)});
    const Polygon second = FromBehind(PolygonOf({Rectangle(-1, -3, 1, 3)}));
    const PolygonOverlay overlay = Overlay(first, second, snapDistance).value();
    ExpectSquares(overlay.common, 1);
    ExpectSquares(overlay.onlyFirst, 2);
    ExpectSquares(overlay.onlySecond, 2);
    EXPECT_EQ(overlay.common.at(0).normal, first.normal);
    EXPECT_EQ(overlay.onlySecond.at(0).normal, second.normal);
    ExpectParts(overlay, first, second, 0);
}

TEST(PolygonOverlay, LeavesAHoleAndWhatIsInIt) {
    const Polygon disc = PolygonOf({Circle(40, 3, {0, 0})});
    const Polygon ring = FromBehind(PolygonOf({Circle(30, 2, {0, 0}), Reversed(Circle(20, 1, {0, 0}))}));
    const PolygonOverlay overlay = Overlay(disc, ring, snapDistance).value();
    ASSERT_EQ(overlay.common.size(), 1U);
    EXPECT_EQ(overlay.common[0].edges.size(), 50U);
    EXPECT_TRUE(overlay.onlySecond.empty());
    ASSERT_EQ(overlay.onlyFirst.size(), 2U);
    EXPECT_EQ(overlay.onlyFirst[0].edges.size() + overlay.onlyFirst[1].edges.size(), 90U);
    ExpectParts(overlay, disc, ring, 0);
}

TEST(PolygonOverlay, FallsApartWhereCornersTouchTheOutline) {
    const Corners a = Rectangle(0, 0, 4, 2), b{{2, 0}, {3, 1}, {5, 0.5}, {5, 3}, {2, 2}, {1, 1}};
    const Polygon first = PolygonOf({a}), second = FromBehind(PolygonOf({b}));
    const PolygonOverlay overlay = Overlay(first, second, snapDistance).value();
    EXPECT_EQ(overlay.common.size(), 1U);
    EXPECT_EQ(overlay.onlyFirst.size(), 2U);
    EXPECT_EQ(overlay.onlySecond.size(), 1U);
    EXPECT_NEAR(OutlinedArea(overlay.common), CommonArea(a, b), 1e-13);
    ExpectParts(overlay, first, second, 0);
}

TEST(PolygonOverlay, LeavesEdgesWholeThatAreOnlyTouched) {
    // One leg of the second polygon reaches into the first one; the tip of the other one touches it from outside.
    const Polygon first = PolygonOf({Rectangle(0, 0, 4, 2)});
    const Polygon second =
        FromBehind(PolygonOf({{{0.5, -1}, {3.5, -1}, {3, 0}, {2.5, -0.9}, {1, -0.9}, {1, 1}, {0.5, 1}}}));
    const PolygonOverlay overlay = Overlay(first, second, snapDistance).value();
    ASSERT_EQ(overlay.onlyFirst.size(), 1U);
    EXPECT_EQ(overlay.onlyFirst[0].edges.size(), 8U);
    ExpectParts(overlay, first, second, 0);
}

TEST(PolygonOverlay, OfStarsHasTheAreaOfAllTheirTriangles) {
    std::mt19937 random(11);
    int inCommon = 0;
    for (int i = 0; i < 40; ++i) {
        const Corners a = Star(random, 3 + i), b = Displaced(Star(random, 40 - i), 0.6, random);
        const Polygon first = PolygonOf({a}), second = FromBehind(PolygonOf({b}));
        const std::optional<PolygonOverlay> overlay = Overlay(first, second, snapDistance);
        EXPECT_NEAR(overlay ? OutlinedArea(overlay->common) : 0, CommonArea(a, b), 1e-12);
        if (overlay) {
            ++inCommon;
            ExpectParts(*overlay, first, second, 0);
        }
    }
    EXPECT_GT(inCommon, 30);
}

TEST(PolygonOverlay, TakesEdgesThatAlmostCoincideForOne) {
    std::mt19937 random(12);
    for (int i = 0; i < 300; ++i) {
        const double misfit = std::pow(10, -16.0 + 0.04 * i);
        const Corners star = Star(random, 3 + i % 20);
        const Polygon first = PolygonOf({star}), second = FromBehind(PolygonOf({Displaced(star, misfit, random)}));
        const PolygonOverlay overlay = Overlay(first, second, snapDistance).value();
        ExpectParts(overlay, first, second, misfit);
        EXPECT_NEAR(OutlinedArea(overlay.common), first.area, 20 * misfit + 1e-13);
        ExpectNoSlivers(overlay);
        if (misfit < snapDistance / 3) {
            ExpectOnlyCommon(overlay, first);
        }
    }
}
