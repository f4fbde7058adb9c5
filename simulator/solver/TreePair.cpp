#include "simulator/solver/TreePair.h"

#include "simulator/solver/Parallel.h"

namespace vantor::solver {

std::deque<PosedTree> PosedTrees(const std::vector<PreparedMagnet>& magnets, unsigned threads) {
    std::vector<const ChargeTree*> trees(magnets.size());
    ForEach(magnets.size(), threads, [&](std::size_t i) { trees[i] = &magnets[i].shape->Charges(); });
    std::deque<PosedTree> posed;
    for (std::size_t i = 0; i < magnets.size(); ++i) {
        posed.emplace_back(*trees[i], magnets[i].pose.linear());
    }
    return posed;
}

std::vector<TreePair> PairsOfRoots(const std::vector<PreparedMagnet>& magnets, const std::deque<PosedTree>& trees) {
    std::vector<TreePair> pairs;
    for (std::uint32_t i = 0; i < magnets.size(); ++i) {
        for (std::uint32_t j = i + 1; j < magnets.size(); ++j) {
            if (magnets[i].body != magnets[j].body) {
                pairs.push_back({{i, trees[i].Tree().Root()}, {j, trees[j].Tree().Root()}});
            }
        }
    }
    return pairs;
}

std::array<TreePair, 2> Split(const TreePair& pair, const ChargeTree& source, const ChargeTree& target) {
    const bool sourceIsLarger =
        source.ClusterOf(pair.source.node).extent.radius >= target.ClusterOf(pair.target.node).extent.radius;
    const bool splitsSource = !source.IsLeaf(pair.source.node) && (sourceIsLarger || target.IsLeaf(pair.target.node));
    const auto& children = splitsSource ? source.ChildrenOf(pair.source.node) : target.ChildrenOf(pair.target.node);
    std::array<TreePair, 2> parts{pair, pair};
    for (std::size_t i = 0; i < parts.size(); ++i) {
        (splitsSource ? parts[i].source : parts[i].target).node = children[i];
    }
    return parts;
}

} // namespace vantor::solver
