// Clusters of charge: what their moments say of the load between random clouds of facets is compared with the sum
// over all pairs of facets, and the error with its estimate.
#include "simulator/solver/ChargeTree.h"
#include "simulator/solver/EdgeIntegral.h"
#include "simulator/solver/PointIntegral.h"
#include "simulator/solver/PolygonParts.h"
#include "simulator/solver/PosedTree.h"
#include "simulator/solver/PreparedMagnet.h"
#include "tests/simulator/solver/Shapes.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <set>

using Eigen::Vector3d;
using vantor::solver::BodyCentres;
using vantor::solver::ChargedFace;
using vantor::solver::ChargeTree;
using vantor::solver::ErrorSizes;
using vantor::solver::HigherMoments;
using vantor::solver::Moments;
using vantor::solver::Polygon;
using vantor::solver::PosedTree;
using vantor::solver::WeightedPoint;
using vantor::solver::Wrench;
namespace solver = vantor::solver;

namespace {

/// The same numbers everywhere, unlike the distributions of the standard library.
class Random {
public:
    explicit Random(unsigned seed) : m_generator(seed) {}
    /// In [-1, 1].
    double Number() { return 2 * static_cast<double>(m_generator()) / 4294967295.0 - 1; }
    Vector3d Vector() {
        const double x = Number(), y = Number();
        return {x, y, Number()};
    }
    double Spread(double decades) { return std::pow(10, decades * Number()); }

private:
    std::mt19937 m_generator;
};

/// A triangle or a rectangle of any shape, which may be a sliver.
Polygon Facet(Random& random, const Vector3d& centre, double size) {
    const Eigen::Matrix3d rotation = shapes::Turn(3 * random.Number(), random.Vector());
    const double slender = random.Spread(0.5);
    const bool isRectangle = random.Number() > 0;
    solver::TriangleMesh mesh;
    for (const auto& [x, y] : {std::pair{-1.0, -1.0}, {1.0, -1.0}, {1.0, 1.0}, {-1.0, 1.0}}) {
        const double moved = isRectangle ? 0 : random.Number() / 2;
        mesh.vertices.push_back(centre + size * (rotation * Vector3d(x + moved, slender * (y - moved), 0)));
    }
    mesh.triangles = {{0, 1, 2}};
    if (isRectangle) {
        mesh.triangles.push_back({0, 2, 3});
    }
    return ChargedPolygons(mesh, rotation.col(2)).at(0);
}

/// Facets in a ball; charges of one sign or of both.
std::vector<ChargedFace> Cloud(Random& random, std::size_t facets, bool ofBothSigns) {
    std::vector<ChargedFace> cloud;
    while (cloud.size() < facets) {
        const double charge = ofBothSigns ? random.Number() : 1 + random.Number() / 2;
        cloud.push_back({Facet(random, random.Vector(), 0.1 * random.Spread(0.5)), charge});
    }
    return cloud;
}

Eigen::Isometry3d RandomPose(Random& random, double distance) {
    Eigen::Isometry3d pose = Eigen::Isometry3d::Identity();
    pose.translate(distance * random.Vector().normalized());
    pose.rotate(shapes::Turn(3 * random.Number(), random.Vector()));
    return pose;
}

/// By integrals along the edges of all pairs of faces, which the tests of blocks hold to closed forms.
Wrench AllPairs(const std::vector<ChargedFace>& sources, const std::vector<ChargedFace>& targets,
                const Eigen::Isometry3d& pose) {
    Wrench sum;
    for (const ChargedFace& source : sources) {
        for (const ChargedFace& target : targets) {
            const auto force = [](const vantor::solver::Interaction& part) { return part.forceError; };
            const double wanted = 1e-10 * source.polygon.area * target.polygon.area;
            sum += source.charge * target.charge *
                   solver::IntegrateFaces(source.polygon, solver::Posed(pose, target.polygon), BodyCentres(), force,
                                          wanted)
                       .interaction.wrench;
        }
    }
    return sum;
}

/// The deviation from all pairs as parts of the estimates: of force, and of torque about both centres.
double WorstPart(const Wrench& found, const Wrench& expected, const ErrorSizes& sizes, const BodyCentres& centres) {
    const Wrench deviation = found - expected;
    return std::max({deviation.force.norm() / sizes.force, deviation.TorqueAbout(centres.source).norm() / sizes.torque,
                     deviation.TorqueAbout(centres.target).norm() / sizes.torque});
}

} // namespace

TEST(Clusters, KeepToTheEstimatesOfWhatTheirMomentsLeaveOut) {
    Random random(1);
    std::vector<double> parts;
    for (int i = 0; i < 60; ++i) {
        const std::vector<ChargedFace> sources = Cloud(random, 6, i % 2 == 0), targets = Cloud(random, 6, i % 3 == 0);
        const ChargeTree sourceTree(sources), targetTree(targets);
        const Eigen::Isometry3d pose = RandomPose(random, 3.2 + 2 * std::abs(random.Number()));
        const PosedTree source(sourceTree, Eigen::Matrix3d::Identity()), target(targetTree, pose.linear());
        const auto& a = sourceTree.ClusterOf(sourceTree.Root());
        const auto& b = targetTree.ClusterOf(targetTree.Root());
        const BodyCentres centres{a.centre, pose * b.centre};
        const Vector3d offset = centres.target - centres.source;
        const ErrorSizes sizes = solver::MomentErrors(a.extent, b.extent, offset.norm());
        Wrench found =
            solver::WrenchOf(source.MomentsOf(sourceTree.Root()), target.MomentsOf(targetTree.Root()), offset);
        found.torque += centres.target.cross(found.force);
        parts.push_back(WorstPart(found, AllPairs(sources, targets, pose), sizes, centres));
        EXPECT_LE(parts.back(), 1) << "clouds " << i;
    }
    // Estimates that are always far too large would be safe, and useless.
    EXPECT_GT(*std::max_element(parts.begin(), parts.end()), 0.02);
}

TEST(Clusters, AreAsGoodWhereTheirFacesAreTheLeaves) {
    Random random(2);
    int compared = 0;
    while (compared < 150) {
        const std::vector<ChargedFace> source{{Facet(random, Vector3d::Zero(), 1), 1.0}};
        const std::vector<ChargedFace> target{{Facet(random, Vector3d::Zero(), random.Spread(0.5)), 1.0}};
        const ChargeTree sourceTree(source), targetTree(target);
        const Eigen::Isometry3d pose = RandomPose(random, 10 * random.Spread(0.4));
        const BodyCentres centres{source[0].polygon.centre, pose * target[0].polygon.centre};
        const Vector3d offset = centres.target - centres.source;
        const ErrorSizes sizes = solver::MomentErrors(sourceTree.ClusterOf(sourceTree.Root()).extent,
                                                      targetTree.ClusterOf(targetTree.Root()).extent, offset.norm());
        if (!std::isfinite(sizes.force)) {
            continue;
        }
        const PosedTree posedSource(sourceTree, Eigen::Matrix3d::Identity()), posedTarget(targetTree, pose.linear());
        Wrench found = solver::WrenchOf(posedSource.MomentsOf(sourceTree.Root()),
                                        posedTarget.MomentsOf(targetTree.Root()), offset);
        found.torque += centres.target.cross(found.force);
        EXPECT_LE(WorstPart(found, AllPairs(source, target, pose), sizes, centres), 1) << "pair " << compared;
        ++compared;
    }
}

TEST(Clusters, HaveNoEstimateWhereTheirSpheresMeet) {
    Random random(3);
    const std::vector<ChargedFace> cloud = Cloud(random, 6, false);
    const ChargeTree tree(cloud);
    const auto& extent = tree.ClusterOf(tree.Root()).extent;
    EXPECT_FALSE(std::isfinite(solver::MomentErrors(extent, extent, 1.99 * extent.radius).force));
    EXPECT_TRUE(std::isfinite(solver::MomentErrors(extent, extent, 2.01 * extent.radius).force));
}

TEST(FieldAtPoints, KeepsToItsEstimates) {
    Random random(4);
    int compared = 0;
    while (compared < 200) {
        const Polygon source = Facet(random, Vector3d::Zero(), 1);
        const std::vector<ChargedFace> target{
            {Facet(random, 5 * random.Spread(0.5) * random.Vector(), random.Spread(0.5)), 1.0}};
        const ChargeTree tree(target);
        const auto& cluster = tree.ClusterOf(tree.Root());
        const ErrorSizes sizes = solver::PointErrors(source, cluster, cluster.centre);
        // Beyond that, rounding of the closed forms is what is left.
        if (!(sizes.force < 100 * source.area) || sizes.force < 1e-8 * source.area * target[0].polygon.area) {
            continue;
        }
        std::vector<WeightedPoint> points;
        solver::SetPoints(target[0].polygon, points);
        const Wrench deviation = solver::PointWrench({source, 1.0}, points) -
                                 AllPairs({{source, 1.0}}, target, Eigen::Isometry3d::Identity());
        EXPECT_LE(deviation.force.norm(), sizes.force) << "pair " << compared;
        EXPECT_LE(deviation.TorqueAbout(cluster.centre).norm(), sizes.torque) << "pair " << compared;
        ++compared;
    }
}

/// What one charge's multipoles are, and that those of two opposite ones in one place are nothing.
TEST(Multipoles, AreMeasuredWithTheirSigns) {
    const Vector3d place(0.3, -0.4, 1.2);
    HigherMoments moments{};
    solver::AddCharge(moments, -2.5, place);
    const auto sizes = solver::MultipoleSizes(moments);
    for (std::size_t order = 0; order < sizes.size(); ++order) {
        EXPECT_NEAR(sizes[order], 2.5 * std::pow(1.3, order), 1e-12 * sizes[order]) << "order " << order;
    }
    solver::AddCharge(moments, 2.5, place);
    for (const double size : solver::MultipoleSizes(moments)) {
        EXPECT_LE(size, 1e-12);
    }
    // A dipole has no monopole, and its dipole is charge times distance wherever it is.
    solver::AddCharge(moments, 1, place);
    solver::AddCharge(moments, -1, place + Vector3d(0, 0.5, 0));
    EXPECT_NEAR(solver::MultipoleSizes(moments)[0], 0, 1e-12);
    EXPECT_NEAR(solver::MultipoleSizes(moments)[1], 0.5, 1e-12);
}

TEST(Multipoles, ShiftAndTurnWithTheirCharges) {
    Random random(5);
    const Vector3d shift = random.Vector();
    const Eigen::Matrix3d rotation = shapes::Turn(1.1, random.Vector());
    HigherMoments here{}, there{}, shifted{};
    Moments own{}, turned{};
    for (int i = 0; i < 10; ++i) {
        const Vector3d place = random.Vector();
        const double charge = random.Number();
        solver::AddCharge(here, charge, place);
        solver::AddCharge(there, charge, place + shift);
        solver::AddCharge(own, charge, place);
        solver::AddCharge(turned, charge, rotation * place);
    }
    solver::AddShifted(shifted, here, shift);
    for (std::size_t i = 0; i < there.size(); ++i) {
        EXPECT_NEAR(shifted[i], there[i], 1e-12);
    }
    const Moments rotated = solver::MomentRotation(rotation)(own);
    for (std::size_t i = 0; i < turned.size(); ++i) {
        EXPECT_NEAR(rotated[i], turned[i], 1e-12);
    }
}

/// Every face once, in leaves or in the parts of one; whatever is split, the charge stays, and clusters hold their
/// parts.
TEST(ChargeTrees, HoldEveryFaceOnce) {
    shapes::Prism ring;
    ring.innerRadius = 0.5;
    ring.sides = 60;
    std::vector<ChargedFace> faces;
    const Vector3d magnetisation(0.3, 0.1, 1);
    for (Polygon& polygon : ChargedPolygons(MeshOf(ring), magnetisation)) {
        faces.push_back({polygon, magnetisation.dot(polygon.normal)});
    }
    const ChargeTree tree(faces);
    double charge = 0, area = 0;
    std::set<const ChargedFace*> wholeFaces;
    std::vector<ChargeTree::Node> open{tree.Root()};
    while (!open.empty()) {
        const ChargeTree::Node node = open.back();
        open.pop_back();
        const auto& cluster = tree.ClusterOf(node);
        if (const ChargedFace* face = tree.FaceOf(node)) {
            wholeFaces.insert(face);
        }
        if (tree.IsLeaf(node)) {
            EXPECT_LE(tree.FaceOf(node)->polygon.edges.size(), 10u);
            charge += cluster.extent.charge;
            area += tree.FaceOf(node)->polygon.area;
            continue;
        }
        for (const ChargeTree::Node child : tree.ChildrenOf(node)) {
            const auto& part = tree.ClusterOf(child);
            // A part's sphere may stick out, its faces do not: of them the centre is known to be inside.
            EXPECT_LE((part.centre - cluster.centre).norm(), cluster.extent.radius);
            open.push_back(child);
        }
    }
    double expectedCharge = 0, expectedArea = 0;
    for (const ChargedFace& face : faces) {
        // Strips are there in pieces only.
        EXPECT_EQ(wholeFaces.count(&face), IsSlender(face.polygon) ? 0u : 1u);
        expectedCharge += std::abs(face.charge) * face.polygon.area;
        expectedArea += face.polygon.area;
    }
    EXPECT_NEAR(charge, expectedCharge, 1e-12 * expectedCharge);
    EXPECT_NEAR(area, expectedArea, 1e-12 * expectedArea);
    EXPECT_NEAR(tree.ClusterOf(tree.Root()).extent.charge, expectedCharge, 1e-12 * expectedCharge);
    // The charges of a closed surface add up to nothing.
    EXPECT_LE(std::abs(tree.MomentsOf(tree.Root())[0]), 1e-12 * expectedCharge);
}
