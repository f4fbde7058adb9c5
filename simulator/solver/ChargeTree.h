#pragma once
// A tree of clusters over the charged faces of one magnet, in the magnet's own axes.
#include "simulator/solver/ChargedFace.h"
#include "simulator/solver/ClusterPair.h"

#include <cstdint>
#include <memory>

namespace vantor::solver {

/// Where a cluster is and how large.
struct Cluster {
    Eigen::Vector3d centre = Eigen::Vector3d::Zero();
    ClusterExtent extent;
    /// The largest charge per area in it, A/m.
    double density = 0;
};

/// A point that stands for a piece of a face.
struct WeightedPoint {
    Eigen::Vector3d at;
    /// m^2.
    double weight = 0;
};

/// Points with the area, and all moments up to the fifth order, of a polygon: seven in each of the triangles between
/// one corner and the edges. Triangles outside of a polygon that is not convex have negative weights.
/// @param points  gets them, instead of what it held
void SetPoints(const Polygon& polygon, std::vector<WeightedPoint>& points);

/// Binary. Leaves are faces, or parts of faces that have many edges, which are nodes, too, or of slender ones.
class ChargeTree {
public:
    using Node = std::uint32_t;

    /// @param faces  at least one; must outlive the tree
    explicit ChargeTree(const std::vector<ChargedFace>& faces);

    Node Root() const { return m_root; }
    const Cluster& ClusterOf(Node node) const { return m_nodes[node].cluster; }
    bool IsLeaf(Node node) const { return m_nodes[node].moments == none; }
    /// The face, or the part of one, that the node is; null for clusters of several.
    const ChargedFace* FaceOf(Node node) const { return m_nodes[node].face; }
    /// @pre no leaf
    const std::array<Node, 2>& ChildrenOf(Node node) const { return m_nodes[node].children; }
    /// About the node's centre.
    /// @pre no leaf
    const Moments& MomentsOf(Node node) const { return m_moments[m_nodes[node].moments]; }
    /// Number of nodes.
    std::size_t Size() const { return m_nodes.size(); }

private:
    static constexpr std::uint32_t none = 0xffffffff;

    struct Entry {
        Cluster cluster;
        const ChargedFace* face = nullptr;
        std::array<Node, 2> children{};
        std::uint32_t moments = none;
    };
    /// A node under which the tree is complete, with the moments about its centre.
    struct Branch {
        Node node = 0;
        HigherMoments moments{};
    };
    /// What is to be joined: a face that has no node yet, or a branch.
    struct Item {
        Eigen::Vector3d centre;
        double radius = 0, charge = 0;
        const ChargedFace* face = nullptr;
        const Branch* branch = nullptr;
        /// Decides between equal centres.
        std::size_t number = 0;
        /// Once it has a node.
        double spread = 0;
    };
    using Items = std::vector<Item>;

    static double LongestSlenderFace(const std::vector<ChargedFace>& faces);
    const std::vector<ChargedFace>& Keep(std::vector<Polygon> parts, const ChargedFace& whole);
    Branch Joined(const std::vector<ChargedFace>& faces, double longestSlender);
    void AddItems(const ChargedFace& face, double longestSlender, Items& items,
                  std::vector<std::unique_ptr<const Branch>>& branches);
    Branch WithParts(const ChargedFace& face);
    Item ItemOf(const Branch& branch, std::size_t number) const;
    Branch Join(Items& items, std::size_t begin, std::size_t end);
    Branch LeafOf(const ChargedFace& face);
    static std::size_t Divide(Items& items, std::size_t begin, std::size_t end);
    static void SetExtent(Cluster& cluster, const Items& items, std::size_t begin, std::size_t end);

    /// Of faces.
    std::vector<std::unique_ptr<std::vector<ChargedFace>>> m_parts;
    std::vector<Entry> m_nodes;
    std::vector<Moments> m_moments;
    Node m_root = 0;
};

} // namespace vantor::solver
