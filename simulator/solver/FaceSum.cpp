#include "simulator/solver/FaceSum.h"

#include "simulator/solver/FarField.h"
#include "simulator/solver/Parallel.h"

#include <algorithm>
#include <iterator>

namespace vantor::solver {
namespace {

/// Shortest rule for faces whose far description was not good enough: their sum cancels, so that one point, the coarse
/// side of rule 0, says nothing about the error.
constexpr unsigned char leastRuleOfFarFaces = 1;
/// Part of the wanted error that terms may keep together without being refined.
constexpr double keptByFaces = 0.25;
/// Edges to evaluate from which a second thread earns its start.
constexpr std::size_t workForThreads = 40000;

} // namespace

FaceSum::FaceSum(const std::vector<PreparedMagnet>& magnets, std::size_t bodies, const Options& options)
    : m_magnets(magnets), m_options(options), m_judgement(magnets, bodies) {
    std::transform(magnets.begin(), magnets.end(), std::back_inserter(m_faces), PosedFaces);
    for (std::size_t i = 0; i < magnets.size(); ++i) {
        for (std::size_t j = i + 1; j < magnets.size(); ++j) {
            if (magnets[i].body != magnets[j].body) {
                Start(i, j);
            }
        }
    }
}

void FaceSum::Start(std::size_t source, std::size_t target) {
    if (!FarApart(m_magnets[source], m_magnets[target])) {
        AddFaces(source, target, 0);
        return;
    }
    Term term;
    term.source = source;
    term.target = target;
    m_terms.push_back(term);
}

void FaceSum::AddFaces(std::size_t source, std::size_t target, unsigned char leastRule) {
    Term term;
    term.isPiece = true;
    term.source = source;
    term.target = target;
    for (term.sourceFace = 0; term.sourceFace < m_faces[source].size(); ++term.sourceFace) {
        for (term.targetFace = 0; term.targetFace < m_faces[target].size(); ++term.targetFace) {
            for (const EdgePiece& piece :
                 CutEdges(m_faces[source][term.sourceFace].polygon, m_faces[target][term.targetFace].polygon)) {
                term.piece = piece;
                term.piece.rule = std::max(piece.rule, leastRule);
                m_terms.push_back(term);
            }
        }
    }
}

void FaceSum::Replace(const Term& term, double share) {
    if (!term.isPiece) {
        AddFaces(term.source, term.target, leastRuleOfFarFaces);
        return;
    }
    Term next = term;
    next.parentShare = share;
    for (const EdgePiece& piece : Finer(term.piece)) {
        next.piece = piece;
        m_terms.push_back(next);
    }
}

BodyCentres FaceSum::CentresFor(const Term& term) const {
    return m_judgement.CentresFor(m_magnets[term.source], m_magnets[term.target]);
}

Interaction FaceSum::Evaluated(const Term& term) const {
    if (!term.isPiece) {
        return FarInteraction(m_magnets[term.source], m_magnets[term.target], CentresFor(term));
    }
    const ChargedFace& from = m_faces[term.source][term.sourceFace];
    const ChargedFace& to = m_faces[term.target][term.targetFace];
    return fieldConstant * from.charge * to.charge *
           IntegratePiece(from.polygon, to.polygon, term.piece, CentresFor(term));
}

std::size_t FaceSum::Evaluations(const Term& term) {
    return term.isPiece ? static_cast<std::size_t>(RulePoints(term.piece.rule)) : farMagnetEvaluations;
}

std::size_t FaceSum::Cost(const Term& term) const {
    if (!term.isPiece) {
        return Evaluations(term);
    }
    const bool onSource = term.piece.owner == EdgePiece::Owner::Source;
    const Polygon& other =
        onSource ? m_faces[term.target][term.targetFace].polygon : m_faces[term.source][term.sourceFace].polygon;
    return Evaluations(term) * other.edges.size();
}

Pass FaceSum::Evaluate() {
    Pass pass;
    pass.number = ++m_pass;
    std::size_t cost = 0;
    for (std::size_t i = m_evaluated; i < m_terms.size(); ++i) {
        pass.evaluations += Evaluations(m_terms[i]);
        cost += Cost(m_terms[i]);
    }
    // How many threads there are is asked only where it matters: the answer takes as long as a small pass.
    const unsigned threads = cost < workForThreads ? 1 : ThreadsFor(m_options.threads);
    ForRanges(m_terms.size() - m_evaluated, threads, [this](std::size_t begin, std::size_t end) {
        for (std::size_t i = m_evaluated + begin; i < m_evaluated + end; ++i) {
            m_terms[i].interaction = Evaluated(m_terms[i]);
        }
    });
    m_evaluated = m_terms.size();
    SumUp();
    pass.percentError = m_judgement.PercentError();
    return pass;
}

void FaceSum::SumUp() {
    m_judgement.Clear();
    for (const Term& term : m_terms) {
        m_judgement.Add(m_magnets[term.source], m_magnets[term.target], term.interaction);
    }
    m_judgement.Finish();
}

double FaceSum::Share(const Term& term) const {
    const double share = m_judgement.Share(m_magnets[term.source], m_magnets[term.target], term.interaction);
    return term.interaction.exhausted || Stagnates(share, term.parentShare) ? -1 : share;
}

void FaceSum::ReplaceTerms(const std::vector<double>& share, const std::vector<bool>& leaves) {
    std::vector<Term> old;
    old.swap(m_terms);
    m_terms.reserve(old.size());
    for (std::size_t i = 0; i < old.size(); ++i) {
        if (!leaves[i]) {
            old[i].interaction.exhausted = share[i] < 0;
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

bool FaceSum::Refine() {
    std::vector<double> share(m_terms.size());
    std::transform(m_terms.begin(), m_terms.end(), share.begin(), [this](const Term& term) { return Share(term); });
    const auto bodiesOf = [this](std::size_t i) {
        return std::array<std::size_t, 2>{m_magnets[m_terms[i].source].body, m_magnets[m_terms[i].target].body};
    };
    const std::vector<bool> leaves =
        TermsToRefine(share, bodiesOf, m_judgement.BodyCount(), keptByFaces * m_options.percentError / 100);
    if (std::find(leaves.begin(), leaves.end(), true) == leaves.end()) {
        return false;
    }
    ReplaceTerms(share, leaves);
    return true;
}

} // namespace vantor::solver
