#include "simulator/solver/MagnetShape.h"

#include "simulator/solver/ClosedMesh.h"

#include <Eigen/Eigenvalues>
#include <algorithm>
#include <cmath>

namespace vantor::solver {
namespace {

/// By how much a magnetisation may differ to be the same but for rounding.
constexpr double sameMagnetisation = 1e-14;

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

MagnetShape::MagnetShape(std::vector<ChargedFace> faces)
    : m_faces(std::move(faces)), m_magnetisation(Eigen::Vector3d::Zero()), m_moment(Eigen::Vector3d::Zero()) {
    for (const ChargedFace& face : m_faces) {
        m_moment += face.charge * face.polygon.area * face.polygon.centre;
        for (const Edge& edge : face.polygon.edges) {
            m_box.extend(edge.start);
        }
    }
    m_centre = m_box.center();
    m_radius = m_box.sizes().norm() / 2;
    m_massPoints.fill(m_centre);
}

bool MagnetShape::Is(const TriangleMesh* mesh, const Eigen::Vector3d& magnetisation) const {
    return mesh == m_mesh.get() &&
           (magnetisation - m_magnetisation).norm() <= sameMagnetisation * m_magnetisation.norm();
}

void MagnetShape::SetMoments(const std::string& label) {
    m_box = BoxOf(*m_mesh);
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
