#pragma once
// Whether surfaces of hundreds of thousands of triangles meet, and what lies inside them, without looking at more
// than a few triangles.
//
// Sources: S. Gottschalk, M. C. Lin, D. Manocha, "OBBTree: a hierarchical structure for rapid interference detection",
// SIGGRAPH 1996 (boxes turned with what they hold, and their separating axes); G. Barill, N. G. Dickson, R. Schmidt,
// D. I. W. Levin, A. Jacobson, "Fast winding numbers for soups and clouds", ACM Transactions on Graphics 37 (2018) 43
// (solid angles of far parts by their area vectors).
#include "simulator/solver/Magnetostatics.h"

#include <Eigen/Geometry>
#include <cstdint>

namespace vantor::solver {

/// The triangles of a mesh in a tree of boxes, in the mesh's own axes. Made once, it serves every pose.
class SurfaceTree {
public:
    using Triangle = std::array<Eigen::Vector3d, 3>;

    /// Triangles without area are left out.
    /// @param mesh  indices in range, coordinates finite; not needed any more afterwards
    explicit SurfaceTree(const TriangleMesh& mesh);

    /// No triangle has an area; such a surface meets nothing and holds nothing.
    bool IsEmpty() const { return m_triangles.empty(); }
    /// In the mesh's own axes.
    const Eigen::AlignedBox3d& Box() const { return m_box; }
    /// Radius of the sphere about the box's centre that holds the surface, metres.
    double Radius() const { return m_radius; }
    /// A point of the surface.
    /// @pre !IsEmpty()
    const Eigen::Vector3d& Point() const { return m_triangles.front()[0]; }

private:
    using Index = std::uint32_t;

    /// A box turned as the triangles in it lie.
    struct TurnedBox {
        Eigen::Vector3d centre;
        /// Columns are unit vectors.
        Eigen::Matrix3d axes;
        /// Half its lengths along the axes.
        Eigen::Vector3d half;
    };
    struct Node {
        TurnedBox box;
        double radius = 0, area = 0;
        Eigen::Vector3d areaVector = Eigen::Vector3d::Zero();
        /// Triangles, and the second child; the first one is the next node. Leaves have no second child.
        Index first = 0, count = 0, second = 0;

        bool IsLeaf() const { return second == 0; }
    };
    struct AngleSum {
        double angle = 0, uncertainty = 0;
    };
    class Builder;
    class PairWalk;

    AngleSum AngleAt(const Eigen::Vector3d& point, double radii) const;

    friend bool Meet(const SurfaceTree& a, const Eigen::Isometry3d& poseA, const SurfaceTree& b,
                     const Eigen::Isometry3d& poseB, double tolerance);
    friend bool Contains(const SurfaceTree& outer, const Eigen::Isometry3d& pose, const Eigen::Vector3d& point);

    /// In the order of the leaves.
    std::vector<Triangle> m_triangles;
    std::vector<Node> m_nodes;
    Eigen::AlignedBox3d m_box;
    double m_radius = 0;
};

/// Whether two surfaces cut each other or come within `tolerance` (metres) of each other. One inside the other does not
/// count.
bool Meet(const SurfaceTree& a, const Eigen::Isometry3d& poseA, const SurfaceTree& b, const Eigen::Isometry3d& poseB,
          double tolerance);

/// Whether a point that is not on the surface lies inside it.
/// @param outer  closed, its triangles counter-clockwise seen from outside
bool Contains(const SurfaceTree& outer, const Eigen::Isometry3d& pose, const Eigen::Vector3d& point);

} // namespace vantor::solver
