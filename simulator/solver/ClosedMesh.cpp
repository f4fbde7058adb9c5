#include "simulator/solver/ClosedMesh.h"

namespace vantor::solver {
namespace {

/// The area vectors of a closed mesh sum to zero; this fraction of the area is allowed for rounding.
constexpr double openMeshTolerance = 1e-6;

} // namespace

void CheckVertices(const TriangleMesh& mesh, const std::string& label) {
    for (std::size_t i = 0; i < mesh.vertices.size(); ++i) {
        if (!mesh.vertices[i].allFinite()) {
            throw SolveError("Vertex " + std::to_string(i) + " of " + label +
                             " is not finite; check its geometry and the placement of the body.");
        }
    }
    const auto count = static_cast<long long>(mesh.vertices.size());
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        for (const int corner : mesh.triangles[i]) {
            if (corner < 0 || corner >= count) {
                throw SolveError("Triangle " + std::to_string(i) + " of " + label + " names vertex " +
                                 std::to_string(corner) + ", but the mesh has " + std::to_string(count) +
                                 " vertices; check its geometry.");
            }
        }
    }
}

Eigen::AlignedBox3d BoxOf(const TriangleMesh& mesh) {
    Eigen::AlignedBox3d box;
    ForTriangles(mesh, [&](const auto& corners) {
        for (const Eigen::Vector3d& corner : corners) {
            box.extend(corner);
        }
    });
    return box;
}

VolumeMoments MomentsOf(const TriangleMesh& mesh, const Eigen::Vector3d& reference) {
    VolumeMoments moments;
    for (const auto& triangle : mesh.triangles) {
        auto [a, b, c] = CornersOf(mesh, triangle);
        const Eigen::Vector3d areaVector = (b - a).cross(c - a) / 2;
        moments.areaVector += areaVector;
        moments.area += areaVector.norm();
        a -= reference;
        b -= reference;
        c -= reference;
        const double volume = a.dot(b.cross(c)) / 6;
        const Eigen::Vector3d sum = a + b + c;
        moments.volume += volume;
        moments.first += volume / 4 * sum;
        moments.second +=
            volume / 20 * (a * a.transpose() + b * b.transpose() + c * c.transpose() + sum * sum.transpose());
    }
    return moments;
}

void CheckClosed(const VolumeMoments& moments, const std::string& label) {
    if (moments.areaVector.norm() > openMeshTolerance * moments.area) {
        throw SolveError("The mesh of " + label +
                         " is not closed; close its holes and orient all its triangles alike.");
    }
    if (!(moments.volume > 0)) {
        throw SolveError("The mesh of " + label +
                         " encloses no volume or is turned inside out; its triangles must run counter-clockwise seen "
                         "from outside.");
    }
}

} // namespace vantor::solver
