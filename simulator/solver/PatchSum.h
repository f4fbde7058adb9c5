#pragma once
// The loads of charges that are themselves the result of a solve, and so not worth an integral to the last digit.
//
// How a pair is summed depends on its distance over its size alone: clusters that are apart by their moments, faces by
// more points the nearer they are, and near ones by the closed form of one's field at points of the other, in parts
// that are small against their distance. What that leaves out is a small part of what the charges themselves are
// wrong by, and changes smoothly as the bodies move.
#include "simulator/solver/Judgement.h"
#include "simulator/solver/PointIntegral.h"
#include "simulator/solver/TreePair.h"

namespace vantor::solver {

class PatchSum {
public:
    /// Sums up.
    /// @param magnets  must outlive this object
    /// @param leastLever  as for a Judgement
    PatchSum(const std::vector<PreparedMagnet>& magnets, std::size_t bodies, unsigned threads, double leastLever);

    const Judgement& Judged() const { return m_judgement; }
    /// Field evaluations made.
    std::size_t Evaluations() const { return m_evaluations; }

private:
    /// A face's charges as three points.
    using FewPoints = std::array<WeightedPoint, 3>;
    struct Sum {
        Wrench wrench;
        std::size_t evaluations = 0;
    };

    const ChargeTree& TreeOf(const TreePlace& place) const { return m_trees[place.magnet].Tree(); }
    const Cluster& ClusterOf(const TreePlace& place) const { return TreeOf(place).ClusterOf(place.node); }
    bool IsLeaf(const TreePlace& place) const { return TreeOf(place).IsLeaf(place.node); }
    const ChargedFace& FaceOf(const TreePlace& place) const { return *TreeOf(place).FaceOf(place.node); }
    const Eigen::Isometry3d& PoseOf(const TreePlace& place) const { return m_magnets[place.magnet].pose; }
    Eigen::Vector3d CentreOf(const TreePlace& place) const { return PoseOf(place) * ClusterOf(place).centre; }
    double Separation(const TreePair& pair) const;

    void SetPointsOfFaces();
    std::vector<TreePair> Walk() const;
    Sum Of(const TreePair& pair) const;
    Sum ByMoments(const TreePair& pair) const;
    Sum ByFaces(const TreePair& pair, double separation) const;
    std::vector<WeightedPoint> ManyPoints(const TreePlace& place) const;

    const std::vector<PreparedMagnet>& m_magnets;
    unsigned m_threads;
    std::deque<PosedTree> m_trees;
    /// Of each magnet's nodes, where they are leaves, here and now.
    std::vector<std::vector<FewPoints>> m_points;
    Judgement m_judgement;
    std::size_t m_evaluations = 0;
};

} // namespace vantor::solver
