#include "simulator/solver/PosedTree.h"

namespace vantor::solver {

PosedTree::PosedTree(const ChargeTree& tree, const Eigen::Matrix3d& rotation)
    : m_tree(tree), m_rotation(rotation), m_momentRotation(rotation), m_states(new std::atomic<State>[tree.Size()]()),
      m_moments(new Moments[tree.Size()]) {}

Moments PosedTree::Turned(ChargeTree::Node node) const {
    if (!m_tree.IsLeaf(node)) {
        return m_momentRotation(m_tree.MomentsOf(node));
    }
    const ChargedFace& face = *m_tree.FaceOf(node);
    std::vector<WeightedPoint> points;
    SetPoints(face.polygon, points);
    Moments moments{};
    for (const WeightedPoint& point : points) {
        AddCharge(moments, face.charge * point.weight, m_rotation * (point.at - face.polygon.centre));
    }
    return moments;
}

Moments PosedTree::MomentsOf(ChargeTree::Node node) const {
    std::atomic<State>& state = m_states[node];
    if (state.load(std::memory_order_acquire) == State::Known) {
        return m_moments[node];
    }
    const Moments moments = Turned(node);
    // Who comes second in the meantime makes the same numbers again, and leaves them to the first.
    State before = State::Unknown;
    if (state.compare_exchange_strong(before, State::BeingWritten)) {
        m_moments[node] = moments;
        state.store(State::Known, std::memory_order_release);
    }
    return moments;
}

} // namespace vantor::solver
