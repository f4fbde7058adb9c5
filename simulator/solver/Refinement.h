#pragma once
// The sum over all pairs of magnets, refined where its error is.
//
// It starts from the cheapest description of every pair that may do: distant magnets as dipoles, distant faces as
// charges, near faces by integrals along their edges. Whatever has too large an error estimate is replaced by the next
// better description: magnets by their faces, distant faces by their edges, a rule by a longer one, a piece by its
// halves.
#include "simulator/solver/EdgeIntegral.h"
#include "simulator/solver/PreparedMagnet.h"

#include <limits>

namespace vantor::solver {

/// One summand. Indices that a kind doesn't need stay 0.
struct Term {
    enum class Kind : unsigned char {
        /// Two magnets as dipoles.
        FarMagnets,
        /// A face of the source and all distant faces of the target as charges.
        FarFaces,
        /// One face of each as charges.
        FarPair,
        /// A piece of an edge of one face, for one face of each.
        Piece
    };
    Kind kind = Kind::FarMagnets;
    /// Magnets.
    std::size_t source = 0, target = 0;
    std::size_t sourceFace = 0, targetFace = 0;
    EdgePiece piece;
    Interaction interaction;
    /// Share in the error of the term it replaced.
    double parentShare = std::numeric_limits<double>::infinity();
};

class Refinement {
public:
    /// @param magnets  must outlive this object
    Refinement(const std::vector<PreparedMagnet>& magnets, const std::vector<Body>& bodies, const Options& options);

    /// Evaluates what is new since the last pass.
    Pass Evaluate();
    /// Replaces the terms that stand in the way of the wanted error.
    /// @return false when nothing is left that could be improved
    bool Refine();
    /// Loads about the origin of coordinates, as far as evaluated.
    const std::vector<Load>& Loads() const { return m_loads; }

private:
    /// What a body's load is measured against, and what its terms' errors sum to.
    struct Judgement {
        Eigen::Vector3d centre = Eigen::Vector3d::Zero();
        /// A hundredth of the dipole scales.
        double leastForce = 0, leastTorque = 0;
        /// The load's size, or the least one.
        double force = 0, torque = 0;
        double forceError = 0, torqueError = 0;
    };

    void SetCentres();
    void SetScales();
    void Start(std::size_t source, std::size_t target);
    void AddFaces(std::size_t source, std::size_t target, unsigned char leastRule);
    void AddPieces(const Term& pair, unsigned char leastRule);
    void Replace(const Term& term, double share);
    void ReplaceFarFaces(Term next);
    void ReplaceTerms(const std::vector<double>& share, const std::vector<bool>& leaves);
    BodyCentres CentresFor(const Term& term) const;
    Interaction Evaluated(const Term& term) const;
    Interaction EvaluatedFarFaces(const Term& term) const;
    std::size_t Cost(const Term& term) const;
    unsigned ThreadsFor(std::size_t cost) const;
    std::size_t Evaluations(const Term& term) const;
    void SumUp();
    double PercentError() const;
    static bool AtItsLimit(const Term& term, double share);
    double Share(const Term& term) const;
    std::vector<bool> TermsToReplace(const std::vector<double>& share) const;

    const std::vector<PreparedMagnet>& m_magnets;
    const Options& m_options;
    std::vector<Judgement> m_bodies;
    std::vector<Term> m_terms;
    /// Terms before this one hold their interaction.
    std::size_t m_evaluated = 0;
    std::vector<Load> m_loads;
    int m_pass = 0;
};

} // namespace vantor::solver
