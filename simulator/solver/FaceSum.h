#pragma once
// The sum over all pairs of faces, refined where its error is: for magnets of few faces, which are all near each other.
//
// It starts from the cheapest description of every pair of magnets that may do: distant magnets as dipoles, others by
// integrals along the edges of their faces. Whatever has too large an error estimate is replaced by the next better
// description: dipoles by faces, a rule by a longer one, a piece by its halves.
#include "simulator/solver/EdgeIntegral.h"
#include "simulator/solver/Judgement.h"

#include <limits>

namespace vantor::solver {

class FaceSum {
public:
    /// @param magnets  must outlive this object
    FaceSum(const std::vector<PreparedMagnet>& magnets, std::size_t bodies, const Options& options);

    /// Evaluates what is new since the last pass.
    Pass Evaluate();
    /// Replaces the terms that stand in the way of the wanted error.
    /// @return false when nothing is left that could be improved
    bool Refine();
    /// Loads about the origin of coordinates, as far as evaluated.
    const std::vector<Load>& Loads() const { return m_judgement.Loads(); }

private:
    /// One summand: two magnets as dipoles, or a piece of an edge of one face, for one face of each.
    struct Term {
        bool isPiece = false;
        /// Magnets.
        std::size_t source = 0, target = 0;
        std::size_t sourceFace = 0, targetFace = 0;
        EdgePiece piece;
        Interaction interaction;
        /// Share in the error of the term it replaced.
        double parentShare = std::numeric_limits<double>::infinity();
    };

    void Start(std::size_t source, std::size_t target);
    void AddFaces(std::size_t source, std::size_t target, unsigned char leastRule);
    void Replace(const Term& term, double share);
    void ReplaceTerms(const std::vector<double>& share, const std::vector<bool>& leaves);
    BodyCentres CentresFor(const Term& term) const;
    Interaction Evaluated(const Term& term) const;
    static std::size_t Evaluations(const Term& term);
    std::size_t Cost(const Term& term) const;
    void SumUp();
    double Share(const Term& term) const;

    const std::vector<PreparedMagnet>& m_magnets;
    const Options& m_options;
    /// For each magnet.
    std::vector<std::vector<ChargedFace>> m_faces;
    Judgement m_judgement;
    std::vector<Term> m_terms;
    /// Terms before this one hold their interaction.
    std::size_t m_evaluated = 0;
    int m_pass = 0;
};

} // namespace vantor::solver
