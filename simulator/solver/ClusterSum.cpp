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
constexpr double keptByClusters = 0.5;
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
      m_trees(PosedTrees(magnets, m_threads)), m_open(PairsOfRoots(magnets, m_trees)),
      m_allowedShare(firstShare * options.percentError / 100) {}

ClusterSum::View ClusterSum::ViewOf(const Pair& pair) const {
    const PreparedMagnet& sourceMagnet = MagnetOf(pair.source);
    const PreparedMagnet& targetMagnet = MagnetOf(pair.target);
    const Cluster& source = TreeOf(pair.source).ClusterOf(pair.source.node);
    const Cluster& target = TreeOf(pair.target).ClusterOf(pair.target.node);
    return {sourceMagnet,
            targetMagnet,
            source,
            target,
            sourceMagnet.pose * source.centre,
            targetMagnet.pose * target.centre,
            m_judgement.CentresFor(sourceMagnet, targetMagnet)};
}

Interaction ClusterSum::ErrorOf(const View& view, const ErrorSizes& sizes) {
    Interaction error;
    error.forceError = fieldConstant * sizes.force;
    error.sourceTorqueError = fieldConstant * (sizes.torque + (view.from - view.centres.source).norm() * sizes.force);
    error.targetTorqueError = fieldConstant * (sizes.torque + (view.to - view.centres.target).norm() * sizes.force);
    return error;
}

ClusterSum::Term ClusterSum::TermOf(const Pair& pair, const Interaction& interaction) {
    Term term;
    term.pair = pair;
    term.forceError = static_cast<float>(interaction.forceError);
    term.sourceTorqueError = static_cast<float>(interaction.sourceTorqueError);
    term.targetTorqueError = static_cast<float>(interaction.targetTorqueError);
    term.exhausted = interaction.exhausted;
    term.wrench = interaction.wrench;
    return term;
}

bool ClusterSum::AreToBeIntegrated(const Pair& pair, double distance) const {
    if (TreeOf(pair.source).IsLeaf(pair.source.node) && TreeOf(pair.target).IsLeaf(pair.target.node)) {
        return true;
    }
    const ChargedFace* source = FaceOf(pair.source);
    const ChargedFace* target = FaceOf(pair.target);
    if (!source || !target || source->polygon.edges.size() * target->polygon.edges.size() > mostPairsOfEdges) {
        return false;
    }
    const double a = source->polygon.radius, b = target->polygon.radius;
    return distance < a + b && std::max(a, b) < similarSizes * std::min(a, b);
}

ClusterSum::Outcome ClusterSum::Examined(const Pair& pair) const {
    const View view = ViewOf(pair);
    const Cluster& source = view.source;
    const Cluster& target = view.target;
    Outcome outcome;
    const double close =
        closeField * std::min(source.extent.charge * target.density, target.extent.charge * source.density);
    Interaction interaction = ErrorOf(view, {close, close * std::max(source.extent.radius, target.extent.radius)});
    if (IsGoodEnough(view, interaction)) {
        outcome.term = TermOf(pair, interaction);
        return outcome;
    }
    const Vector3d offset = view.to - view.from;
    interaction = ErrorOf(view, MomentErrors(source.extent, target.extent, offset.norm()));
    if (IsGoodEnough(view, interaction)) {
        interaction.wrench = fieldConstant * WrenchOf(MomentsOf(pair.source), MomentsOf(pair.target), offset);
        interaction.wrench.torque += view.to.cross(interaction.wrench.force);
        outcome.term = TermOf(pair, interaction);
        outcome.evaluations = 1;
        return outcome;
    }
    if (AreToBeIntegrated(pair, offset.norm())) {
        outcome.kind = Outcome::Kind::Faces;
    } else {
        outcome.kind = Outcome::Kind::Split;
        outcome.parts = Split(pair, TreeOf(pair.source), TreeOf(pair.target));
    }
    return outcome;
}

ClusterSum::Outcome ClusterSum::Integrated(const Pair& pair) const {
    const View view = ViewOf(pair);
    Outcome outcome;
    if (!AddByPoints(pair, view, outcome)) {
        AddByEdges(pair, view, outcome);
    }
    return outcome;
}

bool ClusterSum::AddByPoints(const Pair& pair, const View& view, Outcome& outcome) const {
    // The face with more edges has more points, too, and its field is the same work from wherever it is seen.
    const bool sourceHasMore = FaceOf(pair.source)->polygon.edges.size() >= FaceOf(pair.target)->polygon.edges.size();
    return AddByPoints(pair, view, !sourceHasMore, outcome) || AddByPoints(pair, view, sourceHasMore, outcome);
}

bool ClusterSum::AddByPoints(const Pair& pair, const View& view, bool onSource, Outcome& outcome) const {
    const ChargedFace& field = *FaceOf(onSource ? pair.target : pair.source);
    const ChargedFace& charged = *FaceOf(onSource ? pair.source : pair.target);
    const Eigen::Isometry3d& fieldPose = (onSource ? view.targetMagnet : view.sourceMagnet).pose;
    const Eigen::Isometry3d& chargedPose = (onSource ? view.sourceMagnet : view.targetMagnet).pose;
    const Eigen::Isometry3d toField = fieldPose.inverse() * chargedPose;
    ErrorSizes sizes =
        PointErrors(field.polygon, onSource ? view.source : view.target, toField * charged.polygon.centre);
    sizes.force *= std::abs(field.charge * charged.charge);
    // Known about the centre of the charged face; the other one is farther from it by no more than their distance.
    sizes.torque = sizes.torque * std::abs(field.charge * charged.charge) + (view.to - view.from).norm() * sizes.force;
    Interaction interaction = ErrorOf(view, sizes);
    if (!IsGoodEnough(view, interaction)) {
        return false;
    }
    std::vector<WeightedPoint> points;
    SetPoints(charged.polygon, points);
    for (WeightedPoint& point : points) {
        point = {toField * point.at, charged.charge * point.weight};
    }
    interaction.wrench = InSpace((onSource ? -fieldConstant : fieldConstant) * PointWrench(field, points), fieldPose);
    outcome.term = TermOf(pair, interaction);
    outcome.evaluations = points.size();
    return true;
}

void ClusterSum::AddByEdges(const Pair& pair, const View& view, Outcome& outcome) const {
    const ChargedFace& source = *FaceOf(pair.source);
    const ChargedFace& target = *FaceOf(pair.target);
    const Eigen::Isometry3d& pose = view.sourceMagnet.pose;
    const Eigen::Isometry3d toSource = pose.inverse();
    const BodyCentres centres{toSource * view.centres.source, toSource * view.centres.target};
    const double scale = fieldConstant * source.charge * target.charge;
    const FaceIntegral integral = IntegrateFaces(
        source.polygon, Posed(toSource * view.targetMagnet.pose, target.polygon), centres,
        [&](const Interaction& part) { return ShareOf(view, scale * part); }, m_allowedShare);
    Interaction interaction = scale * integral.interaction;
    interaction.wrench = InSpace(interaction.wrench, pose);
    outcome.term = TermOf(pair, interaction);
    outcome.evaluations = integral.evaluations;
}

Pass ClusterSum::Evaluate() {
    Pass pass;
    pass.number = ++m_pass;
    std::vector<Pair> faces;
    pass.evaluations = WalkTrees(faces);
    pass.evaluations += IntegrateAll(faces);
    SumUp();
    pass.percentError = m_judgement.PercentError();
    return pass;
}

/// Looks at the open pairs and all that they are split into.
/// @param faces  gets the pairs that are to be integrated
/// @return the number of field evaluations
std::size_t ClusterSum::WalkTrees(std::vector<Pair>& faces) {
    std::size_t evaluations = 0;
    std::vector<Pair> batch;
    std::vector<Outcome> outcomes;
    while (!m_open.empty()) {
        const std::size_t size = std::min(m_open.size(), batchSize);
        batch.assign(m_open.end() - static_cast<std::ptrdiff_t>(size), m_open.end());
        m_open.resize(m_open.size() - size);
        outcomes.resize(size);
        ForRanges(size, size < pairsForThreads ? 1 : m_threads, [&](std::size_t begin, std::size_t end) {
            for (std::size_t i = begin; i < end; ++i) {
                outcomes[i] = Examined(batch[i]);
            }
        });
        for (std::size_t i = 0; i < size; ++i) {
            const Outcome& outcome = outcomes[i];
            evaluations += outcome.evaluations;
            if (outcome.kind == Outcome::Kind::Split) {
                m_open.insert(m_open.end(), outcome.parts.begin(), outcome.parts.end());
            } else if (outcome.kind == Outcome::Kind::Faces) {
                faces.push_back(batch[i]);
            } else {
                m_terms.push_back(outcome.term);
            }
        }
    }
    return evaluations;
}

/// A pair of faces may take a microsecond or ten milliseconds, so each is shared out by itself.
/// @return the number of field evaluations
std::size_t ClusterSum::IntegrateAll(const std::vector<Pair>& faces) {
    std::size_t evaluations = 0;
    const std::size_t first = m_terms.size();
    m_terms.resize(first + faces.size());
    std::vector<std::size_t> evaluationsOf(faces.size());
    ForEach(faces.size(), m_threads, [&](std::size_t i) {
        const Outcome outcome = Integrated(faces[i]);
        m_terms[first + i] = outcome.term;
        evaluationsOf[i] = outcome.evaluations;
    });
    for (const std::size_t count : evaluationsOf) {
        evaluations += count;
    }
    return evaluations;
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
    std::transform(m_terms.begin(), m_terms.end(), shares.begin(), [this](const Term& term) {
        return term.exhausted ? -1
                              : m_judgement.Share(MagnetOf(term.pair.source), MagnetOf(term.pair.target), term.Whole());
    });
    const auto bodiesOf = [this](std::size_t i) {
        return std::array<std::size_t, 2>{MagnetOf(m_terms[i].pair.source).body, MagnetOf(m_terms[i].pair.target).body};
    };
    const std::vector<bool> refined =
        TermsToRefine(shares, bodiesOf, m_judgement.BodyCount(), keptByClusters * m_options.percentError / 100);
    m_allowedShare = std::numeric_limits<double>::infinity();
    std::size_t kept = 0;
    for (std::size_t i = 0; i < m_terms.size(); ++i) {
        if (refined[i]) {
            m_allowedShare = std::min(m_allowedShare, shares[i]);
            m_open.push_back(m_terms[i].pair);
        } else {
            m_terms[kept++] = m_terms[i];
        }
    }
    m_terms.resize(kept);
    m_allowedShare *= shareOfReplacements;
    return !m_open.empty();
}

} // namespace vantor::solver
