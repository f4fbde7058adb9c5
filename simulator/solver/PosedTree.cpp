#include "simulator/solver/PosedTree.h"

#include <thread>

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
        AddCharge(moments, face.ChargeAt(point.at) * point.weight, m_rotation * (point.at - face.polygon.centre));
    }
    return moments;
}

const Moments& PosedTree::MomentsOf(ChargeTree::Node node) const {
    std::atomic<State>& state = m_states[node];
    State now = state.load(std::memory_order_acquire);
    if (now == State::Unknown && state.compare_exchange_strong(now, State::BeingWritten)) {
        m_moments[node] = Turned(node);
        state.store(State::Known, std::memory_order_release);
        return m_moments[node];
    }
    while (state.load(std::memory_order_acquire) != State::Known) {
        std::this_thread::yield(); // another thread is at it, for a microsecond
    }
    return m_moments[node];
}

} // namespace vantor::solver
