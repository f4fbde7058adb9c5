#pragma once
// A tree of charges in the axes of the solve.
#include "simulator/solver/ChargeTree.h"

#include <atomic>

namespace vantor::solver {

class PosedTree {
public:
    /// @param tree  must outlive this object
    PosedTree(const ChargeTree& tree, const Eigen::Matrix3d& rotation);

    const ChargeTree& Tree() const { return m_tree; }

    /// The moments of a node about its centre, turned when they are asked for the first time; from any thread.
    const Moments& MomentsOf(ChargeTree::Node node) const;

private:
    enum class State : unsigned char { Unknown, BeingWritten, Known };

    Moments Turned(ChargeTree::Node node) const;

    const ChargeTree& m_tree;
    Eigen::Matrix3d m_rotation;
    MomentRotation m_momentRotation;
    std::unique_ptr<std::atomic<State>[]> m_states;
    /// Not initialised: of a large tree few nodes are looked at, and the others then take no memory.
    std::unique_ptr<Moments[]> m_moments;
};

} // namespace vantor::solver
