#include "simulator/solver/MagnetShape.h"

#include <Eigen/Eigenvalues>
#include <algorithm>
#include <cmath>

namespace vantor::solver {
namespace {

/// The area vectors of a closed mesh sum to zero; this fraction of the area is allowed for rounding.
constexpr double openMeshTolerance = 1e-6;
/// By how much a magnetisation may differ to be the same but for rounding.
constexpr double sameMagnetisation = 1e-14;

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

/// The three corners of a triangle.
std::array<Eigen::Vector3d, 3> CornersOf(const TriangleMesh& mesh, const std::array<int, 3>& triangle) {
    const auto corner = [&](std::size_t i) { return mesh.vertices[static_cast<std::size_t>(triangle[i])]; };
    return {corner(0), corner(1), corner(2)};
}

/// Calls visit(corners) for the triangles that have an area.
template <class Visit>
void ForTriangles(const TriangleMesh& mesh, Visit visit) {
    for (const auto& triangle : mesh.triangles) {
        const std::array<Eigen::Vector3d, 3> corners = CornersOf(mesh, triangle);
        if ((corners[1] - corners[0]).cross(corners[2] - corners[0]).squaredNorm() > 0) {
            visit(corners);
        }
    }
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

} // namespace

MagnetShape::MagnetShape(std::shared_ptr<const TriangleMesh> mesh, const Eigen::Vector3d& magnetisation,
                         const std::string& label)
    : m_mesh(std::move(mesh)), m_magnetisation(magnetisation) {
    if (!magnetisation.allFinite()) {
        throw SolveError("The magnetisation of " + label + " is not finite; give three finite numbers in A/m.");
    }
    CheckVertices(*m_mesh, label);
    SetMoments(label);
    SetFaces();
}

bool MagnetShape::Is(const TriangleMesh* mesh, const Eigen::Vector3d& magnetisation) const {
    return mesh == m_mesh.get() &&
           (magnetisation - m_magnetisation).norm() <= sameMagnetisation * m_magnetisation.norm();
}

void MagnetShape::SetMoments(const std::string& label) {
    ForTriangles(*m_mesh, [this](const auto& corners) {
        for (const Eigen::Vector3d& corner : corners) {
            m_box.extend(corner);
        }
    });
    const Eigen::Vector3d reference = m_box.center();
    const VolumeMoments moments = MomentsOf(*m_mesh, reference);
    CheckClosed(moments, label);
    const Eigen::Vector3d offset = moments.first / moments.volume;
    m_centre = reference + offset;
    m_moment = moments.volume * m_magnetisation;
    ForTriangles(*m_mesh, [this](const auto& corners) {
        for (const Eigen::Vector3d& corner : corners) {
            m_radius = std::max(m_radius, (corner - m_centre).norm());
        }
    });
    const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> principal(moments.second / moments.volume -
                                                                   offset * offset.transpose());
    for (int i = 0; i < 3; ++i) {
        const double reach = std::sqrt(3 * std::max(0.0, principal.eigenvalues()[i]));
        const Eigen::Vector3d along = reach * principal.eigenvectors().col(i);
        const std::size_t index = 2 * static_cast<std::size_t>(i);
        m_massPoints[index] = m_centre + along;
        m_massPoints[index + 1] = m_centre - along;
    }
}

void MagnetShape::SetFaces() {
    for (Polygon& polygon : ChargedPolygons(*m_mesh, m_magnetisation)) {
        const double charge = m_magnetisation.dot(polygon.normal);
        for (const Edge& edge : polygon.edges) {
            m_outlineCharge += std::abs(charge) * edge.length;
        }
        m_edgeCount += polygon.edges.size();
        m_faces.push_back({std::move(polygon), charge});
    }
}

const ChargeTree& MagnetShape::Charges() const {
    std::call_once(m_chargesMade, [this] { m_charges = std::make_unique<const ChargeTree>(m_faces); });
    return *m_charges;
}

const SurfaceTree& MagnetShape::Surface() const {
    std::call_once(m_surfaceMade, [this] { m_surface = std::make_unique<const SurfaceTree>(*m_mesh); });
    return *m_surface;
}

} // namespace vantor::solver
