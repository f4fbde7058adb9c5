#include "simulator/solver/PatchSum.h"

#include "simulator/solver/Parallel.h"
#include "simulator/solver/Patch.h"
#include "simulator/solver/PolygonParts.h"

namespace vantor::solver {
namespace {

using Eigen::Isometry3d;
using Eigen::Vector3d;

/// Distances over the sum of the radii from which on clusters are their moments, and faces three points, or seven for
/// each of their triangles.
constexpr double apartForMoments = 3, apartForFewPoints = 3, apartForManyPoints = 1.5;
/// A part of a face whose radius is this part of its distance or less is small, and how often faces are halved at most.
constexpr double smallOfDistance = 0.5;
constexpr int mostCuts = 10;

std::vector<WeightedPoint> ChargePoints(const ChargedFace& face, const Isometry3d& pose) {
    std::vector<WeightedPoint> points;
    SetPoints(face.polygon, points);
    for (WeightedPoint& point : points) {
        point = {pose * point.at, face.ChargeAt(point.at) * point.weight};
    }
    return points;
}

/// The load on a face of another one's field, in the axes of the latter.
Wrench ByParts(const ChargedFace& field, const ChargedFace& charged, const Isometry3d& toField, int cuts,
               std::size_t& evaluations) {
    const double distance = DistanceFrom(field.polygon, toField * charged.polygon.centre);
    if (cuts == 0 || charged.polygon.radius <= smallOfDistance * distance) {
        const std::vector<WeightedPoint> points = ChargePoints(charged, toField);
        evaluations += points.size();
        return PointWrench(field, points);
    }
    Wrench sum;
    for (Polygon& half : CutInMiddle(charged.polygon)) {
        sum += ByParts(field, PartOf(charged, std::move(half)), toField, cuts - 1, evaluations);
    }
    return sum;
}

} // namespace

PatchSum::PatchSum(const std::vector<PreparedMagnet>& magnets, std::size_t bodies, unsigned threads, double leastLever)
    : m_magnets(magnets), m_threads(threads), m_trees(PosedTrees(magnets, threads)),
      m_judgement(magnets, bodies, leastLever) {
    SetPointsOfFaces();
    const std::vector<TreePair> pairs = Walk();
    std::vector<Sum> sums(pairs.size());
    ForRanges(pairs.size(), pairs.size() < pairsForThreads ? 1 : m_threads, [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            sums[i] = Of(pairs[i]);
        }
    });
    m_judgement.Clear();
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        Interaction interaction;
        interaction.wrench = fieldConstant * sums[i].wrench;
        m_judgement.Add(m_magnets[pairs[i].source.magnet], m_magnets[pairs[i].target.magnet], interaction);
        m_evaluations += sums[i].evaluations;
    }
    m_judgement.Finish();
}

void PatchSum::SetPointsOfFaces() {
    m_points.resize(m_magnets.size());
    ForEach(m_magnets.size(), m_threads, [&](std::size_t magnet) {
        const ChargeTree& tree = m_trees[magnet].Tree();
        m_points[magnet].resize(tree.Size());
        for (ChargeTree::Node node = 0; node < tree.Size(); ++node) {
            if (!tree.IsLeaf(node)) {
                continue;
            }
            const ChargedFace& face = *tree.FaceOf(node);
            const std::array<PatchPoint, 3> points = PointsOf(face.polygon);
            for (std::size_t i = 0; i < points.size(); ++i) {
                m_points[magnet][node][i] = {m_magnets[magnet].pose * points[i].at,
                                             face.ChargeAt(points[i].at) * points[i].weight};
            }
        }
    });
}

double PatchSum::Separation(const TreePair& pair) const {
    return (CentreOf(pair.target) - CentreOf(pair.source)).norm() /
           (ClusterOf(pair.source).extent.radius + ClusterOf(pair.target).extent.radius);
}

/// The pairs whose sum is that of all.
std::vector<TreePair> PatchSum::Walk() const {
    std::vector<TreePair> open = PairsOfRoots(m_magnets, m_trees), pairs;
    while (!open.empty()) {
        const TreePair pair = open.back();
        open.pop_back();
        if ((IsLeaf(pair.source) && IsLeaf(pair.target)) || Separation(pair) > apartForMoments) {
            pairs.push_back(pair);
            continue;
        }
        const auto parts = Split(pair, TreeOf(pair.source), TreeOf(pair.target));
        open.insert(open.end(), parts.begin(), parts.end());
    }
    return pairs;
}

PatchSum::Sum PatchSum::Of(const TreePair& pair) const {
    return IsLeaf(pair.source) && IsLeaf(pair.target) ? ByFaces(pair, Separation(pair)) : ByMoments(pair);
}

PatchSum::Sum PatchSum::ByMoments(const TreePair& pair) const {
    const Vector3d from = CentreOf(pair.source), to = CentreOf(pair.target);
    Wrench wrench = WrenchOf(m_trees[pair.source.magnet].MomentsOf(pair.source.node),
                             m_trees[pair.target.magnet].MomentsOf(pair.target.node), to - from);
    wrench.torque += to.cross(wrench.force);
    return {wrench, 1};
}

std::vector<WeightedPoint> PatchSum::ManyPoints(const TreePlace& place) const {
    return ChargePoints(FaceOf(place), PoseOf(place));
}

PatchSum::Sum PatchSum::ByFaces(const TreePair& pair, double separation) const {
    Sum sum;
    if (separation > apartForFewPoints) {
        const FewPoints &source = m_points[pair.source.magnet][pair.source.node],
                        &target = m_points[pair.target.magnet][pair.target.node];
        return {PointWrench(source, target), target.size()};
    }
    if (separation > apartForManyPoints) {
        const std::vector<WeightedPoint> target = ManyPoints(pair.target);
        return {PointWrench(ManyPoints(pair.source), target), target.size()};
    }
    const bool onSource = FaceOf(pair.source).polygon.radius < FaceOf(pair.target).polygon.radius;
    const TreePlace &field = onSource ? pair.target : pair.source, &charged = onSource ? pair.source : pair.target;
    sum.wrench =
        ByParts(FaceOf(field), FaceOf(charged), PoseOf(field).inverse() * PoseOf(charged), mostCuts, sum.evaluations);
    sum.wrench = (onSource ? -1 : 1) * InSpace(sum.wrench, PoseOf(field));
    return sum;
}

} // namespace vantor::solver
