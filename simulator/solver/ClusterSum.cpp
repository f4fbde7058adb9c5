#include "simulator/solver/ClusterSum.h"

#include "simulator/solver/EdgeIntegral.h"
#include "simulator/solver/Parallel.h"
#include "simulator/solver/PolygonParts.h"

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
/// Parts of faces that may each have this part of the wanted error, and are halved so many times at most.
constexpr double partOfHalf = 0.125;
constexpr int mostCuts = 10;
/// Faces farther apart than the sum of their radii times this are points to each other.
constexpr double apart = 1.5;
/// A part whose radius is this part of its distance or less is small; its points leave less than this of the load.
constexpr double smallOfDistance = 0.5;
constexpr double missedBySmall = 0.0005;
/// Pairs that are looked at together.
constexpr std::size_t batchSize = 16384;
/// Pairs from which a second thread earns its start.
constexpr std::size_t sizeForThreads = 512;

/// A wrench in a magnet's axes and about their origin, here and now.
Wrench InSpace(const Wrench& wrench, const Eigen::Isometry3d& pose) {
    Wrench inSpace{pose.linear() * wrench.force, pose.linear() * wrench.torque};
    inSpace.torque += pose.translation().cross(inSpace.force);
    return inSpace;
}

/// Charges of which only the size is known.
struct ChargeSize {
    explicit ChargeSize(const Cluster& cluster)
        : charge(cluster.extent.charge), density(cluster.density), radius(cluster.extent.radius) {}
    explicit ChargeSize(const ChargedFace& face)
        : charge(face.Density() * face.polygon.area), density(face.Density()), radius(face.polygon.radius) {}

    double charge, density, radius;
};

/// What they can do to each other at most, wherever they are.
ErrorSizes MostOf(const ChargeSize& a, const ChargeSize& b) {
    const double force = closeField * std::min(a.charge * b.density, b.charge * a.density);
    return {force, force * std::max(a.radius, b.radius)};
}

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

ClusterSum::ClusterSum(const std::vector<PreparedMagnet>& magnets, std::size_t bodies, const Options& options,
                       double leastLever)
    : m_magnets(magnets), m_options(options), m_threads(ThreadsFor(options.threads)),
      m_judgement(magnets, bodies, leastLever), m_allowedShare(firstShare * options.percentError / 100) {
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

std::array<ClusterSum::Pair, 2> ClusterSum::Split(const Pair& pair) const {
    const ChargeTree& sourceTree = TreeOf(pair.source);
    const ChargeTree& targetTree = TreeOf(pair.target);
    const bool sourceIsLarger =
        sourceTree.ClusterOf(pair.source.node).extent.radius >= targetTree.ClusterOf(pair.target.node).extent.radius;
    const bool splitsSource =
        !sourceTree.IsLeaf(pair.source.node) && (sourceIsLarger || targetTree.IsLeaf(pair.target.node));
    const auto& children =
        splitsSource ? sourceTree.ChildrenOf(pair.source.node) : targetTree.ChildrenOf(pair.target.node);
    std::array<Pair, 2> parts{pair, pair};
    for (std::size_t i = 0; i < parts.size(); ++i) {
        (splitsSource ? parts[i].source : parts[i].target).node = children[i];
    }
    return parts;
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
    Interaction interaction = ErrorOf(view, MostOf(ChargeSize(source), ChargeSize(target)));
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
        outcome.parts = Split(pair);
    }
    return outcome;
}

ClusterSum::Outcome ClusterSum::Integrated(const Pair& pair) const {
    const View view = ViewOf(pair);
    const ChargedFace& source = *FaceOf(pair.source);
    const ChargedFace& target = *FaceOf(pair.target);
    Outcome outcome;
    Interaction interaction;
    if (!source.IsUniform() || !target.IsUniform()) {
        const bool onSource = source.polygon.radius < target.polygon.radius;
        AddByParts(view, onSource ? target : source, onSource ? source : target, onSource, mostCuts, interaction,
                   outcome.evaluations);
    } else if (!AddByPoints(view, source, target, m_allowedShare, interaction, outcome.evaluations)) {
        interaction = ByEdges(view, source, target, outcome.evaluations);
    }
    outcome.term = TermOf(pair, interaction);
    return outcome;
}

/// @return false where neither face's points are good enough for an error of that share
bool ClusterSum::AddByPoints(const View& view, const ChargedFace& source, const ChargedFace& target,
                             double allowedShare, Interaction& interaction, std::size_t& evaluations) const {
    // The face with more edges has more points, too, and its field is the same work from wherever it is seen.
    const bool sourceHasMore = source.polygon.edges.size() >= target.polygon.edges.size();
    for (const bool onSource : {!sourceHasMore, sourceHasMore}) {
        if (AddByPoints(view, onSource ? target : source, onSource ? source : target, onSource, allowedShare,
                        interaction, evaluations)) {
            return true;
        }
    }
    return false;
}

/// @param onSource  whether the charged face is the source's, so that the load is the opposite one
bool ClusterSum::AddByPoints(const View& view, const ChargedFace& field, const ChargedFace& charged, bool onSource,
                             double allowedShare, Interaction& interaction, std::size_t& evaluations) const {
    const Eigen::Isometry3d& fieldPose = (onSource ? view.targetMagnet : view.sourceMagnet).pose;
    const Eigen::Isometry3d& chargedPose = (onSource ? view.sourceMagnet : view.targetMagnet).pose;
    const Eigen::Isometry3d toField = fieldPose.inverse() * chargedPose;
    const double densities = field.Density() * charged.Density();
    std::vector<WeightedPoint> points;
    const Cluster cluster = ClusterOfFace(charged, points);
    ErrorSizes sizes = PointErrors(field.polygon, cluster, toField * charged.polygon.centre);
    sizes.force *= densities;
    // Known about the centre of the charged face; the other one is farther from it by no more than their distance.
    const double distance = (fieldPose * field.polygon.centre - chargedPose * charged.polygon.centre).norm();
    sizes.torque = sizes.torque * densities + distance * sizes.force;
    Interaction part = ErrorOf(view, sizes);
    if (!(ShareOf(view, part) <= allowedShare)) {
        return false;
    }
    part.wrench = ByPoints(view, field, charged, onSource, false, evaluations).wrench;
    interaction += part;
    return true;
}

/// Without errors.
/// @param bothByPoints  whether the field is that of points, too
Interaction ClusterSum::ByPoints(const View& view, const ChargedFace& field, const ChargedFace& charged, bool onSource,
                                 bool bothByPoints, std::size_t& evaluations) {
    const Eigen::Isometry3d& fieldPose = (onSource ? view.targetMagnet : view.sourceMagnet).pose;
    const Eigen::Isometry3d toField = fieldPose.inverse() * (onSource ? view.sourceMagnet : view.targetMagnet).pose;
    std::vector<WeightedPoint> points;
    SetPoints(charged.polygon, points);
    for (WeightedPoint& point : points) {
        point = {toField * point.at, charged.ChargeAt(point.at) * point.weight};
    }
    evaluations += points.size();
    Wrench wrench;
    if (bothByPoints) {
        std::vector<WeightedPoint> sources;
        SetPoints(field.polygon, sources);
        for (WeightedPoint& point : sources) {
            point.weight *= field.ChargeAt(point.at);
        }
        wrench = PointWrench(sources, points);
    } else {
        wrench = PointWrench(field, points);
    }
    Interaction interaction;
    interaction.wrench = InSpace((onSource ? -fieldConstant : fieldConstant) * wrench, fieldPose);
    return interaction;
}

/// The load on the halves of a face, and theirs, until they are small against their distance: points are good enough
/// then. It is for charges that are not uniform, and so are not known to the last digit.
void ClusterSum::AddByParts(const View& view, const ChargedFace& field, const ChargedFace& charged, bool onSource,
                            int cuts, Interaction& interaction, std::size_t& evaluations) const {
    Interaction error = ErrorOf(view, MostOf(ChargeSize(field), ChargeSize(charged)));
    if (ShareOf(view, error) <= partOfHalf * m_allowedShare) {
        interaction += error;
        return;
    }
    const Eigen::Isometry3d toField = (onSource ? view.targetMagnet : view.sourceMagnet).pose.inverse() *
                                      (onSource ? view.sourceMagnet : view.targetMagnet).pose;
    const Vector3d centre = toField * charged.polygon.centre;
    const bool areApart =
        (centre - field.polygon.centre).norm() > apart * (charged.polygon.radius + field.polygon.radius);
    const bool isSmall = areApart || charged.polygon.radius <= smallOfDistance * DistanceFrom(field.polygon, centre);
    if (isSmall || cuts == 0) {
        Interaction part = ByPoints(view, field, charged, onSource, areApart, evaluations);
        SetErrors(part, missedBySmall * part.wrench, view.centres);
        interaction += part;
        return;
    }
    for (Polygon& half : CutInMiddle(charged.polygon)) {
        AddByParts(view, field, PartOf(charged, std::move(half)), onSource, cuts - 1, interaction, evaluations);
    }
}

Interaction ClusterSum::ByEdges(const View& view, const ChargedFace& source, const ChargedFace& target,
                                std::size_t& evaluations) const {
    const Eigen::Isometry3d& pose = view.sourceMagnet.pose;
    const Eigen::Isometry3d toSource = pose.inverse();
    const BodyCentres centres{toSource * view.centres.source, toSource * view.centres.target};
    const double scale = fieldConstant * source.charge * target.charge;
    const FaceIntegral integral = IntegrateFaces(
        source.polygon, Posed(toSource * view.targetMagnet.pose, target.polygon), centres,
        [&](const Interaction& part) { return ShareOf(view, scale * part); }, m_allowedShare);
    evaluations += integral.evaluations;
    Interaction interaction = scale * integral.interaction;
    interaction.wrench = InSpace(interaction.wrench, pose);
    return interaction;
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
        ForRanges(size, size < sizeForThreads ? 1 : m_threads, [&](std::size_t begin, std::size_t end) {
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
        TermsToRefine(shares, bodiesOf, m_judgement.BodyCount(), keptError * m_options.percentError / 100);
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
