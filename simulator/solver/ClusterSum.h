#pragma once
// The sum over all pairs of magnets by clusters of their charges, refined where its error is: for magnets of many
// faces, and for many magnets.
//
// Both trees of a pair are walked together (dual tree traversal: A. W. Appel, SIAM Journal on Scientific and
// Statistical Computing 6 (1985) 85-103; M. S. Warren, J. K. Salmon, 1995). Two clusters are taken as they are if the
// bound of what their moments leave out is within the share of the wanted error that one term may have; otherwise the
// larger one is split. Two faces that are too close for it are integrated: the field of one at points of the other,
// or along edges where that is not good enough either. A pair whose charges cannot matter wherever they are is left
// out. So the cost of a solve follows what is near and matters for the wanted error, not the number of triangles.
#include "simulator/solver/Judgement.h"
#include "simulator/solver/PointIntegral.h"
#include "simulator/solver/TreePair.h"

namespace vantor::solver {

class ClusterSum {
public:
    /// @param magnets  must outlive this object
    ClusterSum(const std::vector<PreparedMagnet>& magnets, std::size_t bodies, const Options& options);

    /// Evaluates what is new since the last pass.
    Pass Evaluate();
    /// Marks the terms that stand in the way of the wanted error.
    /// @return false when nothing is left that could be improved
    bool Refine();
    /// Loads about the origin of coordinates, as far as evaluated.
    const std::vector<Load>& Loads() const { return m_judgement.Loads(); }

private:
    using Place = TreePlace;
    using Pair = TreePair;
    /// A pair's clusters where they are.
    struct View {
        const PreparedMagnet& sourceMagnet;
        const PreparedMagnet& targetMagnet;
        const Cluster& source;
        const Cluster& target;
        Eigen::Vector3d from, to;
        BodyCentres centres;
    };
    /// One summand.
    struct Term {
        Pair pair;
        /// Errors in single precision: there may be millions of terms.
        float forceError = 0, sourceTorqueError = 0, targetTorqueError = 0;
        bool exhausted = false;
        Wrench wrench;

        Interaction Whole() const;
    };
    /// What became of a pair: a term, or the two pairs that replace it, or two faces that are to be integrated.
    struct Outcome {
        enum class Kind : unsigned char { Term, Split, Faces };
        Kind kind = Kind::Term;
        std::array<Pair, 2> parts;
        Term term;
        std::size_t evaluations = 0;
    };
    const ChargeTree& TreeOf(const Place& place) const { return m_trees[place.magnet].Tree(); }
    const PreparedMagnet& MagnetOf(const Place& place) const { return m_magnets[place.magnet]; }
    const Moments& MomentsOf(const Place& place) const { return m_trees[place.magnet].MomentsOf(place.node); }
    const ChargedFace* FaceOf(const Place& place) const { return TreeOf(place).FaceOf(place.node); }
    View ViewOf(const Pair& pair) const;

    Outcome Examined(const Pair& pair) const;
    Outcome Integrated(const Pair& pair) const;
    std::size_t WalkTrees(std::vector<Pair>& faces);
    std::size_t IntegrateAll(const std::vector<Pair>& faces);
    /// Whether a pair that its moments do not describe is not to be split any more.
    bool AreToBeIntegrated(const Pair& pair, double distance) const;
    static Interaction ErrorOf(const View& view, const ErrorSizes& sizes);
    double ShareOf(const View& view, const Interaction& interaction) const {
        return m_judgement.Share(view.sourceMagnet, view.targetMagnet, interaction);
    }
    bool IsGoodEnough(const View& view, const Interaction& interaction) const {
        return ShareOf(view, interaction) <= m_allowedShare;
    }
    static Term TermOf(const Pair& pair, const Interaction& interaction);
    bool AddByPoints(const Pair& pair, const View& view, Outcome& outcome) const;
    bool AddByPoints(const Pair& pair, const View& view, bool onSource, Outcome& outcome) const;
    void AddByEdges(const Pair& pair, const View& view, Outcome& outcome) const;
    void SumUp();

    const std::vector<PreparedMagnet>& m_magnets;
    const Options& m_options;
    unsigned m_threads;
    Judgement m_judgement;
    std::deque<PosedTree> m_trees;
    /// Pairs to look at in the next pass.
    std::vector<Pair> m_open;
    std::vector<Term> m_terms;
    /// The part of a body's load that a term's error may be.
    double m_allowedShare;
    int m_pass = 0;
};

} // namespace vantor::solver
