#include "simulator/solver/Refinement.h"

#include "simulator/solver/FarField.h"
#include "simulator/solver/Parallel.h"

#include <algorithm>
#include <numeric>
#include <thread>

namespace vantor::solver {
namespace {

constexpr double fieldConstant = 1e-7; // mu0 / (4 pi)
/// A load below this part of the dipole scale is judged as if it were this large.
constexpr double leastLoad = 0.01;
/// Part of the wanted error that terms may keep together without being refined.
constexpr double keptError = 0.25;
/// A term that keeps more than this part of its parent's error has met rounding: the rules converge far faster.
constexpr double stagnation = 0.3;
/// Shortest rule for faces whose far description was not good enough: their sum cancels, so that one point, the coarse
/// side of rule 0, says nothing about the error.
constexpr unsigned char leastRuleOfFarFaces = 1;
/// Magnets with no more pairs of faces than this skip the far description of faces.
constexpr std::size_t fewFacePairs = 256;
/// Edges to evaluate from which a second thread earns its start.
constexpr std::size_t workForThreads = 40000;

double Ratio(double error, double scale) {
    return error > 0 ? error / scale : 0;
}

} // namespace

Refinement::Refinement(const std::vector<PreparedMagnet>& magnets, const std::vector<Body>& bodies,
                       const Options& options)
    : m_magnets(magnets), m_options(options), m_bodies(bodies.size()), m_loads(bodies.size()) {
    SetCentres();
    SetScales();
    for (std::size_t i = 0; i < magnets.size(); ++i) {
        for (std::size_t j = i + 1; j < magnets.size(); ++j) {
            if (magnets[i].body != magnets[j].body) {
                Start(i, j);
            }
        }
    }
}

void Refinement::SetCentres() {
    std::vector<Eigen::AlignedBox3d> boxes(m_bodies.size());
    for (const PreparedMagnet& magnet : m_magnets) {
        boxes[magnet.body].extend(magnet.box);
    }
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        if (!boxes[i].isEmpty()) {
            m_bodies[i].centre = boxes[i].center();
        }
    }
}

void Refinement::SetScales() {
    for (const PreparedMagnet& magnet : m_magnets) {
        Judgement& body = m_bodies[magnet.body];
        const double lever = (magnet.centre - body.centre).norm();
        for (const PreparedMagnet& other : m_magnets) {
            if (other.body == magnet.body) {
                continue;
            }
            const DipoleScale scale = ScaleOf(magnet, other);
            body.leastForce += leastLoad * scale.force;
            body.leastTorque += leastLoad * (scale.torque + lever * scale.force);
        }
    }
}

void Refinement::Start(std::size_t source, std::size_t target) {
    if (!FarApart(m_magnets[source], m_magnets[target])) {
        AddFaces(source, target, 0);
        return;
    }
    Term term;
    term.source = source;
    term.target = target;
    m_terms.push_back(term);
}

void Refinement::AddFaces(std::size_t source, std::size_t target, unsigned char leastRule) {
    const auto& sourceFaces = m_magnets[source].faces;
    const auto& targetFaces = m_magnets[target].faces;
    const bool few = sourceFaces.size() * targetFaces.size() <= fewFacePairs;
    Term term;
    term.source = source;
    term.target = target;
    for (std::size_t i = 0; i < sourceFaces.size(); ++i) {
        bool anyFar = false;
        term.sourceFace = i;
        for (std::size_t j = 0; j < targetFaces.size(); ++j) {
            const bool far = !few && FarApart(sourceFaces[i].polygon, targetFaces[j].polygon);
            anyFar = anyFar || far;
            term.targetFace = j;
            if (!far) {
                AddPieces(term, leastRule);
            }
        }
        if (anyFar) {
            term.kind = Term::Kind::FarFaces;
            term.targetFace = 0;
            m_terms.push_back(term);
        }
    }
}

void Refinement::AddPieces(const Term& pair, unsigned char leastRule) {
    Term term = pair;
    term.kind = Term::Kind::Piece;
    for (const EdgePiece& piece : CutEdges(m_magnets[pair.source].faces[pair.sourceFace].polygon,
                                           m_magnets[pair.target].faces[pair.targetFace].polygon)) {
        term.piece = piece;
        term.piece.rule = std::max(piece.rule, leastRule);
        m_terms.push_back(term);
    }
}

void Refinement::Replace(const Term& term, double share) {
    Term next = term;
    next.parentShare = share;
    switch (term.kind) {
    case Term::Kind::FarMagnets:
        AddFaces(term.source, term.target, leastRuleOfFarFaces);
        break;
    case Term::Kind::FarFaces:
        ReplaceFarFaces(next);
        break;
    case Term::Kind::FarPair:
        AddPieces(next, leastRuleOfFarFaces);
        break;
    case Term::Kind::Piece:
        if (term.piece.rule < highestRule) {
            ++next.piece.rule;
            m_terms.push_back(next);
            break;
        }
        const double middle = (term.piece.from + term.piece.to) / 2;
        next.piece.to = middle;
        m_terms.push_back(next);
        next.piece.from = middle;
        next.piece.to = term.piece.to;
        m_terms.push_back(next);
        break;
    }
}

void Refinement::ReplaceFarFaces(Term next) {
    const Polygon& sourceFace = m_magnets[next.source].faces[next.sourceFace].polygon;
    const auto& targetFaces = m_magnets[next.target].faces;
    const double average = next.parentShare / static_cast<double>(targetFaces.size());
    next.kind = Term::Kind::FarPair;
    for (next.targetFace = 0; next.targetFace < targetFaces.size(); ++next.targetFace) {
        if (!FarApart(sourceFace, targetFaces[next.targetFace].polygon)) {
            continue;
        }
        // Known to be too coarse, a pair with much of the error needs no pass to find out.
        next.interaction = Evaluated(next);
        if (Share(next) > average) {
            AddPieces(next, leastRuleOfFarFaces);
        } else {
            m_terms.push_back(next);
        }
    }
}

BodyCentres Refinement::CentresFor(const Term& term) const {
    return {m_bodies[m_magnets[term.source].body].centre, m_bodies[m_magnets[term.target].body].centre};
}

Interaction Refinement::Evaluated(const Term& term) const {
    const PreparedMagnet& source = m_magnets[term.source];
    const PreparedMagnet& target = m_magnets[term.target];
    if (term.kind == Term::Kind::FarMagnets) {
        return FarInteraction(source, target, CentresFor(term));
    }
    if (term.kind == Term::Kind::FarFaces) {
        return EvaluatedFarFaces(term);
    }
    const ChargedFace& from = source.faces[term.sourceFace];
    const ChargedFace& to = target.faces[term.targetFace];
    const Interaction ofUnitCharges = term.kind == Term::Kind::FarPair
                                          ? FarInteraction(from.polygon, to.polygon, CentresFor(term))
                                          : IntegratePiece(from.polygon, to.polygon, term.piece, CentresFor(term));
    return fieldConstant * from.charge * to.charge * ofUnitCharges;
}

Interaction Refinement::EvaluatedFarFaces(const Term& term) const {
    const ChargedFace& from = m_magnets[term.source].faces[term.sourceFace];
    Interaction sum;
    for (const ChargedFace& to : m_magnets[term.target].faces) {
        if (FarApart(from.polygon, to.polygon)) {
            sum += to.charge * FarInteraction(from.polygon, to.polygon, CentresFor(term));
        }
    }
    return fieldConstant * from.charge * sum;
}

std::size_t Refinement::Evaluations(const Term& term) const {
    switch (term.kind) {
    case Term::Kind::FarMagnets:
        return farMagnetEvaluations;
    case Term::Kind::FarFaces:
        return farPolygonEvaluations * m_magnets[term.target].faces.size();
    case Term::Kind::FarPair:
        return farPolygonEvaluations;
    case Term::Kind::Piece:
        break;
    }
    return static_cast<std::size_t>(RulePoints(term.piece.rule));
}

std::size_t Refinement::Cost(const Term& term) const {
    if (term.kind != Term::Kind::Piece) {
        return Evaluations(term);
    }
    const bool onSource = term.piece.owner == EdgePiece::Owner::Source;
    const Polygon& other = onSource ? m_magnets[term.target].faces[term.targetFace].polygon
                                    : m_magnets[term.source].faces[term.sourceFace].polygon;
    return Evaluations(term) * other.edges.size();
}

unsigned Refinement::ThreadsFor(std::size_t cost) const {
    if (cost < workForThreads) {
        return 1;
    }
    // Asked only where it matters: the answer takes as long as a small pass.
    return m_options.threads > 0 ? static_cast<unsigned>(m_options.threads)
                                 : std::max(1u, std::thread::hardware_concurrency());
}

Pass Refinement::Evaluate() {
    Pass pass;
    pass.number = ++m_pass;
    std::size_t cost = 0;
    for (std::size_t i = m_evaluated; i < m_terms.size(); ++i) {
        pass.evaluations += Evaluations(m_terms[i]);
        cost += Cost(m_terms[i]);
    }
    ForRanges(m_terms.size() - m_evaluated, ThreadsFor(cost), [this](std::size_t begin, std::size_t end) {
        for (std::size_t i = m_evaluated + begin; i < m_evaluated + end; ++i) {
            m_terms[i].interaction = Evaluated(m_terms[i]);
        }
    });
    m_evaluated = m_terms.size();
    SumUp();
    pass.percentError = PercentError();
    return pass;
}

void Refinement::SumUp() {
    m_loads.assign(m_loads.size(), Load());
    for (Judgement& body : m_bodies) {
        body.forceError = body.torqueError = 0;
    }
    const auto add = [this](std::size_t body, double sign, const Interaction& interaction, double torqueError) {
        m_loads[body].force += sign * interaction.wrench.force;
        m_loads[body].torque += sign * interaction.wrench.torque;
        m_loads[body].forceScale += interaction.wrench.force.norm();
        m_loads[body].torqueScale += interaction.wrench.torque.norm();
        m_loads[body].forceError += interaction.forceError;
        m_loads[body].torqueError += interaction.torqueError;
        m_bodies[body].forceError += interaction.forceError;
        m_bodies[body].torqueError += torqueError;
    };
    for (const Term& term : m_terms) {
        add(m_magnets[term.source].body, -1, term.interaction, term.interaction.sourceTorqueError);
        add(m_magnets[term.target].body, 1, term.interaction, term.interaction.targetTorqueError);
    }
    for (std::size_t i = 0; i < m_bodies.size(); ++i) {
        Judgement& body = m_bodies[i];
        const Eigen::Vector3d torque = m_loads[i].torque - body.centre.cross(m_loads[i].force);
        body.force = std::max(body.leastForce, m_loads[i].force.norm());
        body.torque = std::max(body.leastTorque, torque.norm());
    }
}

double Refinement::PercentError() const {
    double largest = 0;
    for (const Judgement& body : m_bodies) {
        largest = std::max({largest, Ratio(body.forceError, body.force), Ratio(body.torqueError, body.torque)});
    }
    return 100 * largest;
}

double Refinement::Share(const Term& term) const {
    const Judgement& source = m_bodies[m_magnets[term.source].body];
    const Judgement& target = m_bodies[m_magnets[term.target].body];
    const Interaction& interaction = term.interaction;
    return std::max({Ratio(interaction.forceError, std::min(source.force, target.force)),
                     Ratio(interaction.sourceTorqueError, source.torque),
                     Ratio(interaction.targetTorqueError, target.torque)});
}

bool Refinement::AtItsLimit(const Term& term, double share) {
    return term.interaction.exhausted || share > stagnation * term.parentShare;
}

std::vector<bool> Refinement::TermsToReplace(const std::vector<double>& share) const {
    std::vector<std::size_t> order(m_terms.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return share[a] < share[b]; });

    // The terms with the smallest errors stay as they are, as long as no body's kept errors sum to too much.
    const double budget = keptError * m_options.percentError / 100;
    std::vector<double> kept(m_bodies.size(), 0);
    std::vector<bool> leaves(m_terms.size(), false);
    for (const std::size_t i : order) {
        if (AtItsLimit(m_terms[i], share[i])) {
            continue;
        }
        double& source = kept[m_magnets[m_terms[i].source].body];
        double& target = kept[m_magnets[m_terms[i].target].body];
        leaves[i] = std::max(source, target) + share[i] > budget;
        source += share[i];
        target += share[i];
    }
    return leaves;
}

void Refinement::ReplaceTerms(const std::vector<double>& share, const std::vector<bool>& leaves) {
    std::vector<Term> old;
    old.swap(m_terms);
    m_terms.reserve(old.size());
    for (std::size_t i = 0; i < old.size(); ++i) {
        if (!leaves[i]) {
            old[i].interaction.exhausted = AtItsLimit(old[i], share[i]);
            m_terms.push_back(old[i]);
        }
    }
    m_evaluated = m_terms.size();
    for (std::size_t i = 0; i < old.size(); ++i) {
        if (leaves[i]) {
            Replace(old[i], share[i]);
        }
    }
}

bool Refinement::Refine() {
    std::vector<double> share(m_terms.size());
    std::transform(m_terms.begin(), m_terms.end(), share.begin(), [this](const Term& term) { return Share(term); });
    const std::vector<bool> leaves = TermsToReplace(share);
    if (std::find(leaves.begin(), leaves.end(), true) == leaves.end()) {
        return false;
    }
    ReplaceTerms(share, leaves);
    return true;
}

} // namespace vantor::solver
