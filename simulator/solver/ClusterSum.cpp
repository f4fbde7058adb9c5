#include "simulator/solver/ClusterSum.h"

#include "simulator/solver/EdgeIntegral.h"
#include "simulator/solver/Parallel.h"

#include <algorithm>
#include <limits>

namespace vantor::solver {
namespace {

using Eigen::Vector3d;

/// In the first pass each term may have this part of the wanted error.
constexpr double firstShare = 1.0 / 200;
/// Part of the wanted error that terms may keep together without being refined.
constexpr double keptError = 0.5;
/// What the integral of 1/R^2 over charged faces that others are near to is at most, in units of their charge per area:
/// 2 pi and a logarithm for each of the few sheets that may lie over one another.
constexpr double closeField = 30;
/// Faces of many edges are integrated as they are, not in parts, if they overlap and neither has many more edges or is
/// much larger than the other.
constexpr std::size_t mostPairsOfEdges = 128 * 128;
constexpr double similarSizes = 3;
/// What replaces a term may each have this part of the smallest error that was too large: it is several terms.
constexpr double shareOfReplacements = 0.25;
/// Pairs that are looked at together.
constexpr std::size_t batchSize = 16384;
/// Pairs from which a second thread earns its start.
constexpr std::size_t sizeForThreads = 512;

} // namespace

Interaction ClusterSum::Term::Whole() const {
    Interaction whole;
    whole.wrench = wrench;
    whole.forceError = static_cast<double>(forceError);
    whole.sourceTorqueError = static_cast<double>(sourceTorqueError);
    whole.targetTorqueError = static_cast<double>(targetTorqueError);
    whole.exhausted = exhausted;
    return whole;
}

ClusterSum::ClusterSum(const std::vector<PreparedMagnet>& magnets, std::size_t bodies, const Options& options)
    : m_magnets(magnets), m_options(options), m_threads(ThreadsFor(options.threads)), m_judgement(magnets, bodies),
      m_allowedShare(firstShare * options.percentError / 100) {
    PoseTrees();
    for (std::uint32_t i = 0; i < magnets.size(); ++i) {
        for (std::uint32_t j = i + 1; j < magnets.size(); ++j) {
            if (magnets[i].body != magnets[j].body) {
                m_open.push_back({{i, m_trees[i].Tree().Root()}, {j, m_trees[j].Tree().Root()}});
            }
        }
    }
}

void ClusterSum::PoseTrees() {
    std::vector<const ChargeTree*> trees(m_magnets.size());
    ForEach(m_magnets.size(), m_threads, [&](std::size_t i) { trees[i] = &m_magnets[i].shape->Charges(); });
    for (std::size_t i = 0; i < m_magnets.size(); ++i) {
        m_trees.emplace_back(*trees[i], m_magnets[i].pose.linear());
    }
}

Interaction ClusterSum::ErrorOf(const Pair& pair, const ErrorSizes& bounds) const {
    const BodyCentres centres = m_judgement.CentresFor(MagnetOf(pair.source), MagnetOf(pair.target));
    Interaction error;
    error.forceError = fieldConstant * bounds.force;
    error.sourceTorqueError =
        fieldConstant * (bounds.torque + (CentreOf(pair.source) - centres.source).norm() * bounds.force);
    error.targetTorqueError =
        fieldConstant * (bounds.torque + (CentreOf(pair.target) - centres.target).norm() * bounds.force);
    return error;
}

double ClusterSum::ShareOf(const Pair& pair, const Interaction& interaction) const {
    return m_judgement.Share(MagnetOf(pair.source), MagnetOf(pair.target), interaction);
}

ClusterSum::Term ClusterSum::TermOf(const Pair& pair, const Interaction& interaction) const {
    Term term;
    term.pair = pair;
    term.forceError = static_cast<float>(interaction.forceError);
    term.sourceTorqueError = static_cast<float>(interaction.sourceTorqueError);
    term.targetTorqueError = static_cast<float>(interaction.targetTorqueError);
    term.exhausted = interaction.exhausted;
    term.wrench = interaction.wrench;
    return term;
}

std::array<ClusterSum::Pair, 2> ClusterSum::Split(const Pair& pair) const {
    const bool sourceIsLeaf = TreeOf(pair.source).IsLeaf(pair.source.node);
    const bool targetIsLeaf = TreeOf(pair.target).IsLeaf(pair.target.node);
    const bool sourceIsLarger = ClusterOf(pair.source).extent.radius >= ClusterOf(pair.target).extent.radius;
    std::array<Pair, 2> parts{pair, pair};
    if (!sourceIsLeaf && (sourceIsLarger || targetIsLeaf)) {
        const auto& children = TreeOf(pair.source).ChildrenOf(pair.source.node);
        parts[0].source.node = children[0];
        parts[1].source.node = children[1];
    } else {
        const auto& children = TreeOf(pair.target).ChildrenOf(pair.target.node);
        parts[0].target.node = children[0];
        parts[1].target.node = children[1];
    }
    return parts;
}

bool ClusterSum::AreToBeIntegrated(const Pair& pair, double distance) const {
    const ChargeTree& sourceTree = TreeOf(pair.source);
    const ChargeTree& targetTree = TreeOf(pair.target);
    if (sourceTree.IsLeaf(pair.source.node) && targetTree.IsLeaf(pair.target.node)) {
        return true;
    }
    const ChargedFace* source = sourceTree.FaceOf(pair.source.node);
    const ChargedFace* target = targetTree.FaceOf(pair.target.node);
    if (!source || !target || source->polygon.edges.size() * target->polygon.edges.size() > mostPairsOfEdges) {
        return false;
    }
    const double a = source->polygon.radius, b = target->polygon.radius;
    return distance < a + b && std::max(a, b) < similarSizes * std::min(a, b);
}

ClusterSum::Outcome ClusterSum::Examined(const Pair& pair) const {
    const Cluster& source = ClusterOf(pair.source);
    const Cluster& target = ClusterOf(pair.target);
    const Vector3d from = CentreOf(pair.source), to = CentreOf(pair.target);
    Outcome outcome;

    const double close =
        closeField * std::min(source.extent.charge * target.density, target.extent.charge * source.density);
    Interaction interaction = ErrorOf(pair, {close, close * std::max(source.extent.radius, target.extent.radius)});
    if (IsGoodEnough(pair, interaction)) {
        outcome.term = TermOf(pair, interaction);
        return outcome;
    }
    const Vector3d offset = to - from;
    interaction = ErrorOf(pair, MomentErrors(source.extent, target.extent, offset.norm()));
    if (IsGoodEnough(pair, interaction)) {
        Wrench wrench = fieldConstant * WrenchOf(MomentsOf(pair.source), MomentsOf(pair.target), offset);
        wrench.torque += to.cross(wrench.force);
        interaction.wrench = wrench;
        outcome.term = TermOf(pair, interaction);
        outcome.evaluations = 1;
        return outcome;
    }
    if (!AreToBeIntegrated(pair, offset.norm())) {
        outcome.isSplit = true;
        outcome.parts = Split(pair);
        return outcome;
    }
    if (!AddByPoints(pair, outcome)) {
        AddByEdges(pair, outcome);
    }
    return outcome;
}

namespace {

/// A wrench in a source's axes and about their origin, here and now.
Wrench InSpace(const Wrench& wrench, const Eigen::Isometry3d& pose) {
    Wrench inSpace{pose.linear() * wrench.force, pose.linear() * wrench.torque};
    inSpace.torque += pose.translation().cross(inSpace.force);
    return inSpace;
}

} // namespace

bool ClusterSum::AddByPoints(const Pair& pair, Outcome& outcome) const {
    const ChargedFace& source = *TreeOf(pair.source).FaceOf(pair.source.node);
    const ChargedFace& target = *TreeOf(pair.target).FaceOf(pair.target.node);
    const double charges = source.charge * target.charge;
    const Eigen::Isometry3d sourceInTarget = MagnetOf(pair.target).pose.inverse() * MagnetOf(pair.source).pose;
    const Eigen::Isometry3d targetInSource = sourceInTarget.inverse();
    const auto tryIt = [&](const Polygon& field, const Polygon& points, const Cluster& pointsCluster,
                           const Eigen::Isometry3d& pointsInField, const Eigen::Isometry3d& fieldPose, double sign) {
        ErrorSizes bounds = PointErrors(field, pointsCluster, pointsInField * points.centre);
        bounds.force *= std::abs(charges);
        bounds.torque *= std::abs(charges);
        // Of one side the centre is known to be near the bound's; the other's lever is the distance to it.
        bounds.torque += bounds.force * (CentreOf(pair.source) - CentreOf(pair.target)).norm();
        Interaction interaction = ErrorOf(pair, bounds);
        if (!IsGoodEnough(pair, interaction)) {
            return false;
        }
        std::vector<WeightedPoint> list;
        SetPoints(points, list);
        for (WeightedPoint& point : list) {
            point.at = pointsInField * point.at;
        }
        interaction.wrench = InSpace(sign * fieldConstant * charges * PointWrench(field, list), fieldPose);
        outcome.term = TermOf(pair, interaction);
        outcome.evaluations = list.size();
        return true;
    };
    const auto onTarget = [&] {
        return tryIt(source.polygon, target.polygon, ClusterOf(pair.target), targetInSource, MagnetOf(pair.source).pose,
                     1);
    };
    const auto onSource = [&] {
        return tryIt(target.polygon, source.polygon, ClusterOf(pair.source), sourceInTarget, MagnetOf(pair.target).pose,
                     -1);
    };
    // The polygon with more edges has more triangles, too, and the field is dearer than the points.
    return source.polygon.edges.size() >= target.polygon.edges.size() ? onTarget() || onSource()
                                                                      : onSource() || onTarget();
}

void ClusterSum::AddByEdges(const Pair& pair, Outcome& outcome) const {
    const ChargedFace& source = *TreeOf(pair.source).FaceOf(pair.source.node);
    const ChargedFace& target = *TreeOf(pair.target).FaceOf(pair.target.node);
    const Eigen::Isometry3d& pose = MagnetOf(pair.source).pose;
    const Eigen::Isometry3d toSource = pose.inverse();
    BodyCentres centres = m_judgement.CentresFor(MagnetOf(pair.source), MagnetOf(pair.target));
    centres.source = toSource * centres.source;
    centres.target = toSource * centres.target;
    const double scale = fieldConstant * source.charge * target.charge;
    const auto share = [&](const Interaction& part) { return ShareOf(pair, scale * part); };
    const FaceIntegral integral = IntegrateFaces(
        source.polygon, Posed(toSource * MagnetOf(pair.target).pose, target.polygon), centres, share, m_allowedShare);
    Interaction interaction = scale * integral.interaction;
    interaction.wrench = InSpace(interaction.wrench, pose);
    outcome.term = TermOf(pair, interaction);
    outcome.evaluations = integral.evaluations;
}

Pass ClusterSum::Evaluate() {
    Pass pass;
    pass.number = ++m_pass;
    std::vector<Pair> batch;
    std::vector<Outcome> outcomes;
    while (!m_open.empty()) {
        const std::size_t size = std::min(m_open.size(), batchSize);
        batch.assign(m_open.end() - static_cast<std::ptrdiff_t>(size), m_open.end());
        m_open.resize(m_open.size() - size);
        outcomes.resize(size);
        ForRanges(size, size < sizeForThreads ? 1 : m_threads, [&](std::size_t begin, std::size_t end) {
            for (std::size_t i = begin; i < end; ++i) {
                outcomes[i] = Examined(batch[i]);
            }
        });
        for (const Outcome& outcome : outcomes) {
            pass.evaluations += outcome.evaluations;
            if (outcome.isSplit) {
                m_open.insert(m_open.end(), outcome.parts.begin(), outcome.parts.end());
            } else {
                m_terms.push_back(outcome.term);
            }
        }
    }
    SumUp();
    pass.percentError = m_judgement.PercentError();
    return pass;
}

void ClusterSum::SumUp() {
    m_judgement.Clear();
    for (const Term& term : m_terms) {
        m_judgement.Add(MagnetOf(term.pair.source), MagnetOf(term.pair.target), term.Whole());
    }
    m_judgement.Finish();
}

bool ClusterSum::Refine() {
    std::vector<double> shares(m_terms.size());
    std::transform(m_terms.begin(), m_terms.end(), shares.begin(),
                   [this](const Term& term) { return term.exhausted ? -1 : ShareOf(term.pair, term.Whole()); });
    const auto bodiesOf = [this](std::size_t i) {
        return std::array<std::size_t, 2>{MagnetOf(m_terms[i].pair.source).body, MagnetOf(m_terms[i].pair.target).body};
    };
    const std::vector<bool> refined =
        TermsToRefine(shares, bodiesOf, m_judgement.BodyCount(), keptError * m_options.percentError / 100);
    m_allowedShare = std::numeric_limits<double>::infinity();
    std::vector<Term> kept;
    for (std::size_t i = 0; i < m_terms.size(); ++i) {
        if (refined[i]) {
            m_allowedShare = std::min(m_allowedShare, shares[i]);
            m_open.push_back(m_terms[i].pair);
        } else {
            kept.push_back(m_terms[i]);
        }
    }
    m_allowedShare *= shareOfReplacements;
    m_terms = std::move(kept);
    return !m_open.empty();
}

} // namespace vantor::solver
