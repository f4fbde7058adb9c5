#include "simulator/solver/PreparedMagnet.h"

#include <Eigen/Eigenvalues>
#include <algorithm>
#include <cmath>
#include <optional>

namespace vantor::solver {
namespace {

/// The area vectors of a closed mesh sum to zero; this fraction of the area is allowed for rounding.
constexpr double openMeshTolerance = 1e-6;

std::string LabelOf(const Body& body, const Magnet& magnet) {
    return "magnet \"" + magnet.name + "\" of body \"" + body.name + "\"";
}

void CheckValues(const Magnet& magnet, const std::string& label) {
    if (!magnet.magnetisation.allFinite()) {
        throw SolveError("The magnetisation of " + label + " is not finite; give three finite numbers in A/m.");
    }
    if (!magnet.pose.matrix().allFinite()) {
        throw SolveError("The pose of " + label + " is not finite; check the placement of the body.");
    }
    if (!magnet.mesh) {
        return;
    }
    for (std::size_t i = 0; i < magnet.mesh->vertices.size(); ++i) {
        if (!magnet.mesh->vertices[i].allFinite()) {
            throw SolveError("Vertex " + std::to_string(i) + " of " + label +
                             " is not finite; check its geometry and the placement of the body.");
        }
    }
    const auto count = static_cast<long long>(magnet.mesh->vertices.size());
    for (std::size_t i = 0; i < magnet.mesh->triangles.size(); ++i) {
        for (const int corner : magnet.mesh->triangles[i]) {
            if (corner < 0 || corner >= count) {
                throw SolveError("Triangle " + std::to_string(i) + " of " + label + " names vertex " +
                                 std::to_string(corner) + ", but the mesh has " + std::to_string(count) +
                                 " vertices; check its geometry.");
            }
        }
    }
}

/// The three corners of a triangle.
std::array<Eigen::Vector3d, 3> CornersOf(const TriangleMesh& mesh, const std::array<int, 3>& triangle) {
    const auto corner = [&](std::size_t i) { return mesh.vertices[static_cast<std::size_t>(triangle[i])]; };
    return {corner(0), corner(1), corner(2)};
}

TriangleMesh WithoutFlatTriangles(const Magnet& magnet, const Eigen::Vector3d& origin) {
    const TriangleMesh& mesh = *magnet.mesh;
    TriangleMesh result;
    result.vertices.reserve(mesh.vertices.size());
    for (const Eigen::Vector3d& vertex : mesh.vertices) {
        result.vertices.push_back(magnet.pose * vertex - origin);
    }
    for (const auto& triangle : mesh.triangles) {
        const auto [a, b, c] = CornersOf(result, triangle);
        if ((b - a).cross(c - a).squaredNorm() > 0) {
            result.triangles.push_back(triangle);
        }
    }
    return result;
}

/// Sums over the tetrahedra between a mesh's triangles and a point near it.
struct VolumeMoments {
    double volume = 0, area = 0;
    Eigen::Vector3d areaVector = Eigen::Vector3d::Zero();
    Eigen::Vector3d first = Eigen::Vector3d::Zero();
    Eigen::Matrix3d second = Eigen::Matrix3d::Zero();
};

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

void SetMoments(PreparedMagnet& magnet, const Eigen::Vector3d& magnetisation) {
    for (const auto& triangle : magnet.mesh.triangles) {
        for (const Eigen::Vector3d& corner : CornersOf(magnet.mesh, triangle)) {
            magnet.box.extend(corner);
        }
    }
    const Eigen::Vector3d reference = magnet.box.center();
    const VolumeMoments moments = MomentsOf(magnet.mesh, reference);
    CheckClosed(moments, magnet.label);
    const Eigen::Vector3d offset = moments.first / moments.volume;
    magnet.centre = reference + offset;
    magnet.moment = moments.volume * magnetisation;
    for (const Eigen::Vector3d& vertex : magnet.mesh.vertices) {
        if (magnet.box.contains(vertex)) {
            magnet.radius = std::max(magnet.radius, (vertex - magnet.centre).norm());
        }
    }
    const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> principal(moments.second / moments.volume -
                                                                   offset * offset.transpose());
    for (int i = 0; i < 3; ++i) {
        const double reach = std::sqrt(3 * std::max(0.0, principal.eigenvalues()[i]));
        const Eigen::Vector3d along = reach * principal.eigenvectors().col(i);
        const std::size_t index = 2 * static_cast<std::size_t>(i);
        magnet.massPoints[index] = magnet.centre + along;
        magnet.massPoints[index + 1] = magnet.centre - along;
    }
}

std::optional<PreparedMagnet> Prepare(const Body& body, const Magnet& magnet, const Eigen::Vector3d& origin) {
    PreparedMagnet prepared;
    prepared.label = LabelOf(body, magnet);
    CheckValues(magnet, prepared.label);
    if (magnet.magnetisation.isZero(0) || !magnet.mesh || magnet.mesh->triangles.empty()) {
        return std::nullopt;
    }
    prepared.mesh = WithoutFlatTriangles(magnet, origin);
    prepared.magnetisation = magnet.pose.linear() * magnet.magnetisation;
    SetMoments(prepared, prepared.magnetisation);
    for (Polygon& polygon : ChargedPolygons(prepared.mesh, prepared.magnetisation)) {
        const double charge = prepared.magnetisation.dot(polygon.normal);
        for (const Edge& edge : polygon.edges) {
            prepared.outlineCharge += std::abs(charge) * edge.length;
        }
        prepared.faces.push_back({std::move(polygon), charge});
    }
    return prepared;
}

} // namespace

std::vector<PreparedMagnet> PrepareMagnets(const std::vector<Body>& bodies, const Eigen::Vector3d& origin) {
    std::vector<PreparedMagnet> magnets;
    for (std::size_t i = 0; i < bodies.size(); ++i) {
        for (const Magnet& magnet : bodies[i].magnets) {
            if (std::optional<PreparedMagnet> prepared = Prepare(bodies[i], magnet, origin)) {
                prepared->body = i;
                magnets.push_back(std::move(*prepared));
            }
        }
    }
    return magnets;
}

Eigen::Vector3d MiddleOf(const std::vector<Body>& bodies) {
    Eigen::AlignedBox3d box;
    for (const Body& body : bodies) {
        for (const Magnet& magnet : body.magnets) {
            CheckValues(magnet, LabelOf(body, magnet));
            if (!magnet.mesh) {
                continue;
            }
            for (const Eigen::Vector3d& vertex : magnet.mesh->vertices) {
                box.extend(magnet.pose * vertex);
            }
        }
    }
    return box.isEmpty() ? Eigen::Vector3d(Eigen::Vector3d::Zero()) : Eigen::Vector3d(box.center());
}

} // namespace vantor::solver
