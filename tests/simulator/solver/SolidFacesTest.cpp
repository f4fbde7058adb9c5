// The faces of solids, alone and where they touch.
#include "simulator/solver/SolidFaces.h"

#include "simulator/solver/PolygonIntegrals.h"
#include "tests/simulator/solver/Constants.h"
#include "tests/simulator/solver/Shapes.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>

using Eigen::Vector3d;
using shapes::Block;
using shapes::Prism;
using vantor::solver::FacesOf;
using vantor::solver::Solid;
using vantor::solver::SolidFace;
using vantor::solver::SolveError;
using vantor::solver::TriangleMesh;

namespace {

using references::pi;

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

/// How many faces there are between two solids, or between one and the air, and their area.
struct Share {
    std::size_t count = 0;
    double area = 0;
};
Share ShareOf(const std::vector<SolidFace>& faces, std::size_t inside, std::optional<std::size_t> outside = {}) {
    Share share;
    for (const SolidFace& face : faces) {
        if (face.inside == inside && face.outside == outside) {
            ++share.count;
            share.area += face.polygon.area;
        }
    }
    return share;
}

/// The first face between two solids.
SolidFace SharedFaceOf(const std::vector<SolidFace>& faces) {
    const auto shared =
        std::find_if(faces.begin(), faces.end(), [](const SolidFace& face) { return face.outside.has_value(); });
    return shared == faces.end() ? SolidFace{} : *shared;
}

void ExpectShare(const Share& share, std::size_t count, double area) {
    EXPECT_EQ(share.count, count);
    EXPECT_NEAR(share.area, area, 1e-12 * area);
}

void ExpectFourEdgesEach(const std::vector<SolidFace>& faces) {
    for (const SolidFace& face : faces) {
        EXPECT_EQ(face.polygon.edges.size(), 4U);
    }
}

/// All solids moved to some place far from straight.
std::vector<Solid> Moved(std::vector<Solid> solids) {
    Eigen::Isometry3d move = Eigen::Isometry3d::Identity();
    move.linear() = shapes::Turn(0.9, {3, -1, 2});
    move.translation() = Vector3d(0.3, 7, -4);
    for (Solid& solid : solids) {
        solid.pose = move * solid.pose;
    }
    return solids;
}

/// A plate of 4 x 4 x 2 with a pocket of 2 x 2 x 1 in the middle of its top, which is at z = 0.
TriangleMesh PocketPlate() {
    TriangleMesh mesh;
    const auto addRing = [&](double half, double z) {
        for (const auto& [x, y] : {std::pair{-1, -1}, {1, -1}, {1, 1}, {-1, 1}}) {
            mesh.vertices.emplace_back(half * x, half * y, z);
        }
    };
    addRing(2, -2);
    addRing(2, 0);
    addRing(1, 0);
    addRing(1, -1);
    const auto addQuad = [&](int a, int b, int c, int d) {
        mesh.triangles.push_back({a, b, c});
        mesh.triangles.push_back({a, c, d});
    };
    for (int ring = 0; ring < 3; ++ring) {
        for (int i = 0; i < 4; ++i) {
            const int a = 4 * ring + i, b = 4 * ring + (i + 1) % 4;
            addQuad(a, b, b + 4, a + 4);
        }
    }
    addQuad(3, 2, 1, 0);
    addQuad(12, 13, 14, 15);
    return mesh;
}

using Boxes = std::vector<Eigen::AlignedBox3d>;

/// Ten blocks, cut out of one, which two more would fill.
Boxes CutBoxes(std::mt19937& random) {
    Boxes boxes{{Vector3d::Zero(), Vector3d(1, 2, 1.5)}};
    while (boxes.size() < 12U) {
        const std::size_t which = random() % boxes.size();
        const auto axis = static_cast<Eigen::Index>(random() % 3);
        const double share = 0.25 * static_cast<double>(1 + random() % 3);
        Eigen::AlignedBox3d upper = boxes[which];
        const double at = upper.min()[axis] + share * upper.sizes()[axis];
        boxes[which].max()[axis] = upper.min()[axis] = at;
        boxes.push_back(upper);
    }
    boxes.resize(10);
    return boxes;
}

/// The area of the rectangle in which two boxes touch; 0 when they do not.
double CommonArea(const Eigen::AlignedBox3d& a, const Eigen::AlignedBox3d& b) {
    const Vector3d common = a.intersection(b).sizes();
    return common.minCoeff() == 0 ? common[0] * common[1] + common[1] * common[2] + common[2] * common[0] : 0;
}

/// What a box shares with those after it is one rectangle each.
void ExpectSharesOf(const std::vector<SolidFace>& faces, const Boxes& boxes, std::size_t box) {
    for (std::size_t other = box + 1; other < boxes.size(); ++other) {
        const double common = CommonArea(boxes[box], boxes[other]);
        const Share share = ShareOf(faces, box, other);
        EXPECT_EQ(share.count, common > 0 ? 1U : 0U);
        EXPECT_NEAR(share.area, common, 1e-12);
    }
}

/// A block that fills the box once `place` is applied, its mesh in some axes of its own.
Solid PlacedBlock(const Eigen::AlignedBox3d& box, const Eigen::Isometry3d& place, std::mt19937& random) {
    std::uniform_real_distribution<double> any(-3, 3);
    Eigen::Isometry3d own = Eigen::Isometry3d::Identity();
    const Eigen::Matrix<double, 6, 1> values = Eigen::Matrix<double, 6, 1>::NullaryExpr([&] { return any(random); });
    own.linear() = shapes::Turn(values[0], values.head<3>());
    own.translation() = values.tail<3>();
    TriangleMesh mesh = MeshOf(BlockBetween(box.min(), box.max()));
    for (Vector3d& vertex : mesh.vertices) {
        vertex = own.inverse() * vertex;
    }
    Solid solid = SolidOf(shapes::Finer(mesh, static_cast<int>(random() % 2)));
    solid.pose = place * own;
    return solid;
}

/// A block that fits the pocket but for a misfit, metres, touches all of its sides.
void ExpectPocketFilledBy(const Block& block, double misfit) {
    const std::vector<SolidFace> faces = FacesOf({SolidOf(PocketPlate()), SolidOf(block)});
    ASSERT_EQ(faces.size(), 12U) << misfit;
    EXPECT_NEAR(ShareOf(faces, 0, 1).area, 12, 20 * misfit + 1e-12);
    ExpectClosed(faces, 0, {1.5, 0.5, -0.6}, 2 * misfit + 1e-12);
    ExpectClosed(faces, 1, {0.5, 0.7, -0.3}, 2 * misfit + 1e-12);
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
    EXPECT_EQ(faces.size(), 6U);
    ExpectShare(ShareOf(faces, 0), 6, 22);
    ExpectFourEdgesEach(faces);
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

TEST(SolidFaces, OfABlockOnAPlateShareItsFootprint) {
    const std::vector<Solid> solids =
        Moved({SolidOf(BlockBetween({-5, -4, -1}, {5, 4, 0})), SolidOf(BlockBetween({1, 1, 0}, {2, 3, 2}))});
    const std::vector<SolidFace> faces = FacesOf(solids);
    ASSERT_EQ(faces.size(), 12U);
    ExpectShare(ShareOf(faces, 0, 1), 1, 2);
    ExpectShare(ShareOf(faces, 0), 6, 2 * (80 + 10 + 8) - 2);
    ExpectShare(ShareOf(faces, 1), 5, 2 + 2 * (2 + 4));
    ExpectClosed(faces, 0, solids[0].pose * Vector3d(1.5, 2, -0.2));
    ExpectClosed(faces, 1, solids[1].pose * Vector3d(1.5, 2, 0.2));
}

TEST(SolidFaces, PointFromTheLowerSolidToTheHigherOne) {
    const Solid plate = SolidOf(BlockBetween({-5, -4, -1}, {5, 4, 0}));
    const Solid block = SolidOf(BlockBetween({1, 1, 0}, {2, 3, 2}));
    const auto expectShared = [](const std::vector<Solid>& solids, double upward) {
        const SolidFace shared = SharedFaceOf(FacesOf(solids));
        EXPECT_EQ(shared.inside, 0U);
        EXPECT_EQ(shared.outside, 1U);
        EXPECT_NEAR(shared.polygon.normal.z(), upward, 1e-15);
        EXPECT_LE((shared.polygon.centre - Vector3d(1.5, 2, 0)).norm(), 1e-14);
    };
    expectShared({plate, block}, 1);
    expectShared({block, plate}, -1);
}

TEST(SolidFaces, OfAMagnetInAPocketShareFiveSides) {
    const std::vector<Solid> solids = Moved({SolidOf(PocketPlate()), SolidOf(BlockBetween({-1, -1, -1}, {1, 1, 0}))});
    const std::vector<SolidFace> faces = FacesOf(solids);
    ExpectShare(ShareOf(faces, 0, 1), 5, 4 + 4 * 2);
    ExpectShare(ShareOf(faces, 1), 1, 4);
    ExpectShare(ShareOf(faces, 0), 6, 12 + 16 + 4 * 8);
    ExpectClosed(faces, 0, solids[0].pose * Vector3d(1.5, 0.5, -0.6));
    ExpectClosed(faces, 1, solids[1].pose * Vector3d(0.5, 0.7, -0.3));
}

TEST(SolidFaces, OfBlocksHalfPastEachOtherShareHalfASide) {
    const std::vector<Solid> solids =
        Moved({SolidOf(BlockBetween({0, 0, 0}, {1, 1, 1})), SolidOf(BlockBetween({1, 0.5, 0}, {2, 1.5, 1}))});
    const std::vector<SolidFace> faces = FacesOf(solids);
    ExpectShare(ShareOf(faces, 0, 1), 1, 0.5);
    ExpectShare(ShareOf(faces, 0), 6, 5.5);
    ExpectShare(ShareOf(faces, 1), 6, 5.5);
    ExpectFourEdgesEach(faces);
    ExpectClosed(faces, 0, solids[0].pose * Vector3d(0.9, 0.6, 0.3));
    ExpectClosed(faces, 1, solids[1].pose * Vector3d(1.1, 0.6, 0.3));
}

TEST(SolidFaces, OfARingOnADiscLeaveAnAnnulusAndTheMiddle) {
    Prism disc, ring;
    disc.radius = 3;
    disc.sides = 300;
    disc.centre = {0, 0, -0.5};
    ring.radius = 2;
    ring.innerRadius = 1;
    ring.sides = 211;
    ring.centre = {0, 0, 0.5};
    const std::vector<Solid> solids = Moved({SolidOf(disc), SolidOf(ring)});
    const std::vector<SolidFace> faces = FacesOf(solids);
    const auto circle = [](int sides, double radius) {
        return sides / 2.0 * radius * radius * std::sin(2 * pi / sides);
    };
    const double ringArea = circle(211, 2) - circle(211, 1), discArea = circle(300, 3);
    ExpectShare(ShareOf(faces, 0, 1), 1, ringArea);
    // Sides, bottom, and what is left of the top.
    ExpectShare(ShareOf(faces, 0), 300 + 1 + 2, 300 * 6 * std::sin(pi / 300) + 2 * discArea - ringArea);
    ExpectShare(ShareOf(faces, 1), 2 * 211 + 1, 211 * 6 * std::sin(pi / 211) + ringArea);
    ExpectClosed(faces, 0, solids[0].pose * Vector3d(1.5, 0.5, -0.3));
    ExpectClosed(faces, 1, solids[1].pose * Vector3d(1.5, 0.1, 0.3));
}

TEST(SolidFaces, OfABlockOnTheJointOfTwoOthersAreSharedWithBoth) {
    const std::vector<Solid> solids =
        Moved({SolidOf(BlockBetween({-2, 0, 0}, {0, 2, 1})), SolidOf(BlockBetween({-0.5, 0.5, 1}, {1.5, 1, 2})),
               SolidOf(BlockBetween({0, 0, 0}, {2, 2, 1}))});
    const std::vector<SolidFace> faces = FacesOf(solids);
    ExpectShare(ShareOf(faces, 0, 1), 1, 0.25);
    ExpectShare(ShareOf(faces, 0, 2), 1, 2);
    ExpectShare(ShareOf(faces, 1, 2), 1, 0.75);
    ExpectShare(ShareOf(faces, 0), 5, 16 - 2 - 0.25);
    ExpectShare(ShareOf(faces, 1), 5, 1 + 2 * (2 + 0.5));
    ExpectShare(ShareOf(faces, 2), 5, 16 - 2 - 0.75);
    ExpectClosed(faces, 0, solids[0].pose * Vector3d(-0.5, 0.5, 0.7));
    ExpectClosed(faces, 1, solids[1].pose * Vector3d(0.2, 0.7, 1.2));
    ExpectClosed(faces, 2, solids[2].pose * Vector3d(0.2, 0.7, 0.8));
}

TEST(SolidFaces, OfACylinderInItsBoreShareEveryFacet) {
    Prism cylinder, sleeve;
    cylinder.sides = sleeve.sides = 120;
    sleeve.innerRadius = cylinder.radius = 1;
    sleeve.radius = 2;
    // It looks out of the sleeve by a third of its height.
    cylinder.centre = {0, 0, 0.5};
    cylinder.height = 1.5;
    sleeve.height = 1.5;
    const std::vector<Solid> solids = Moved({SolidOf(sleeve), SolidOf(cylinder)});
    const std::vector<SolidFace> faces = FacesOf(solids);
    const double side = 120 * 2 * std::sin(pi / 120);
    ExpectShare(ShareOf(faces, 0, 1), 120, side);
    ExpectShare(ShareOf(faces, 1), 122, 0.5 * side + 120 * std::sin(2 * pi / 120));
    ExpectClosed(faces, 0, solids[0].pose * Vector3d(1.5, 0.2, 0.1));
    ExpectClosed(faces, 1, solids[1].pose * Vector3d(0.5, 0.2, 0.1));
}

TEST(SolidFaces, OfSolidsThatMeetInAnEdgeOrACornerStayWhole) {
    const Solid block = SolidOf(BlockBetween({0, 0, 0}, {1, 1, 1}));
    for (const Vector3d& low : {Vector3d(1, 1, 0), Vector3d(1, 1, 1), Vector3d(1, 0.5, 1)}) {
        const std::vector<SolidFace> faces =
            FacesOf(Moved({block, SolidOf(BlockBetween(low, low + Vector3d::Ones()))}));
        EXPECT_EQ(faces.size(), 12U);
        EXPECT_NEAR(AreaOf(faces), 12, 1e-12);
    }
}

TEST(SolidFaces, TakeAMisfitBelowTheToleranceForContact) {
    for (const double misfit : {1e-15, 1e-12, 1e-10, 4e-8, -4e-8}) {
        for (const double aside : {0.0, 1e-11, 3e-8, -3e-8}) {
            ExpectPocketFilledBy(BlockBetween({-1 + aside, -1, -1 - misfit}, {1 + misfit, 1 - aside, 0}),
                                 std::max(std::abs(misfit), std::abs(aside)));
        }
    }
}

TEST(SolidFaces, LeaveAGapAboveTheToleranceOpen) {
    const std::vector<SolidFace> faces =
        FacesOf({SolidOf(PocketPlate()), SolidOf(BlockBetween({-1, -1, -1 + 1e-5}, {1 - 1e-5, 1, 0}))});
    ExpectShare(ShareOf(faces, 0, 1), 3, 2 * (2 - 1e-5) * (1 - 1e-5) + 2 * (1 - 1e-5));
    ExpectClosed(faces, 0, {1.5, 0.5, -0.6});
    ExpectClosed(faces, 1, {0.5, 0.7, -0.3});
}

TEST(SolidFaces, RefuseSolidsThatOverlap) {
    const Block block;
    Block shifted, turned, inner, along;
    shifted.centre = {0.3, 0.2, 0.1};
    turned.rotation = shapes::Turn(0.3, {1, 1, 1});
    inner.size = {0.5, 0.5, 0.5};
    along.centre = {0.5, 0, 0};
    Block deep;
    deep.centre = {0, 0, 1 - 1e-5};
    const std::vector<std::pair<const char*, TriangleMesh>> others{
        {"the same", MeshOf(block)}, {"shifted", MeshOf(shifted)}, {"turned", MeshOf(turned)}, {"inner", MeshOf(inner)},
        {"along", MeshOf(along)},    {"deep", MeshOf(deep)},       {"ball", shapes::Ball(3)}};
    for (const auto& [name, mesh] : others) {
        const Solid first = SolidOf(block, "magnet \"a\""), second = SolidOf(mesh, "magnet \"b\"");
        EXPECT_EQ(MessageOf([&] {
                      FacesOf(Moved({first, second}));
                  }),
                  "magnet \"a\" and magnet \"b\" overlap; move one of them, or cut the room it takes out of the other.")
            << name;
        EXPECT_NE(MessageOf([&] { FacesOf(Moved({second, first})); }), "no error") << name;
    }
}

TEST(SolidFaces, RefuseAPocketThatIsTooSmall) {
    const Solid plate = SolidOf(BlockBetween({-5, -5, -2}, {5, 5, 0})), pocket = SolidOf(PocketPlate());
    EXPECT_NE(MessageOf([&] { FacesOf({plate, pocket}); }), "no error");
    EXPECT_NE(MessageOf([&] { FacesOf({pocket, SolidOf(BlockBetween({-1, -1, -1}, {1.5, 1, 0}))}); }), "no error");
    EXPECT_NE(MessageOf([&] { FacesOf({pocket, SolidOf(BlockBetween({-1, -1, -1.5}, {1, 1, 0}))}); }), "no error");
}

TEST(SolidFaces, OfABoxCutIntoManyShareWhatTheCutsMake) {
    std::mt19937 random(5);
    for (int trial = 0; trial < 30; ++trial) {
        const Boxes boxes = CutBoxes(random);
        Eigen::Isometry3d place = Eigen::Isometry3d::Identity();
        place.linear() = shapes::Turn(trial, {1, 2, 3});
        place.translation() = Vector3d(-1, 4, 2);
        std::vector<Solid> solids;
        for (const Eigen::AlignedBox3d& box : boxes) {
            solids.push_back(PlacedBlock(box, place, random));
        }
        const std::vector<SolidFace> faces = FacesOf(solids);
        for (std::size_t i = 0; i < boxes.size(); ++i) {
            ExpectClosed(faces, i, place * boxes[i].center());
            ExpectSharesOf(faces, boxes, i);
        }
    }
}

TEST(SolidFaces, AreTheSameEveryTime) {
    Prism ring;
    ring.innerRadius = 0.5;
    ring.centre = {0.1, 0, 1};
    const std::vector<Solid> solids =
        Moved({SolidOf(Prism{}), SolidOf(ring), SolidOf(BlockBetween({-1, -1, -2}, {1, 1, -0.5}))});
    const std::vector<SolidFace> once = FacesOf(solids), again = FacesOf(solids);
    EXPECT_TRUE(
        std::equal(once.begin(), once.end(), again.begin(), again.end(), [](const SolidFace& a, const SolidFace& b) {
            return a.polygon.centre == b.polygon.centre && a.polygon.area == b.polygon.area && a.inside == b.inside &&
                   a.outside == b.outside;
        }));
    EXPECT_TRUE(std::is_sorted(once.begin(), once.end(),
                               [](const SolidFace& a, const SolidFace& b) { return a.inside < b.inside; }));
}
