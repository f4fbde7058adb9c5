#pragma once
// Two nodes of the trees of two magnets, on the walk through both trees together.
#include "simulator/solver/PosedTree.h"
#include "simulator/solver/PreparedMagnet.h"

#include <deque>

namespace vantor::solver {

/// A node of a magnet's tree where the magnet is.
struct TreePlace {
    std::uint32_t magnet = 0;
    ChargeTree::Node node = 0;
};
struct TreePair {
    TreePlace source, target;
};

/// Pairs from which a second thread earns its start.
constexpr std::size_t pairsForThreads = 512;

/// The trees of magnets that outlive them, where the magnets are.
std::deque<PosedTree> PosedTrees(const std::vector<PreparedMagnet>& magnets, unsigned threads);

/// The roots of all magnets' trees with those of all magnets of other bodies.
std::vector<TreePair> PairsOfRoots(const std::vector<PreparedMagnet>& magnets, const std::deque<PosedTree>& trees);

/// The pair with the larger node's children instead of it; of one that has some.
std::array<TreePair, 2> Split(const TreePair& pair, const ChargeTree& source, const ChargeTree& target);

} // namespace vantor::solver
