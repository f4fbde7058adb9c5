#include "simulator/solver/SurfaceTree.h"

#include <Eigen/Eigenvalues>
#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

namespace vantor::solver {
namespace {

using Eigen::Matrix3d;
using Eigen::Vector3d;
using Triangle = SurfaceTree::Triangle;

constexpr std::size_t trianglesOfLeaf = 4;
/// From this many radii on, a part of the surface is seen as its area vector. The uncertainty that comes with it
/// leaves no doubt whether a point is inside, save in odd cases.
constexpr double farRadii = 16;

Vector3d DoubleAreaVector(const Triangle& triangle) {
    return (triangle[1] - triangle[0]).cross(triangle[2] - triangle[0]);
}

double SquaredDistanceOfSegments(const Vector3d& a0, const Vector3d& a1, const Vector3d& b0, const Vector3d& b1) {
    // C. Ericson, "Real-Time Collision Detection" (2005), 5.1.9: closest points of two segments.
    const Vector3d a = a1 - a0, b = b1 - b0, offset = a0 - b0;
    const double aa = a.squaredNorm(), bb = b.squaredNorm(), ab = a.dot(b);
    const double ao = a.dot(offset), bo = b.dot(offset);
    const double determinant = aa * bb - ab * ab;
    double s = determinant > 1e-14 * aa * bb ? std::clamp((ab * bo - ao * bb) / determinant, 0.0, 1.0) : 0.0;
    double t = (ab * s + bo) / bb;
    if (t < 0 || t > 1) {
        t = std::clamp(t, 0.0, 1.0);
        s = std::clamp((ab * t - ao) / aa, 0.0, 1.0);
    }
    return (offset + s * a - t * b).squaredNorm();
}

/// Where the foot of a point on the triangle's plane lies inside the triangle, its height over the plane.
std::optional<double> HeightOver(const Triangle& triangle, const Vector3d& point) {
    const auto& [a, b, c] = triangle;
    const Vector3d normal = (b - a).cross(c - a);
    const auto leftOf = [&](const Vector3d& from, const Vector3d& to) {
        return (to - from).cross(point - from).dot(normal) >= 0;
    };
    if (!leftOf(a, b) || !leftOf(b, c) || !leftOf(c, a)) {
        return std::nullopt;
    }
    return (point - a).dot(normal) / normal.norm();
}

bool SegmentMeets(const Triangle& triangle, const Vector3d& from, const Vector3d& to) {
    const Vector3d normal = DoubleAreaVector(triangle);
    const double start = (from - triangle[0]).dot(normal), end = (to - triangle[0]).dot(normal);
    if ((start > 0) == (end > 0) || start == end) {
        return false;
    }
    return HeightOver(triangle, from + start / (start - end) * (to - from)).has_value();
}

/// One half of the test: corners of `a` close to the inside of `b`, edges of `a` through `b`.
bool CornersOrEdgesMeet(const Triangle& a, const Triangle& b, double tolerance) {
    for (std::size_t i = 0; i < 3; ++i) {
        const std::optional<double> height = HeightOver(b, a[i]);
        if ((height && std::abs(*height) <= tolerance) || SegmentMeets(b, a[i], a[(i + 1) % 3])) {
            return true;
        }
    }
    return false;
}

/// Whether `b` is on one side of the plane of `a`, farther away than the tolerance. Most triangles whose boxes meet
/// are.
bool OnOneSide(const Triangle& a, const Triangle& b, double tolerance) {
    const Vector3d normal = DoubleAreaVector(a).normalized();
    const Vector3d heights((b[0] - a[0]).dot(normal), (b[1] - a[0]).dot(normal), (b[2] - a[0]).dot(normal));
    return heights.minCoeff() > tolerance || heights.maxCoeff() < -tolerance;
}

bool TrianglesMeet(const Triangle& a, const Triangle& b, double tolerance) {
    if (OnOneSide(a, b, tolerance) || OnOneSide(b, a, tolerance)) {
        return false;
    }
    if (CornersOrEdgesMeet(a, b, tolerance) || CornersOrEdgesMeet(b, a, tolerance)) {
        return true;
    }
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            if (SquaredDistanceOfSegments(a[i], a[(i + 1) % 3], b[j], b[(j + 1) % 3]) <= tolerance * tolerance) {
                return true;
            }
        }
    }
    return false;
}

/// Solid angle of a triangle: A. van Oosterom, J. Strackee, IEEE Transactions on Biomedical Engineering 30 (1983) 125.
double SolidAngleOf(const Triangle& triangle, const Vector3d& point) {
    const Vector3d a = triangle[0] - point, b = triangle[1] - point, c = triangle[2] - point;
    const double la = a.norm(), lb = b.norm(), lc = c.norm();
    return 2 * std::atan2(a.dot(b.cross(c)), la * lb * lc + a.dot(b) * lc + b.dot(c) * la + c.dot(a) * lb);
}

/// Orthonormal axes that suit what the matrix of second moments belongs to, the longest extent last.
Matrix3d PrincipalAxes(const Matrix3d& secondMoments) {
    Eigen::SelfAdjointEigenSolver<Matrix3d> solver;
    solver.computeDirect(secondMoments);
    Matrix3d axes = solver.eigenvectors();
    axes.col(2).normalize();
    // The direct way is quick but leaves its vectors a little askew.
    axes.col(0) = (axes.col(0) - axes.col(0).dot(axes.col(2)) * axes.col(2)).normalized();
    axes.col(1) = axes.col(2).cross(axes.col(0));
    return axes.allFinite() ? axes : Matrix3d(Matrix3d::Identity());
}

} // namespace

/// Halves the triangles at the median of their middles, across the longest side of their box.
class SurfaceTree::Builder {
public:
    Builder(SurfaceTree& tree, std::vector<Triangle> triangles)
        : m_tree(tree), m_triangles(std::move(triangles)), m_order(m_triangles.size()) {
        for (std::size_t i = 0; i < m_order.size(); ++i) {
            m_order[i].second = static_cast<Index>(i);
        }
    }
    void Build() {
        m_tree.m_triangles.reserve(m_triangles.size());
        // Every leaf is at least half full.
        m_tree.m_nodes.reserve(4 * m_triangles.size() / trianglesOfLeaf + 1);
        Add(0, m_order.size());
    }

private:
    void Add(std::size_t first, std::size_t last) {
        const std::size_t index = m_tree.m_nodes.size();
        m_tree.m_nodes.push_back(NodeOf(first, last));
        // cppcheck-suppress knownConditionTrueFalse ; it takes the list for empty that has been moved here
        if (last - first <= trianglesOfLeaf) {
            for (std::size_t i = first; i < last; ++i) {
                m_tree.m_triangles.push_back(At(i));
                AddArea(m_tree.m_nodes[index], DoubleAreaVector(At(i)) / 2);
            }
            return;
        }
        const std::size_t middle = (first + last) / 2;
        PartitionAt(middle, first, last, m_tree.m_nodes[index].box);
        Add(first, middle);
        const std::size_t second = m_tree.m_nodes.size();
        Add(middle, last);
        Node& node = m_tree.m_nodes[index];
        node.second = static_cast<Index>(second);
        for (const std::size_t child : {index + 1, second}) {
            node.area += m_tree.m_nodes[child].area;
            node.areaVector += m_tree.m_nodes[child].areaVector;
        }
    }
    static void AddArea(Node& leaf, const Vector3d& areaVector) {
        leaf.area += areaVector.norm();
        leaf.areaVector += areaVector;
    }
    const Triangle& At(std::size_t i) const { return m_triangles[m_order[i].second]; }

    void PartitionAt(std::size_t middle, std::size_t first, std::size_t last, const TurnedBox& box) {
        Eigen::Index longest = 0;
        box.half.maxCoeff(&longest);
        const Vector3d along = box.axes.col(longest);
        const auto at = [&](std::size_t i) { return m_order.begin() + static_cast<std::ptrdiff_t>(i); };
        for (std::size_t i = first; i < last; ++i) {
            const auto& [a, b, c] = At(i);
            m_order[i].first = (a + b + c).dot(along);
        }
        std::nth_element(at(first), at(middle), at(last));
    }

    /// All but its areas and its second child.
    Node NodeOf(std::size_t first, std::size_t last) const {
        Node node;
        node.box = BoxOf(first, last, AxesOf(first, last), At(first)[0]);
        node.radius = node.box.half.norm();
        node.first = static_cast<Index>(first);
        node.count = static_cast<Index>(last - first);
        return node;
    }
    /// Principal axes of few triangles; the many of a large part of a mesh lie in all directions.
    Matrix3d AxesOf(std::size_t first, std::size_t last) const {
        constexpr std::size_t many = 2048;
        // cppcheck-suppress knownConditionTrueFalse ; as in Add
        if (last - first > many) {
            return Matrix3d::Identity();
        }
        const Vector3d& reference = At(first)[0];
        double area = 0;
        Vector3d moment = Vector3d::Zero();
        Matrix3d moments = Matrix3d::Zero();
        for (std::size_t i = first; i < last; ++i) {
            const double share = DoubleAreaVector(At(i)).norm() / 2;
            const Vector3d a = At(i)[0] - reference, b = At(i)[1] - reference, c = At(i)[2] - reference;
            const Vector3d sum = a + b + c;
            area += share;
            moment += share / 3 * sum;
            moments += share / 12 * (a * a.transpose() + b * b.transpose() + c * c.transpose() + sum * sum.transpose());
        }
        return PrincipalAxes(moments - moment * moment.transpose() / area);
    }
    TurnedBox BoxOf(std::size_t first, std::size_t last, const Matrix3d& axes, const Vector3d& reference) const {
        Eigen::AlignedBox3d box;
        for (std::size_t i = first; i < last; ++i) {
            for (const Vector3d& corner : At(i)) {
                box.extend(Vector3d(axes.transpose() * (corner - reference)));
            }
        }
        return {reference + axes * box.center(), axes, box.sizes() / 2};
    }

    SurfaceTree& m_tree;
    std::vector<Triangle> m_triangles;
    /// Numbers of triangles in the order of the tree, with what they are parted by.
    std::vector<std::pair<double, Index>> m_order;
};

SurfaceTree::SurfaceTree(const TriangleMesh& mesh) {
    std::vector<Triangle> triangles;
    triangles.reserve(mesh.triangles.size());
    for (const auto& indices : mesh.triangles) {
        const auto corner = [&](std::size_t i) { return mesh.vertices[static_cast<std::size_t>(indices[i])]; };
        const Triangle triangle{corner(0), corner(1), corner(2)};
        if (DoubleAreaVector(triangle).squaredNorm() > 0) {
            triangles.push_back(triangle);
        }
    }
    if (triangles.empty()) {
        return;
    }
    Builder builder(*this, std::move(triangles));
    builder.Build();
    for (const Triangle& triangle : m_triangles) {
        for (const Vector3d& corner : triangle) {
            m_box.extend(corner);
        }
    }
    for (const Triangle& triangle : m_triangles) {
        for (const Vector3d& corner : triangle) {
            m_radius = std::max(m_radius, (corner - m_box.center()).norm());
        }
    }
}

/// Walks two trees together, as far down as their boxes meet.
class SurfaceTree::PairWalk {
public:
    /// @param rotation, offset  from the axes of b to those of a
    PairWalk(const SurfaceTree& a, const SurfaceTree& b, Matrix3d rotation, Vector3d offset, double tolerance)
        : m_a(a), m_b(b), m_rotation(std::move(rotation)), m_offset(std::move(offset)), m_tolerance(tolerance) {}

    bool Meet() const {
        std::vector<std::pair<Index, Index>> pending{{0, 0}};
        while (!pending.empty()) {
            const auto [indexA, indexB] = pending.back();
            pending.pop_back();
            const Node &a = m_a.m_nodes[indexA], &b = m_b.m_nodes[indexB];
            if (Apart(a.box, b.box)) {
                continue;
            }
            if (a.IsLeaf() && b.IsLeaf()) {
                if (LeavesMeet(a, b)) {
                    return true;
                }
            } else if (b.IsLeaf() || (!a.IsLeaf() && a.radius > b.radius)) {
                pending.insert(pending.end(), {{a.second, indexB}, {indexA + 1, indexB}});
            } else {
                pending.insert(pending.end(), {{indexA, b.second}, {indexA, indexB + 1}});
            }
        }
        return false;
    }

private:
    /// Whether one of the fifteen axes keeps the boxes apart by more than the tolerance.
    bool Apart(const TurnedBox& a, const TurnedBox& b) const {
        // Axes across edges that are almost parallel are nothing but rounding.
        constexpr double parallel = 1e-12;
        const Matrix3d turn = a.axes.transpose() * (m_rotation * b.axes);
        const Matrix3d reach = turn.cwiseAbs().array() + parallel;
        const Vector3d offset = a.axes.transpose() * (m_rotation * b.centre + m_offset - a.centre);
        const Vector3d halfA = a.half.array() + m_tolerance, &halfB = b.half;
        if ((offset.cwiseAbs().array() > (halfA + reach * halfB).array()).any() ||
            ((turn.transpose() * offset).cwiseAbs().array() > (halfB + reach.transpose() * halfA).array()).any()) {
            return true;
        }
        for (int i = 0; i < 3; ++i) {
            const int i1 = (i + 1) % 3, i2 = (i + 2) % 3;
            for (int j = 0; j < 3; ++j) {
                const int j1 = (j + 1) % 3, j2 = (j + 2) % 3;
                if (std::abs(offset[i2] * turn(i1, j) - offset[i1] * turn(i2, j)) >
                    halfA[i1] * reach(i2, j) + halfA[i2] * reach(i1, j) + halfB[j1] * reach(i, j2) +
                        halfB[j2] * reach(i, j1)) {
                    return true;
                }
            }
        }
        return false;
    }
    bool LeavesMeet(const Node& a, const Node& b) const {
        for (Index j = b.first; j < b.first + b.count; ++j) {
            Triangle moved = m_b.m_triangles[j];
            for (Vector3d& corner : moved) {
                corner = m_rotation * corner + m_offset;
            }
            for (Index i = a.first; i < a.first + a.count; ++i) {
                if (TrianglesMeet(m_a.m_triangles[i], moved, m_tolerance)) {
                    return true;
                }
            }
        }
        return false;
    }

    const SurfaceTree &m_a, &m_b;
    Matrix3d m_rotation;
    Vector3d m_offset;
    double m_tolerance;
};

bool Meet(const SurfaceTree& a, const Eigen::Isometry3d& poseA, const SurfaceTree& b, const Eigen::Isometry3d& poseB,
          double tolerance) {
    if (a.IsEmpty() || b.IsEmpty()) {
        return false;
    }
    // The offset is taken before it is turned, lest digits are lost far from zero.
    const Matrix3d toA = poseA.linear().transpose();
    const Vector3d offset = toA * (poseB.translation() - poseA.translation());
    return SurfaceTree::PairWalk(a, b, toA * poseB.linear(), offset, tolerance).Meet();
}

/// The solid angle of the surface, its parts from so many of their radii on as area vectors.
SurfaceTree::AngleSum SurfaceTree::AngleAt(const Vector3d& point, double radii) const {
    AngleSum sum;
    std::vector<Index> pending{0};
    while (!pending.empty()) {
        const Index index = pending.back();
        pending.pop_back();
        const Node& node = m_nodes[index];
        const Vector3d offset = node.box.centre - point;
        const double distance = offset.norm();
        if (distance > radii * node.radius) {
            sum.angle += node.areaVector.dot(offset) / (distance * distance * distance);
            // No derivative of y/|y|^3 is larger than 2/|y|^3.
            sum.uncertainty += 2 * node.area * node.radius / std::pow(distance - node.radius, 3);
        } else if (node.IsLeaf()) {
            for (Index i = node.first; i < node.first + node.count; ++i) {
                sum.angle += SolidAngleOf(m_triangles[i], point);
            }
        } else {
            pending.insert(pending.end(), {node.second, index + 1});
        }
    }
    return sum;
}

bool Contains(const SurfaceTree& outer, const Eigen::Isometry3d& pose, const Vector3d& point) {
    const Vector3d own = pose.linear().transpose() * (point - pose.translation());
    if (outer.IsEmpty() || !outer.Box().contains(own)) {
        return false;
    }
    constexpr double halfOfAll = 6.283185307179586;
    SurfaceTree::AngleSum sum = outer.AngleAt(own, farRadii);
    if (std::abs(sum.angle - halfOfAll) <= sum.uncertainty) {
        sum = outer.AngleAt(own, std::numeric_limits<double>::infinity());
    }
    return sum.angle > halfOfAll;
}

} // namespace vantor::solver
